#!/usr/bin/env bash
# Reads a ctest log and prints "tests: N passed, N failed, N skipped". Exits non-zero, naming
# the tests on stderr, when any test failed or was skipped: the oracles are installed by
# setup.sh, so a skipped test means a broken fixture or setup.
set -euo pipefail
log=$1
passed=$(grep -c -E '\s+Passed\s' "$log" || true)
failed=$(grep -E '\*\*\*(Failed|Exception|Timeout|Not Run)' "$log" |
  sed -E 's/.*Test +#[0-9]+: ([^ ]+) .*/\1/' || true)
skipped=$(grep -E '\*\*\*Skipped' "$log" | sed -E 's/.*Test +#[0-9]+: ([^ ]+) .*/\1/' || true)
nfailed=$(printf '%s' "$failed" | grep -c . || true)
nskipped=$(printf '%s' "$skipped" | grep -c . || true)
if [ "$nfailed" -gt 0 ]; then
  echo "error: $nfailed tests failed:" >&2
  printf '  %s\n' $failed >&2
fi
if [ "$nskipped" -gt 0 ]; then
  echo "error: $nskipped tests skipped; every test must run:" >&2
  printf '  %s\n' $skipped >&2
fi
if [ "$passed" -eq 0 ] && [ "$nfailed" -eq 0 ]; then
  echo "error: no test ran" >&2
  nfailed=1
fi
echo "tests: $passed passed, $nfailed failed, $nskipped skipped"
[ "$nfailed" -eq 0 ] && [ "$nskipped" -eq 0 ]
