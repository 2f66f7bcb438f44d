#!/usr/bin/env bash
# Runs every libFuzzer target of a fuzzer build for a fixed time, one after
# the other (a single process at a time), and prints executions and findings.
#   fuzz.sh BUILD_DIR SECONDS [TARGET...]
# New inputs collect in BUILD_DIR/fuzz-corpus/<target>; crash, leak, timeout
# and out-of-memory inputs land in BUILD_DIR/fuzz-findings/<target>/. A finding
# that is fixed goes into fuzz/<target>/regressions/ so that the replay tests
# keep it. The exit status is 1 when anything was found.
set -uo pipefail

build=${1:?build folder}
seconds=${2:-60}
shift 2 || shift $#
root=$(cd "$(dirname "$0")/.." && pwd)
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for dir in "$root"/fuzz/*/; do
    name=$(basename "$dir")
    [ -f "$dir/fuzz_$name.cpp" ] && targets+=("$name")
  done
fi

# The library and the targets share the ASan runtime, which must load first.
asan=$(clang++ -print-file-name=libclang_rt.asan-x86_64.so)
summary=()
status=0
for t in "${targets[@]}"; do
  bin="$build/bin/fuzz_$t"
  [ -x "$bin" ] || { echo "fuzz.sh: $bin not built" >&2; exit 2; }
  corpus="$build/fuzz-corpus/$t"
  findings="$build/fuzz-findings/$t"
  log="$build/fuzz-logs/$t.log"
  mkdir -p "$corpus" "$findings" "$(dirname "$log")"
  dirs=("$corpus" "$root/fuzz/$t/corpus")
  [ -d "$root/fuzz/$t/regressions" ] && dirs+=("$root/fuzz/$t/regressions")
  before=$(find "$findings" -type f | wc -l)
  echo "== $t: ${seconds}s, log $log"
  LD_PRELOAD="$asan" ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "$bin" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2560 -print_final_stats=1 \
    -artifact_prefix="$findings/" "${dirs[@]}" >"$log" 2>&1
  rc=$?
  after=$(find "$findings" -type f | wc -l)
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
  found=$((after - before))
  if [ "$found" -gt 0 ] || [ "$rc" -ne 0 ]; then
    status=1
    grep -m3 -E 'ERROR|SUMMARY|check failed|runtime error' "$log" | sed 's/^/   /'
    find "$findings" -type f -newer "$bin" | sed 's/^/   finding: /'
  fi
  summary+=("$(printf '%-14s %12s execs %8s exec/s %3d findings (exit %d)' "$t" "${runs:-?}" "${rate:-?}" "$found" "$rc")")
done
echo "== summary (${seconds}s per target)"
printf '%s\n' "${summary[@]}"
exit $status
