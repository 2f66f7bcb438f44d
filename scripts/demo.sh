#!/usr/bin/env bash
# Runs every demo program of a build on the bundled sample data; pictures land
# in demo-out/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
out=${2:-$root/demo-out}
mkdir -p "$out"
rm -f "$out/gallery.tsv"
export OV_SAMPLES="$root/samples"

shopt -s nullglob
for prog in "$build"/bin/demo-*; do
  [ -x "$prog" ] || continue
  echo "== $(basename "$prog")"
  "$prog" "$out"
done
for script in "$root"/demo/*/run-*.sh; do
  echo "== $(basename "$script")"
  bash "$script" "$build" "$out"
done
"$build/bin/make-gallery" "$out"
