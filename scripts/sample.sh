#!/usr/bin/env bash
# Sets everything up, builds odlex and the sample package (assembled from examples/sample by
# odlex import), then shows what odlex does with it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target odlex_tool sample_package odlex_host_example

odlex=build/tools/odlex/odlex
sample=build/examples/sample.msi
out=build/sample-out
rm -rf "$out" && mkdir -p "$out"

echo "== odlex tables $sample"
"$odlex" tables "$sample"
echo "== odlex query: files of the sample"
"$odlex" query "$sample" 'SELECT `File`, `FileName`, `FileSize` FROM `File` ORDER BY `File`'
echo "== odlex export Property"
"$odlex" export "$sample" Property | tr -d '\r'
echo "== odlex export-all into $out/idt"
"$odlex" export-all "$sample" "$out/idt"
ls "$out/idt"
echo "== odlex rewrite into $out/rewritten.msi"
"$odlex" rewrite "$sample" -o "$out/rewritten.msi"
for table in $("$odlex" tables "$sample"); do
  cmp -s <("$odlex" export "$sample" "$table") <("$odlex" export "$out/rewritten.msi" "$table") ||
    { echo "table $table differs after rewrite"; exit 1; }
done
echo "every table reads back identically from the rewritten package"
echo "== odlex rows: the Shortcut table through its table object"
"$odlex" rows "$sample" Shortcut
echo "== the example host program edits a copy of the sample"
cp "$sample" "$out/edited.msi"
build/examples/host/odlex-host "$out/edited.msi" ARPHELPLINK https://example.org/help 25002 \
  "Could not reach [2]." HelpShortcut
"$odlex" rows "$out/edited.msi" Shortcut
"$odlex" query "$out/edited.msi" "SELECT \`Property\`, \`Value\` FROM \`Property\` WHERE \`Property\` = 'ARPHELPLINK'"
"$odlex" query "$out/edited.msi" "SELECT \`Error\`, \`Message\` FROM \`Error\` WHERE \`Error\` = 25002"
