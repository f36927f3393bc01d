#!/usr/bin/env bash
# Times importing and exporting a table of many binary cells (one stream each): `odlex import`
# and `odlex export-all` beside msibuild and msiinfo doing the same in the same run, printed as
# ratios (peer time / odlex time). With a second tool given, both odlex builds are timed, e.g. a
# build from before a change beside one from after it, and the second is also given as a ratio
# to the first.
#
#   bench/binary_cells.sh [CELLS] [ODLEX [OTHER_ODLEX]]
#
# PEER=no leaves msibuild and msiinfo out (msibuild takes minutes to give out on 40,000 cells).
set -euo pipefail
cells="${1:-40000}"
root="$(cd "$(dirname "$0")/.." && pwd)"
tools=("${2:-$root/build/tools/odlex/odlex}")
[ $# -ge 3 ] && tools+=("$3")
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/idt/Binary"
printf 'Name\tData\r\ns72\tv0\r\nBinary\tName\r\n' >"$work/idt/Binary.idt"
for ((i = 0; i < cells; i++)); do
  printf 'cell %d\n' "$i" >"$work/idt/Binary/c$i.ibd"
  printf 'c%d\tc%d.ibd\r\n' "$i" "$i" >>"$work/idt/Binary.idt"
done

seconds() {  # runs a command quietly, prints its wall time in seconds
  local start end
  start=$(date +%s.%N)
  "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; }
  end=$(date +%s.%N)
  awk -v a="$start" -v b="$end" 'BEGIN { printf "%.2f", b - a }'
}

# msibuild itself gives out on very many cells (it crashes on 40,000): the peer's ratios are
# printed only where it finishes.
peer_import="" peer_export=""
if [ "${PEER:-yes}" = no ]; then
  echo "$cells binary cells: peer left out"
elif peer_import=$(cd "$work/idt" && seconds msibuild "$work/peer.msi" -i Binary.idt); then
  mkdir "$work/peer-export"
  peer_export=$(cd "$work/peer-export" && seconds msiinfo export "$work/peer.msi" Binary) ||
    peer_export=""
  echo "$cells binary cells: msibuild import ${peer_import}s, msiinfo export ${peer_export:-failed}"
else
  peer_import=""
  echo "$cells binary cells: msibuild import failed"
fi
first_import="" first_export=""
for tool in "${tools[@]}"; do
  import=$(seconds "$tool" import "$work/odlex.msi" "$work/idt/Binary.idt")
  export=$(seconds "$tool" export-all "$work/odlex.msi" "$work/odlex-export")
  rm -rf "$work/odlex.msi" "$work/odlex-export"
  awk -v tool="$tool" -v i="$import" -v e="$export" -v pi="$peer_import" -v pe="$peer_export" \
    -v fi="$first_import" -v fe="$first_export" 'BEGIN {
      printf "%s: import %.2fs", tool, i
      if (pi != "") printf " (%.1fx msibuild)", pi / i
      if (fi != "") printf " (%.1fx the first tool)", fi / i
      printf ", export-all %.2fs", e
      if (pe != "") printf " (%.1fx msiinfo)", pe / e
      if (fe != "") printf " (%.1fx the first tool)", fe / e
      printf "\n" }'
  [ -z "$first_import" ] && first_import=$import first_export=$export
done
