#!/usr/bin/env bash
# Builds the benchmark (Release) in build-bench and prints the comparison with libmsi.
# The packages are built by msibuild on the first run and cached in build-bench/packages;
# the 100,000-file package takes several minutes to build the first time.
#
#   bench/run.sh [--sizes 0,1000,10000,100000] [--reps 3]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-bench"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DODLEX_BUILD_BENCH=ON \
  -DODLEX_BUILD_TESTS=OFF -DODLEX_BUILD_TOOLS=OFF
cmake --build "$build" --target odlex_bench -j2
"$build/bench/odlex_bench" --cache "$build/packages" "$@"
