#!/usr/bin/env bash
# Sets everything up, builds odlex and the sample package (assembled from examples/sample by
# odlex import), then tours what odlex does with it: its information and tables, a component
# deleted with everything that hangs off it, the product's actions scheduled, a search and a
# replace, a transform from the sample to its edited copy applied back, and the copies compared
# with odlex diff.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target odlex_tool sample_package odlex_host_example

odlex=build/tools/odlex/odlex
sample=build/examples/sample.msi
out=build/sample-out
rm -rf "$out" && mkdir -p "$out"
edited="$out/edited.msi"

# Prints the command as a user would type it (paths shortened, words with spaces or shell
# characters quoted), then runs it.
run() {
  local line="$ odlex" word
  for word in "$@"; do
    word="${word//$out\//}"
    word="${word//$sample/sample.msi}"
    if [[ "$word" == *"'"* ]]; then
      word=$(printf '%s' "$word" | sed 's/[\\"$`]/\\&/g')
      word="\"$word\""
    elif [[ ! "$word" =~ ^[A-Za-z0-9_./=:{}-]+$ ]]; then
      word="'$word'"
    fi
    line+=" $word"
  done
  printf '\n%s\n' "$line"
  "$odlex" "$@"
}

run info "$sample"
run tables "$sample"
run component list "$sample"
run component delete "$sample" Templates -o "$edited"
printf 'stand-in bytes for the product action DLL' >"$out/actions.dll"
run action add-product "$edited" --dll "$out/actions.dll" --report
run search "$edited" --regex Notepad --table Shortcut
run replace "$edited" "Odlex Sample" "Odlex Example"
run transform generate "$sample" "$edited" -o "$out/edit.mst"
run transform apply "$sample" "$out/edit.mst" -o "$out/applied.msi"
# The transform gives the edited tables back; only the time and author of the save differ.
run diff "$edited" "$out/applied.msi"
run diff "$sample" "$edited"

run export-all "$sample" "$out/idt"
run rewrite "$sample" -o "$out/rewritten.msi"
for table in $("$odlex" tables "$sample"); do
  cmp -s <("$odlex" export "$sample" "$table") <("$odlex" export "$out/rewritten.msi" "$table") ||
    { echo "table $table differs after rewrite"; exit 1; }
done
echo "every table reads back identically from the rewritten package"

echo
echo "== the example host program edits a copy of the sample"
cp "$sample" "$out/host.msi"
build/examples/host/odlex-host "$out/host.msi" ARPHELPLINK https://example.org/help 25002 \
  "Could not reach [2]." HelpShortcut
run rows "$out/host.msi" Shortcut
run query "$out/host.msi" "SELECT \`Property\`, \`Value\` FROM \`Property\` WHERE \`Property\` = 'ARPHELPLINK'"
