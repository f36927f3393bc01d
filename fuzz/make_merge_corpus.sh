#!/usr/bin/env bash
# Rebuilds the seed modules in fuzz/merge-corpus with msibuild (an independent writer): a
# module with a folder, a component, a file in its cabinet, actions placed by base action and a
# configurable item; one that excludes itself and depends on a missing module; one whose actions form a
# cycle. The seeds are kept in the repository; run this only to change them.
set -euo pipefail
corpus="$(cd "$(dirname "$0")" && pwd)/merge-corpus"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir -p "$corpus"

# table NAME COLUMNS TYPES KEYS ROW... : writes NAME.idt, cells of a row separated by '|'.
table() {
  local name="$1" columns="$2" types="$3" keys="$4"
  shift 4
  {
    printf '%s\r\n%s\r\n%s\r\n' "${columns//|/$'\t'}" "${types//|/$'\t'}" "$name${keys:+$'\t'}${keys//|/$'\t'}"
    for row in "$@"; do printf '%s\r\n' "${row//|/$'\t'}"; done
  } >"$name.idt"
}

g=0A1B2C3D_4E5F_4061_8273_94A5B6C7D8E9
table ModuleSignature "ModuleID|Language|Version" "s72|i2|s32" "ModuleID|Language" "Seed.$g|1033|1.0"
table ModuleComponents "Component|ModuleID|Language" "s72|s72|i2" "Component|ModuleID|Language" \
  "C.$g|Seed.$g|1033"
table Directory "Directory|Directory_Parent|DefaultDir" "s72|S72|l255" "Directory" \
  "TARGETDIR||SourceDir" "D.$g|TARGETDIR|Seed"
table Component "Component|ComponentId|Directory_|Attributes|Condition|KeyPath" \
  "s72|S38|s72|i2|S255|S72" "Component" "C.$g|{22222222-3333-4444-5555-666666666666}|D.$g|0||F.$g"
table File "File|Component_|FileName|FileSize|Version|Language|Attributes|Sequence" \
  "s72|s72|l255|i4|S72|S20|I2|i2" "File" "F.$g|C.$g|seed.txt|4|||0|1"
table CustomAction "Action|Type|Source|Target" "s72|i2|S72|S255" "Action" \
  "A.$g|51|P.$g|[=Item]" "B.$g|51|Q.$g|x"
table ModuleInstallExecuteSequence "Action|Sequence|BaseAction|After|Condition" \
  "s64|I2|S64|I2|S255" "Action" "A.$g||InstallFiles|1|" "B.$g||A.$g|0|" "InstallFiles|4000|||"
table ModuleConfiguration \
  "Name|Format|Type|ContextData|DefaultValue|Attributes|DisplayName|Description|HelpLocation|HelpKeyword" \
  "s72|i2|S72|S0|S0|I4|L0|L0|S0|S0" "Name" "Item|0|||d|0||||"
table ModuleSubstitution "Table|Row|Column|Value" "s72|s0|s72|S0" "Table|Row|Column" \
  "CustomAction|A.$g|Target|[=Item]"
base=(ModuleSignature.idt ModuleComponents.idt Directory.idt Component.idt File.idt
  CustomAction.idt ModuleInstallExecuteSequence.idt ModuleConfiguration.idt ModuleSubstitution.idt)
msibuild "$corpus/module.msm" -i "${base[@]}"
# Its file in an MSZIP cabinet, stored under the File key.
mkdir files
printf 'seed!' >"files/F.$g"
(cd files && gcab -c -z ../files.cab "F.$g")
msibuild "$corpus/module.msm" -a MergeModule.CABinet files.cab

table ModuleExclusion \
  "ModuleID|ModuleLanguage|ExcludedID|ExcludedLanguage|ExcludedMinVersion|ExcludedMaxVersion" \
  "s72|i2|s72|i2|S32|S32" "ModuleID|ModuleLanguage|ExcludedID|ExcludedLanguage" \
  "Seed.$g|1033|Other.$g|0||"
table ModuleDependency "ModuleID|ModuleLanguage|RequiredID|RequiredLanguage|RequiredVersion" \
  "s72|i2|s72|i2|S32" "ModuleID|ModuleLanguage|RequiredID|RequiredLanguage" \
  "Seed.$g|1033|Missing.$g|0|2.0"
msibuild "$corpus/relations.msm" -i "${base[@]}" ModuleExclusion.idt ModuleDependency.idt

table ModuleInstallExecuteSequence "Action|Sequence|BaseAction|After|Condition" \
  "s64|I2|S64|I2|S255" "Action" "A.$g||B.$g|1|" "B.$g||A.$g|0|"
msibuild "$corpus/cycle.msm" -i "${base[@]}"
