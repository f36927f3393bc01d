#!/usr/bin/env bash
# Times extracting every file of a generated package: `odlex extract` beside msiextract in the
# same run, printed with the ratio (msiextract time / odlex time), after checking that both
# wrote the same files. The package has FILES files (default 10,000) in 100 folders, in one
# embedded MSZIP cabinet made by gcab, imported by msibuild.
#
#   bench/extract.sh [FILES] [ODLEX]
set -euo pipefail
files="${1:-10000}"
root="$(cd "$(dirname "$0")/.." && pwd)"
tool="${2:-$root/build/tools/odlex/odlex}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/payload" "$work/idt"
printf 'Directory\tDirectory_Parent\tDefaultDir\r\ns72\tS72\tl255\r\nDirectory\tDirectory\r\n' \
  >"$work/idt/Directory.idt"
printf 'TARGETDIR\t\tSourceDir\r\n' >>"$work/idt/Directory.idt"
printf 'Component\tComponentId\tDirectory_\tAttributes\tCondition\tKeyPath\r\n' \
  >"$work/idt/Component.idt"
printf 's72\tS38\ts72\ti2\tS255\tS72\r\nComponent\tComponent\r\n' >>"$work/idt/Component.idt"
for ((d = 0; d < 100; d++)); do
  printf 'D%d\tTARGETDIR\tFolder %d\r\n' "$d" "$d" >>"$work/idt/Directory.idt"
  printf 'C%d\t\tD%d\t0\t\t\r\n' "$d" "$d" >>"$work/idt/Component.idt"
done
printf 'File\tComponent_\tFileName\tFileSize\tVersion\tLanguage\tAttributes\tSequence\r\n' \
  >"$work/idt/File.idt"
printf 's72\ts72\tl255\ti4\tS72\tS20\tI2\ti4\r\nFile\tFile\r\n' >>"$work/idt/File.idt"
# Files of 1 to 8 KiB: text that compresses about as source files do.
awk -v n="$files" -v dir="$work/payload" -v idt="$work/idt/File.idt" 'BEGIN {
  for (i = 0; i < n; i++) {
    file = dir "/F" i; size = 0
    lines = 16 + (i * 37) % 112
    for (l = 0; l < lines; l++) {
      line = sprintf("file %d line %d: value %d\n", i, l, (i * 7919 + l * 104729) % 1000003)
      printf "%s", line > file; size += length(line)
    }
    close(file)
    printf "F%d\tC%d\tfile %d.txt\t%d\t\t\t0\t%d\r\n", i, i % 100, i, size, i + 1 >> idt
  }
}'
printf 'DiskId\tLastSequence\tDiskPrompt\tCabinet\tVolumeLabel\tSource\r\n' >"$work/idt/Media.idt"
printf 'i2\ti4\tL64\tS255\tS32\tS72\r\nMedia\tDiskId\r\n1\t%d\t\t#product.cab\t\t\r\n' "$files" \
  >>"$work/idt/Media.idt"
printf 'PropertyId\tValue\r\ni2\tl255\r\n_SummaryInformation\tPropertyId\r\n' \
  >"$work/idt/_SummaryInformation.idt"
printf '7\tIntel;1033\r\n9\t{9C0B2A3D-1E4F-4A5B-8C6D-7E8F9A0B1C2D}\r\n14\t200\r\n15\t2\r\n' \
  >>"$work/idt/_SummaryInformation.idt"
(cd "$work/payload" && ls | sort -t F -k 2 -n | xargs gcab -c -z -n "$work/product.cab")
(cd "$work/idt" && msibuild "$work/package.msi" -i Directory.idt Component.idt File.idt \
  Media.idt _SummaryInformation.idt -a product.cab "$work/product.cab")

seconds() {  # runs a command quietly, prints its wall time in seconds
  local start end
  start=$(date +%s.%N)
  "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; }
  end=$(date +%s.%N)
  awk -v a="$start" -v b="$end" 'BEGIN { printf "%.3f", b - a }'
}

sync
peer=$(seconds msiextract -C "$work/peer" "$work/package.msi")
sync
ours=$(seconds "$tool" extract "$work/package.msi" "$work/odlex")
diff -r "$work/peer" "$work/odlex" >/dev/null || { echo "the extracted files differ" >&2; exit 1; }
awk -v n="$files" -v p="$peer" -v o="$ours" 'BEGIN {
  printf "%d files: msiextract %.2fs, odlex extract %.2fs (%.1fx msiextract)\n", n, p, o, p / o }'
