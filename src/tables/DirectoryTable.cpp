// The Directory table object: folders added by path, their paths in each form, the folder
// properties paths start with, walks of the tree and short names set from a path.

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/TalCollectableString.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

constexpr const char16_t* kFolderProperties[] = {
    u"[TARGETDIR]",          u"[ARPINSTALLLOCATION]", u"[PRIMARYFOLDER]",  u"[ROOTDRIVE]",
    u"[AppDataFolder]",      u"[CommonFilesFolder]",  u"[DesktopFolder]",  u"[FavoritesFolder]",
    u"[FontsFolder]",        u"[NetHoodFolder]",      u"[PersonalFolder]", u"[PrintHoodFolder]",
    u"[ProgramFilesFolder]", u"[ProgramMenuFolder]",  u"[RecentFolder]",   u"[SendToFolder]",
    u"[StartMenuFolder]",    u"[StartupFolder]",      u"[System16Folder]", u"[SystemFolder]",
    u"[TempFolder]",         u"[TemplateFolder]",     u"[WindowsFolder]",  u"[WindowsVolume]",
    u"[PrimaryVolumePath]"};

void replaceFirst(std::u16string& text, std::u16string_view what, std::u16string_view with) {
  const std::size_t at = text.find(what);
  if (at != std::u16string::npos)
    text.replace(at, what.size(), with);
}

std::u16string folded(std::u16string text) {
  for (char16_t& ch : text)
    if (ch >= u'A' && ch <= u'Z')
      ch = static_cast<char16_t>(ch - u'A' + u'a');
  return text;
}

// The target side of a DefaultDir value ("target:source"), its long name ("short|long").
std::u16string longTargetName(const MSIEDirectory& row) {
  TalString target, source, shortName, longName;
  MSIEDirectory::SplitString(row.GetDefaultDir(), u':', target, source);
  MSIEDirectory::SplitString(target, u'|', shortName, longName);
  return (longName.u16().empty() ? shortName : longName).u16();
}

// Rows by the key of their parent; a root (no parent, or itself as parent) under "".
std::multimap<std::u16string, MSIEDirectory*> childrenOf(const RWBTree& rows) {
  std::multimap<std::u16string, MSIEDirectory*> children;
  for (RWCollectable* item : rows) {
    auto* row = static_cast<MSIEDirectory*>(item);
    const std::u16string parent = row->GetDirectoryParent().u16();
    children.emplace(parent == row->GetDirectory().u16() ? std::u16string() : parent, row);
  }
  return children;
}

// Inserts `top` and the rows below it into `out`; a row met before is not walked again, so a
// cycle of parents ends.
void insertBelow(const std::multimap<std::u16string, MSIEDirectory*>& children, MSIEDirectory& top,
                 RWBTree& out, std::set<const MSIEDirectory*>& seen) {
  std::vector<MSIEDirectory*> pending = {&top};
  while (!pending.empty()) {
    MSIEDirectory* row = pending.back();
    pending.pop_back();
    if (!seen.insert(row).second)
      continue;
    out.insert(row);
    const auto [first, last] = children.equal_range(row->GetDirectory().u16());
    for (auto it = first; it != last; ++it)
      pending.push_back(it->second);
  }
}

}  // namespace

bool ODLEXTDirectory::isPredefinedFolder(const TalString& key) {
  const std::u16string bracketed = u"[" + key.u16() + u"]";
  return std::ranges::find(kFolderProperties, bracketed) != std::end(kFolderProperties);
}

void ODLEXTDirectory::init() {
  if (!needsInit_)
    return;
  GetTable().SetRelatedTables(&GetDatabase().GetProperty().GetTable());
  needsInit_ = false;
}

void ODLEXTDirectory::Unload() {
  ODLEXTRowTable::Unload();
  needsInit_ = true;
}

RWBTree& ODLEXTDirectory::GetEntries() {
  RWBTree rows;
  SetTempEntries(GetDirectoriesDeep(rows));
  return GetTempEntries();
}

MSIEDirectory& ODLEXTDirectory::GetDirectoryWithID(const TalString& key) {
  return FindOrThrow(GetTable().FindByDirectory(key), ODLEXDatabaseError::eDirectoryNotFound);
}

bool ODLEXTDirectory::IsValid(const MSIEDirectory&, unsigned int&) {
  return true;
}

void ODLEXTDirectory::Add(const TalString& target, const TalString& source) {
  init();
  MSIEDirectory* row =
      source.u16().empty() ? GetTable().Add(target) : GetTable().Add(source, target);
  SetTempEntries(row);
  if (!row)
    return;
  Modify(true);
  row->SetDeleted(false);
  row->Modify();
  if (row->GetDirectory().u16() != target.u16())
    GetDatabase().GetProperty().Modify(true);
}

bool ODLEXTDirectory::Change(MSIEDirectory& target, const MSIEDirectory& values) {
  if (values.GetSourcePath(false, false, false).u16() ==
          target.GetSourcePath(false, false, false).u16() &&
      values.GetTargetPath(false, false, false).u16() ==
          target.GetTargetPath(false, false, false).u16()) {
    SetTempEntries(&target);
    return false;
  }
  Modify(true);
  SetTempEntries(nullptr);
  return true;
}

