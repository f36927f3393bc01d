#!/usr/bin/env bash
# Times saving a package that carries one large stream (a cabinet) against copying the file:
# `odlex rewrite` to a new file, an edit saved in place (`odlex import` of its Property table),
# a transform applied into a new file, every table exported and a merge module merged into a
# new file, each beside `cp` of the package
# followed by `sync` (a save flushes what it writes). The edit saved in place replaces the
# package, and the file system frees the replaced one's blocks (with online discard, a
# measurable part of the time), so it is also put beside `cp` onto an existing copy, which
# frees as much.
# Prints the best of three runs of each, odlex's as a ratio to the copy (lower is better), and
# the peak resident memory of the odlex runs.
#
#   bench/large_package.sh [MEGABYTES] [ODLEX]
set -euo pipefail
megabytes="${1:-2048}"
root="$(cd "$(dirname "$0")/.." && pwd)"
tool="${2:-$root/build/tools/odlex/odlex}"
work="$(mktemp -d "${TMPDIR:-/tmp}/odlex-large.XXXXXX")"
trap 'rm -rf "$work"' EXIT

head -c $((megabytes << 20)) /dev/urandom >"$work/cabinet"
sample="$root/examples/sample"
"$tool" import "$work/package.msi" "$sample/Property.idt" "$sample/Feature.idt" \
  "$sample/Directory.idt" >/dev/null
# A merge module of its signature alone: merging it writes the whole package anew.
printf 'ModuleID\tLanguage\tVersion\ns72\ti2\ts32\nModuleSignature\tModuleID\tLanguage\n%s\t1033\t1.0.0.0\n' \
  Bench.1A2B3C4D_5E6F_4A5B_8C9D_0E1F2A3B4C5D >"$work/ModuleSignature.idt"
"$tool" import "$work/module.msm" "$work/ModuleSignature.idt" >/dev/null
msibuild "$work/package.msi" -a Cabinet.cab "$work/cabinet"
rm "$work/cabinet"
"$tool" export "$work/package.msi" Property -o "$work/Property.idt"
# The transform changes one property; it is made once, outside the timed runs.
cp "$work/package.msi" "$work/edited.msi"
"$tool" query "$work/edited.msi" \
  "UPDATE \`Property\` SET \`Value\` = 'Large' WHERE \`Property\` = 'ProductName'" >/dev/null
"$tool" transform generate "$work/package.msi" "$work/edited.msi" -o "$work/edit.mst" >/dev/null
rm "$work/edited.msi"

# Runs a command, appends "seconds peak-kilobytes" to the file named first. What earlier runs
# wrote is flushed first, so that no run pays for another's writes. Each run also starts with
# as much disk just freed as the package takes: on a thinly provisioned virtual disk, writing
# into blocks never written before costs about twice writing into freed ones, so without this
# whichever run follows another large write (the copy included) pays for it.
measure() {
  local out="$1"
  shift
  cp "$work/package.msi" "$work/ballast" && sync && rm "$work/ballast"
  sync
  /usr/bin/time -f "%e %M" -a -o "$out" "$@" >/dev/null
}
for _ in 1 2 3; do
  measure "$work/copy" sh -c 'cp "$1" "$2" && sync "$2"' sh "$work/package.msi" "$work/copy.msi"
  measure "$work/rewrite" "$tool" rewrite "$work/package.msi" -o "$work/rewritten.msi"
  rm "$work/rewritten.msi"
  measure "$work/copy-over" sh -c 'cp "$1" "$2" && sync "$2"' sh "$work/package.msi" "$work/copy.msi"
  measure "$work/edit" "$tool" import "$work/copy.msi" "$work/Property.idt"
  rm "$work/copy.msi"
  measure "$work/transform" "$tool" transform apply "$work/package.msi" "$work/edit.mst" \
    -o "$work/applied.msi"
  rm "$work/applied.msi"
  measure "$work/export-all" "$tool" export-all "$work/package.msi" "$work/tables"
  rm -r "$work/tables"
  measure "$work/merge" "$tool" merge "$work/package.msi" "$work/module.msm" --feature Main \
    --directory TARGETDIR -o "$work/merged.msi"
  rm "$work/merged.msi"
done
best() { sort -n "$1" | head -1; }
read -r copy _ < <(best "$work/copy")
read -r over _ < <(best "$work/copy-over")
echo "package of $megabytes MiB: cp + sync ${copy}s, cp onto an existing copy + sync ${over}s"
for run in rewrite edit transform export-all merge; do
  read -r seconds peak < <(best "$work/$run")
  awk -v run="$run" -v s="$seconds" -v c="$copy" -v kb="$peak" \
    'BEGIN { printf "odlex %s: %.2fs (%.2fx the copy), peak %d MiB\n", run, s, s / c, kb / 1024 }'
done
read -r seconds _ < <(best "$work/edit")
awk -v s="$seconds" -v o="$over" 'BEGIN { printf "odlex edit: %.2fx the copy onto an existing copy\n", s / o }'
