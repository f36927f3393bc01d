// Conflicts between the folders of a package and those of a merge module merged into it.

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/CaseMapping.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

std::u16string foldedText(const TalString& text) {
  std::u16string folded = text.u16();
  for (char16_t& c : folded)
    c = odlex::FoldCaseChar(c);
  return folded;
}

// `message` with each placeholder of `values` replaced, in one pass: a replacement is never
// searched for placeholders again.
std::u16string format(const std::u16string& message,
                      const std::vector<std::pair<std::u16string_view, std::u16string>>& values) {
  std::u16string text;
  for (std::size_t at = 0; at < message.size();) {
    const auto placeholder = std::ranges::find_if(values, [&](const auto& value) {
      return message.compare(at, value.first.size(), value.first) == 0;
    });
    if (placeholder == values.end()) {
      text += message[at++];
    } else {
      text += placeholder->second;
      at += placeholder->first.size();
    }
  }
  return text;
}

}  // namespace

bool ODLEXTDirectory::CheckForConflictingPaths(ODLEXDatabase& module,
                                               std::vector<TalString>& packageKeys,
                                               std::vector<TalString>& moduleKeys) {
  init();
  // The live rows here by folded long target path; several rows may share one.
  std::multimap<std::u16string, MSIEDirectory*> byPath;
  for (RWCollectable* item : GetTable().GetTable()) {
    auto& row = static_cast<MSIEDirectory&>(*item);
    if (!row.IsDeleted())
      byPath.emplace(foldedText(GetLongTarget(row)), &row);
  }
  ODLEXTDirectory& theirs = module.GetDirectory();
  theirs.init();
  const std::size_t before = packageKeys.size();
  for (RWCollectable* item : theirs.GetTable().GetTable()) {
    const auto& their = static_cast<const MSIEDirectory&>(*item);
    if (their.IsDeleted())
      continue;
    const MSIEDirectory* same = Lookup(their.GetDirectory());
    if (same && !isPredefinedFolder(their.GetDirectory()) &&
        (same->GetDefaultDir() != their.GetDefaultDir() ||
         same->GetDirectoryParent() != their.GetDirectoryParent())) {
      packageKeys.push_back(same->GetDirectory());
      moduleKeys.push_back(their.GetDirectory());
    }
    const std::u16string theirShort = foldedText(theirs.GetShortTarget(their));
    auto [first, last] = byPath.equal_range(foldedText(theirs.GetLongTarget(their)));
    for (auto at = first; at != last; ++at) {
      const MSIEDirectory& ours = *at->second;
      if (ours.GetDirectory() != their.GetDirectory() &&
          foldedText(GetShortTarget(ours)) != theirShort) {
        packageKeys.push_back(ours.GetDirectory());
        moduleKeys.push_back(their.GetDirectory());
      }
    }
  }
  return packageKeys.size() != before;
}

TalString ODLEXTDirectory::CheckDirectoryPaths(ODLEXDatabase& module, const TalString& message) {
  std::vector<TalString> ours;
  std::vector<TalString> theirs;
  CheckForConflictingPaths(module, ours, theirs);
  ODLEXTDirectory& moduleFolders = module.GetDirectory();
  std::u16string text;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    if (i > 0)
      text += u'\n';
    text += format(
        message.u16(),
        {{u"{DIR}", ours[i].u16()},
         {u"{DEFAULT}", GetDirectoryWithID(ours[i]).GetDefaultDir().u16()},
         {u"{MOD_DIR}", theirs[i].u16()},
         {u"{MOD_DEFAULT}", moduleFolders.GetDirectoryWithID(theirs[i]).GetDefaultDir().u16()}});
  }
  return TalString(text);
}
