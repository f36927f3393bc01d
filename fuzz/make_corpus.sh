#!/usr/bin/env bash
# Rebuilds the seed inputs in fuzz/corpus: a few tiny packages made by msibuild (an
# independent writer) and a few broken files cut from them. The seeds are kept in the
# repository; run this only to change them. Other files in fuzz/corpus are kept as regression
# seeds and this script leaves them alone: empty-directory.msi, an input the fuzzer once failed
# on, and shared-sectors.msi / shared-mini-sectors.msi, containers whose thousands (hundreds) of
# directory entries all point at one chain of sectors (mini sectors), crafted like the cases of
# tests/storage/compound_file_bad_input_test.cpp.
set -euo pipefail
corpus="$(cd "$(dirname "$0")" && pwd)/corpus"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"

# table NAME COLUMNS TYPES KEYS ROW... : writes NAME.idt, cells of a row separated by '|'.
table() {
  local name="$1" columns="$2" types="$3" keys="$4"
  shift 4
  {
    printf '%s\r\n%s\r\n%s\r\n' "${columns//|/$'\t'}" "${types//|/$'\t'}" "$name${keys:+$'\t'}${keys//|/$'\t'}"
    for row in "$@"; do printf '%s\r\n' "${row//|/$'\t'}"; done
  } >"$name.idt"
}

summary=(-s "Seed package" "odlex" "Intel;1033" "{6B1E4C2A-3F5D-4A7B-9C8E-1D2F3A4B5C6D}")

msibuild empty.msi "${summary[@]}"

table Property "Property|Value" "s72|l0" "Property" \
  "ProductCode|{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}" "ProductName|Seed" \
  "ProductVersion|1.0.0" "Manufacturer|Odlex" "ProductLanguage|1033"
msibuild property.msi -i Property.idt "${summary[@]}"

table Directory "Directory|Directory_Parent|DefaultDir" "s72|S72|l255" "Directory" \
  "TARGETDIR||SourceDir" "INSTALLDIR|TARGETDIR|Seed"
table Component "Component|ComponentId|Directory_|Attributes|Condition|KeyPath" \
  "s72|S38|s72|i2|S255|S72" "Component" \
  "Main|{11111111-2222-3333-4444-555555555555}|INSTALLDIR|0||app.exe" \
  "Docs|{66666666-7777-8888-9999-AAAAAAAAAAAA}|INSTALLDIR|8|VersionNT|readme.txt"
table Feature "Feature|Feature_Parent|Title|Description|Display|Level|Directory_|Attributes" \
  "s38|S38|L64|L255|I2|i2|S72|i2" "Feature" "Complete||Everything|All files|1|1|INSTALLDIR|0"
table FeatureComponents "Feature_|Component_" "s38|s72" "Feature_|Component_" \
  "Complete|Main" "Complete|Docs"
table File "File|Component_|FileName|FileSize|Version|Language|Attributes|Sequence" \
  "s72|s72|l255|i4|S72|S20|I2|i4" "File" \
  "app.exe|Main|app.exe|1024|1.0.0.0|1033|512|1" "readme.txt|Docs|README.TXT|10||||2"
table Media "DiskId|LastSequence|DiskPrompt|Cabinet|VolumeLabel|Source" "i2|i4|L64|S255|S32|S72" \
  "DiskId" "1|2||#data.cab||"
msibuild product.msi -i Directory.idt -i Component.idt -i Feature.idt -i FeatureComponents.idt \
  -i File.idt -i Media.idt -i Property.idt "${summary[@]}"

mkdir Binary
printf 'icon bytes \x00\x01\x02\xff' >Binary/Icon.ibd
table Binary "Name|Data" "s72|v0" "Name" "Icon|Icon.ibd"
msibuild binary.msi -i Binary.idt -i Property.idt "${summary[@]}"

cp empty.msi property.msi product.msi binary.msi "$corpus/"
: >"$corpus/zero-length.msi"
head -c 512 property.msi >"$corpus/header-only.msi"
head -c "$(($(stat -c %s product.msi) / 2))" product.msi >"$corpus/truncated-half.msi"
head -c 100 binary.msi >"$corpus/truncated-header.msi"
ls -l "$corpus"
