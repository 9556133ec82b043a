#!/usr/bin/env bash
# Runs every libFuzzer program of a fuzzing build for SECONDS each, one after the other.
#   scripts/fuzz.sh BUILD_DIR [SECONDS] [TARGET...]
# Each target starts from its seed corpus (tests/fuzz/corpus/<target>, read only) and a
# working corpus in the build dir, where the inputs it finds accumulate between runs.
# An input that makes a target fail is kept in tests/fuzz/regressions/<target>, where
# the normal builds replay it. Exits non-zero when any target failed.
set -uo pipefail

build=${1:?usage: fuzz.sh BUILD_DIR [SECONDS] [TARGET...]}
seconds=${2:-60}
shift $(( $# > 1 ? 2 : 1 ))
root=$(cd "$(dirname "$0")/.." && pwd)
fuzz_dir=$root/tests/fuzz

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for program in "$build"/tests/fuzz/nox_fuzz_*; do targets+=("${program##*/nox_fuzz_}"); done
fi

status=0
for target in "${targets[@]}"; do
  program=$build/tests/fuzz/nox_fuzz_$target
  work=$build/fuzz-corpus/$target
  regressions=$fuzz_dir/regressions/$target
  log=$build/fuzz-$target.log
  mkdir -p "$work" "$regressions"
  nice "$program" "$work" "$fuzz_dir/corpus/$target" -max_total_time="$seconds" -timeout=10 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$regressions/" >"$log" 2>&1
  result=$?
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  echo "$target: ${executions:-?} executions in ${seconds} s, exit status $result (log: $log)"
  if [ $result -ne 0 ]; then
    status=1
    tail -n 40 "$log"
  fi
done
exit $status
