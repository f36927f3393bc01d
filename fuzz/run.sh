#!/usr/bin/env bash
# Builds the fuzz targets with clang in build-fuzz and runs the package target for SECONDS
# (default 60, from the seeds in fuzz/corpus), and every other target (the list below) each for
# a tenth of that, at least 5 seconds (from fuzz/<name>-corpus). Exits non-zero when a fuzzer
# finds a crash, a sanitizer report, a leak or a hang; the input that did it is left in
# build-fuzz/artifacts.
#
#   fuzz/run.sh [SECONDS]
set -euo pipefail
seconds="${1:-60}"
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-fuzz"

# Formatted text (nesting and escapes), table text files, queries, certificates, signed files,
# fonts, message catalogs, cabinets, and transforms and merge modules applied to a good
# package: short inputs.
short_targets=(format idt query certificate signature version font messages cabinet transform merge)

cmake -S "$root" -B "$build" -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DODLEX_BUILD_FUZZ=ON -DODLEX_BUILD_TESTS=OFF \
  -DODLEX_BUILD_TOOLS=OFF
cmake --build "$build" --target odlex_fuzz_package "${short_targets[@]/#/odlex_fuzz_}" -j2

# Sanitizer reports with a stack, so a failure in CI can be read without rerunning it.
export UBSAN_OPTIONS="print_stacktrace=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"

# Inputs up to 1 MiB: room for thousands of directory entries, the shapes that once made a
# small file cost gigabytes. New inputs go to a working corpus in the build folder; the
# committed seeds stay untouched.
mkdir -p "$build/corpus" "$build/artifacts"
"$build/fuzz/odlex_fuzz_package" "$build/corpus" "$root/fuzz/corpus" \
  -max_total_time="$seconds" -rss_limit_mb=2048 -max_len=1048576 -timeout=10 \
  -artifact_prefix="$build/artifacts/" -print_final_stats=1

for target in "${short_targets[@]}"; do
  mkdir -p "$build/$target-corpus"
  "$build/fuzz/odlex_fuzz_$target" "$build/$target-corpus" "$root/fuzz/$target-corpus" \
    -max_total_time="$(( seconds / 10 > 5 ? seconds / 10 : 5 ))" -rss_limit_mb=2048 \
    -max_len=65536 -timeout=10 -artifact_prefix="$build/artifacts/" -print_final_stats=1
done
