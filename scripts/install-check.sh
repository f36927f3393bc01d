#!/usr/bin/env bash
# Installs the optimised build (build/, made by scripts/test.sh or scripts/sample.sh) into a
# fresh prefix, builds the example host against the installed copy once through
# find_package(odlex CONFIG) and once through pkg-config, and runs each on a copy of the sample
# package, checking the edit it saved with the installed tool.
set -euo pipefail
cd "$(dirname "$0")/.."
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"
cmake --install build --prefix "$prefix" >/dev/null
pc="$(find "$prefix" -name odlex.pc)"
libdir="$(dirname "$(dirname "$pc")")"

cmake -S examples/host -B "$work/cmake-host" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake-host" >/dev/null
# shellcheck disable=SC2046  # the flags are words
g++ -std=c++20 -O2 examples/host/main.cpp -o "$work/pkg-config-host" \
  $(PKG_CONFIG_PATH="$(dirname "$pc")" pkg-config --cflags --libs odlex)

for host in "$work/cmake-host/odlex-host" "$work/pkg-config-host"; do
  cp build/examples/sample.msi "$work/edited.msi"
  LD_LIBRARY_PATH="$libdir" "$host" "$work/edited.msi" ARPHELPLINK https://example.org/help \
    25002 "Could not reach [2]." HelpShortcut
  value=$("$prefix/bin/odlex" query "$work/edited.msi" \
    "SELECT \`Value\` FROM \`Property\` WHERE \`Property\` = 'ARPHELPLINK'")
  [ "$value" = "https://example.org/help" ] || { echo "install: $host saved '$value'"; exit 1; }
done
echo "install: the example host builds against the installed library (CMake package and" \
  "pkg-config) and its edit reads back"
