// Dependencies and exclusions between merge modules.

#include "package/merge/ModuleRelations.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace odlex::merge {

namespace {

// The next dotted part of `text` from `pos` as a number (capped, so long digit runs cannot
// overflow), moving `pos` past it and its dot.
std::uint64_t nextPart(std::u16string_view text, std::size_t& pos) {
  std::uint64_t value = 0;
  bool number = true;
  for (; pos < text.size() && text[pos] != u'.'; ++pos) {
    const char16_t c = text[pos];
    if (c < u'0' || c > u'9')
      number = false;
    else
      value = std::min<std::uint64_t>(value * 10 + (c - u'0'), UINT32_MAX);
  }
  if (pos < text.size())
    ++pos;
  return number ? value : 0;
}

// The rows of `merged` that name the module `id` in a language `language` covers and in the
// version range [minVersion, maxVersion] (an empty bound is open).
bool anyMerged(const TableRows* merged, const std::u16string& id, int language,
               std::u16string_view minVersion, std::u16string_view maxVersion) {
  if (!merged)
    return false;
  for (const Row& row : merged->rows) {
    if (merged->textOf(row, u"ModuleID") != id ||
        !languageMatches(language, merged->integerOf(row, u"Language", 0)))
      continue;
    const std::u16string version = merged->textOf(row, u"Version");
    if (!minVersion.empty() && compareVersions(version, minVersion) < 0)
      continue;
    if (!maxVersion.empty() && compareVersions(version, maxVersion) > 0)
      continue;
    return true;
  }
  return false;
}

}  // namespace

int compareVersions(std::u16string_view a, std::u16string_view b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() || j < b.size()) {
    const std::uint64_t x = nextPart(a, i);
    const std::uint64_t y = nextPart(b, j);
    if (x != y)
      return x < y ? -1 : 1;
  }
  return 0;
}

bool languageMatches(int wanted, int language) {
  if (wanted == 0)
    return true;
  return wanted > 0 ? language == wanted : language != -wanted;
}

void checkDependencies(const TableRows* dependencies, const TableRows* merged, MergeLog& log) {
  if (!dependencies)
    return;
  for (const Row& row : dependencies->rows) {
    const std::u16string required = dependencies->textOf(row, u"RequiredID");
    const std::u16string version = dependencies->textOf(row, u"RequiredVersion");
    if (!anyMerged(merged, required, dependencies->integerOf(row, u"RequiredLanguage", 0), version,
                   {}))
      log.record(ODLEXMergeError::eMissingDependency,
                 u"the module needs the module " + required +
                     (version.empty() ? u"" : u" version " + version + u" or later") +
                     u", which is not merged into the package");
  }
}

void checkExclusions(const ModuleIdentity& module, const TableRows* moduleExclusions,
                     const TableRows* merged, const TableRows* packageExclusions, MergeLog& log) {
  if (moduleExclusions) {
    for (const Row& row : moduleExclusions->rows) {
      const std::u16string excluded = moduleExclusions->textOf(row, u"ExcludedID");
      if (anyMerged(merged, excluded, moduleExclusions->integerOf(row, u"ExcludedLanguage", 0),
                    moduleExclusions->textOf(row, u"ExcludedMinVersion"),
                    moduleExclusions->textOf(row, u"ExcludedMaxVersion")))
        log.stop(
            ODLEXDatabaseError::eMergeStep50, ODLEXMergeError::eExclusion,
            u"the module excludes the module " + excluded + u", which is merged into the package");
    }
  }
  if (!packageExclusions)
    return;
  // The one-row table of this module, to match the package's exclusions against.
  const TableRows self{u"ModuleSignature",
                       {{u"ModuleID", engine::column_type::kText | engine::column_type::kKey},
                        {u"Language", engine::column_type::kInteger16 | engine::column_type::kKey},
                        {u"Version", engine::column_type::kText}},
                       {{Value::ofText(module.id), Value::ofInteger(module.language),
                         Value::ofText(module.version)}}};
  for (const Row& row : packageExclusions->rows) {
    if (packageExclusions->textOf(row, u"ExcludedID") != module.id)
      continue;
    if (anyMerged(&self, module.id, packageExclusions->integerOf(row, u"ExcludedLanguage", 0),
                  packageExclusions->textOf(row, u"ExcludedMinVersion"),
                  packageExclusions->textOf(row, u"ExcludedMaxVersion")))
      log.stop(ODLEXDatabaseError::eMergeStep50, ODLEXMergeError::eExclusion,
               u"the merged module " + packageExclusions->textOf(row, u"ModuleID") +
                   u" excludes the module " + module.id);
  }
}

}  // namespace odlex::merge
