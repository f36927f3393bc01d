#!/usr/bin/env bash
# Rebuilds the seed transforms in fuzz/transform-corpus: transforms written by the odlex tool
# between small packages made by msibuild, whose base has the tables the transform fuzz target
# holds in memory (Property, and Binary with a stream). The seeds are kept in the repository;
# run this only to change them.
#
#   fuzz/make_transform_corpus.sh path/to/odlex
set -euo pipefail
odlex="$(realpath "$1")"
corpus="$(cd "$(dirname "$0")" && pwd)/transform-corpus"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"

# package NAME PRODUCTNAME ICONBYTES [EXTRA] : NAME.msi with a Property and a Binary table, and an
# Extra table when EXTRA is given.
package() {
  mkdir -p "$1/Binary"
  printf '%s' "$3" >"$1/Binary/Icon.ico"
  printf 'Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\n' >"$1/Property.idt"
  printf 'ProductCode\t{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}\r\nProductName\t%s\r\n' "$2" \
    >>"$1/Property.idt"
  printf 'Name\tData\r\ns72\tv0\r\nBinary\tName\r\nIcon\tIcon.ico\r\n' >"$1/Binary.idt"
  if [ -n "${4:-}" ]; then
    printf 'Id\tCount\r\ns32\tI2\r\nExtra\tId\r\na\t5\r\nb\t\r\n' >"$1/Extra.idt"
  fi
  (cd "$1" && msibuild "../$1.msi" -i ./*.idt)
}

package base Seed 'abc'
package rows Changed 'abd'
package table Seed 'abc' extra

mkdir -p "$corpus"
"$odlex" transform generate base.msi rows.msi -o "$corpus/rows.mst"
"$odlex" transform generate base.msi table.msi -o "$corpus/add-table.mst" \
  --suppress add-existing-row,update-missing-row --validate product,language
"$odlex" transform generate table.msi base.msi -o "$corpus/drop-table.mst"
