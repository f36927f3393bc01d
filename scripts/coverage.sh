#!/usr/bin/env bash
# Sets everything up, runs the whole test suite in a build with coverage counters
# (build-coverage) and reports the line and branch coverage of the library, its tool and
# examples: a summary per file on stdout and a browsable report in
# build-coverage/coverage/index.html.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)

cmake -S . -B build-coverage "${generator[@]}" -DCMAKE_BUILD_TYPE=Debug -DODLEX_COVERAGE=ON \
  >/dev/null
cmake --build build-coverage -j"$(nproc)"
find build-coverage -name '*.gcda' -delete
ctest --test-dir build-coverage -j"$(nproc)" >build-coverage/ctest.log 2>&1 ||
  echo "coverage: some tests failed (build-coverage/ctest.log); the figures count what ran"
mkdir -p build-coverage/coverage
# Only the product's own sources; exception-only branches the compiler adds are left out.
gcovr --root . --object-directory build-coverage --filter 'src/' --filter 'include/' \
  --filter 'tools/' --exclude-throw-branches --exclude-unreachable-branches \
  --html-details build-coverage/coverage/index.html --txt - --print-summary
