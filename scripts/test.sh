#!/usr/bin/env bash
# Sets everything up and runs the whole test suite under the address and undefined-behaviour
# sanitizers, checks that the optimised build of the library and tool compiles cleanly and that
# a host builds against its installed copy, and fuzzes the parsers for a short fixed time.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
jobs=$(nproc)
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)

echo "== tests under address and undefined-behaviour sanitizers"
cmake -S . -B build-sanitize "${generator[@]}" -DCMAKE_BUILD_TYPE=Debug -DODLEX_SANITIZE=ON >/dev/null
cmake --build build-sanitize -j"$jobs"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build-sanitize -j"$jobs" --output-on-failure 2>&1 |
  tee build-sanitize/ctest.log || true
# Fails the script, naming them, when any test failed or was skipped.
result=$(scripts/ctest-result.sh build-sanitize/ctest.log) || { echo "$result"; exit 1; }

echo "== optimised build of the library, the tool and the sample package; a host of its install"
cmake -S . -B build "${generator[@]}" -DCMAKE_BUILD_TYPE=Release -DODLEX_BUILD_TESTS=OFF >/dev/null
cmake --build build -j"$jobs"
scripts/install-check.sh

echo "== fuzzing for ${ODLEX_FUZZ_SECONDS:-30} seconds"
fuzz/run.sh "${ODLEX_FUZZ_SECONDS:-30}"

echo "$result"
