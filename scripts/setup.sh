#!/usr/bin/env bash
# Installs the Debian packages that building, testing and benchmarking odlex need, when
# they are missing. msitools, wixl and libmsi are test oracles only; nothing links them.
set -euo pipefail

packages=(
  cmake make g++ pkg-config           # build
  libpcre2-dev libssl-dev libgcab-dev # product dependencies
  libcli11-dev nlohmann-json3-dev     # the tool's command line and JSON output
  ninja-build                         # faster builds where CMake can use it
  libgtest-dev libgmock-dev           # tests
  msitools wixl                       # independent readers and writers the tests compare with
  osslsigncode                        # signs files for the signature tests
  shim-helpers-amd64-signed           # PE files signed by their vendor, for the same tests
  clang libclang-rt-dev               # fuzz target (libFuzzer)
  libbenchmark-dev libmsi-dev libglib2.0-dev  # benchmarks and their peer
  time                                # peak memory of the benchmarks' runs
  gcovr                               # the coverage report (scripts/coverage.sh)
  # Wine's installer engine, a test-only oracle like msitools: it applies the transforms odlex
  # writes (libmsi cannot apply any); its helper program is built with the mingw compiler.
  wine64 gcc-mingw-w64-x86-64-win32
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