TalString ODLEXTDirectory::GetLongSource(const MSIEDirectory& row) {
  return row.GetSourcePath(true, false, false);
}
TalString ODLEXTDirectory::GetLongTarget(const MSIEDirectory& row) {
  return row.GetTargetPath(true, false, false);
}
TalString ODLEXTDirectory::GetShortSource(const MSIEDirectory& row) {
  return row.GetSourcePath(true, false, true);
}
TalString ODLEXTDirectory::GetShortTarget(const MSIEDirectory& row) {
  return row.GetTargetPath(true, false, true);
}

TalString ODLEXTDirectory::GetLongSourceNoProperty(const MSIEDirectory& row) {
  std::u16string path = GetDatabase().GetProperty().Expand(GetLongSource(row)).u16();
  replaceFirst(path, u"[SourceDir]", GetDatabase().GetSourceRoot().u16());
  const bool unc = path.size() > 2 && path.starts_with(u"\\\\");
  replaceFirst(path, u"\\\\", u"\\");
  replaceFirst(path, u"\\\\", u"\\");
  if (const std::size_t last = path.rfind(u'\\'); last != std::u16string::npos)
    path.erase(last);
  if (unc)
    path.insert(0, u"\\");
  return TalString(path);
}

TalString ODLEXTDirectory::GetPropertyFromPath(const TalString& path) {
  const std::u16string& text = path.u16();
  const std::size_t bracket = text.find(u']');
  if (bracket == std::u16string::npos)
    return TalString();
  if (bracket == text.size() - 1)
    return path;
  return bracket > 0 ? TalString(text.substr(0, bracket + 1)) : TalString();
}

RWBTree ODLEXTDirectory::GetDirectoryProperties(bool forTarget) {
  RWBTree rows;
  GetDirectoriesDeep(rows);
  std::set<std::u16string> properties;
  if (forTarget)
    properties.insert(std::begin(kFolderProperties), std::end(kFolderProperties));
  const MSIEDirectory* root = GetTable().GetRoot();
  for (RWCollectable* item : rows) {
    const auto& row = static_cast<const MSIEDirectory&>(*item);
    if (&row == root)
      continue;
    const TalString property =
        GetPropertyFromPath(forTarget ? GetLongTarget(row) : GetLongSource(row));
    if (!property.u16().empty())
      properties.insert(property.u16());
  }
  RWBTree result;
  for (const std::u16string& property : properties)
    result.insert(new TalCollectableString(TalString(property)));
  return result;
}

TalString ODLEXTDirectory::GetDefaultDirectoryID(const TalString& path) const {
  std::u16string wanted = folded(path.u16());
  if (!wanted.empty() && wanted.back() != u'\\')
    wanted += u'\\';
  const auto& table = static_cast<const MSITDirectory&>(*GetLowerTable());
  for (RWCollectable* item : table.GetTable()) {
    const auto& row = static_cast<const MSIEDirectory&>(*item);
    if (!row.IsDeleted() && folded(row.GetTargetPath(true, false, false).u16()) == wanted)
      return row.GetDirectory();
  }
  return TalString();
}

RWBTree& ODLEXTDirectory::GetDirectoriesDeep(RWBTree& out) {
  const RWBTree& rows = GetTable().GetTable();
  const auto children = childrenOf(rows);
  std::set<const MSIEDirectory*> seen;
  const auto [first, last] = children.equal_range(std::u16string());
  for (auto it = first; it != last; ++it)
    insertBelow(children, *it->second, out, seen);
  for (RWCollectable* item : rows)
    insertBelow(children, static_cast<MSIEDirectory&>(*item), out, seen);
  return out;
}

RWBTree& ODLEXTDirectory::GetDirectoriesDeep(const MSIEDirectory& top, RWBTree& out) {
  std::set<const MSIEDirectory*> seen;
  insertBelow(childrenOf(GetTable().GetTable()), const_cast<MSIEDirectory&>(top), out, seen);
  return out;
}

void ODLEXTDirectory::SetShortPath(MSIEDirectory& row, const TalString& shortPath,
                                   const bool& withParents) {
  std::u16string path = shortPath.u16();
  if (const std::size_t bracket = path.find(u']'); bracket != std::u16string::npos)
    path.erase(0, bracket + 1 + (bracket + 1 < path.size() && path[bracket + 1] == u'\\'));
  if (!path.empty() && path.back() == u'\\')
    path.pop_back();
  std::vector<std::u16string> names;
  for (std::size_t start = 0;;) {
    const std::size_t slash = path.find(u'\\', start);
    names.push_back(path.substr(start, slash - start));
    if (slash == std::u16string::npos)
      break;
    start = slash + 1;
  }
  // Walks up from `row`, one name per folder that has a name; every step is bounded by the
  // table's size, so a cycle of parents ends.
  MSIEDirectory* folder = &row;
  std::size_t steps = GetTable().GetTable().entries();
  for (std::size_t index = names.size(); folder && index > 0 && steps-- > 0;) {
    if (longTargetName(*folder) != u".") {
      folder->SetShortDefaultDir(TalString(names[--index]));
      folder->Modify();
      Modify(true);
      if (!withParents)
        break;
    }
    folder = GetTable().FindByDirectory(folder->GetDirectoryParent());
  }
}
