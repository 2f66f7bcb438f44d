#!/usr/bin/env bash
# Runs every benchmark binary of a bench build; results in bench-out/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build-bench}
out=$root/bench-out
mkdir -p "$out"
shopt -s nullglob
for prog in "$build"/bin/bench-*; do
  name=$(basename "$prog")
  echo "== $name"
  "$prog" --benchmark_out="$out/$name.json" --benchmark_out_format=json ${BENCH_ARGS:-}
done
for script in "$root"/bench/*/run-*.sh; do
  echo "== $(basename "$script")"
  bash "$script" "$build" "$out"
done
