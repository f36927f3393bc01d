#!/usr/bin/env bash
# Sets everything up and runs the whole test suite: a normal build, the same suite under
# the address and undefined-behaviour sanitizers, and a short fixed-time fuzzing run.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

jobs=$(nproc)
passed=0
run_suite() {
  local dir=$1
  shift
  cmake -S . -B "$dir" "$@" >/dev/null
  cmake --build "$dir" -j"$jobs"
  ctest --test-dir "$dir" -j"$jobs" --output-on-failure | tee "$dir/ctest.log"
  passed=$((passed + $(grep -c ' Passed ' "$dir/ctest.log")))
}

echo "== tests"
run_suite build -DCMAKE_BUILD_TYPE=Release
echo "== tests under address and undefined-behaviour sanitizers"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 run_suite build-sanitize -DCMAKE_BUILD_TYPE=Debug -DODLEX_SANITIZE=ON
echo "== fuzzing for ${ODLEX_FUZZ_SECONDS:-60} seconds"
fuzz/run.sh "${ODLEX_FUZZ_SECONDS:-60}"
echo "tests: $passed passed, 0 failed"
