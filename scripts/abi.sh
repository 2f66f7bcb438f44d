#!/usr/bin/env bash
# The library's exported symbols, demangled and sorted, one per line: the
# interface under review in abi/<multiarch triplet>.txt.
#   abi.sh list  LIBRARY [NM]        print the list
#   abi.sh check LIBRARY FILE [NM]   fail with a diff when the list differs from FILE
#   abi.sh update                    rewrite abi/*.txt from build/ and build-armhf/
# An interface change is a reviewed change of those files: run `abi.sh update`
# after building both trees (make build test-arm) and commit the diff.
set -euo pipefail

list() {
  # The linker's own markers are in every shared object; they are not ours.
  "${2:-nm}" -D --defined-only "$1" | awk '{print $3}' | c++filt |
    grep -vx -e __bss_start -e _edata -e _end | LC_ALL=C sort -u
}

case "${1:-}" in
list) list "$2" "${3:-nm}" ;;
check)
  if ! diff -u "$3" <(list "$2" "${4:-nm}") >/dev/null; then
    echo "The exported symbols of $2 differ from $3 (- pinned, + built):"
    diff -u "$3" <(list "$2" "${4:-nm}") | tail -n +3 || true
    echo "If the change is intended, run scripts/abi.sh update and commit the diff."
    exit 1
  fi
  echo "$(wc -l <"$3") exported symbols match $3"
  ;;
update)
  root=$(cd "$(dirname "$0")/.." && pwd)
  list "$root/build/lib/libcam.common.orvan.so" nm >"$root/abi/x86_64-linux-gnu.txt"
  list "$root/build-armhf/lib/libcam.common.orvan.so" arm-linux-gnueabihf-nm >"$root/abi/arm-linux-gnueabihf.txt"
  git -C "$root" diff --stat -- abi/
  ;;
*) echo "usage: $0 list LIBRARY [NM] | check LIBRARY FILE [NM] | update" >&2; exit 2 ;;
esac
