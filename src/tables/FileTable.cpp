// The File table object: files by key and by component, their names, paths, versions and the
// rows of other tables that describe them.

#include <algorithm>
#include <set>

#include "msi/lower/PathText.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/Path.h"
#include "odlex/tables/ODLEXTables.h"
#include "signature/FontName.h"
#include "signature/PeVersion.h"
#include "tables/RowQueries.h"

using odlex::tables::collectRowsOfComponent;
using odlex::tables::followReference;

namespace {

// Whether `text` is a version: digits and dots, starting with a digit.
bool isVersion(const std::u16string& text) {
  return !text.empty() && text.front() >= u'0' && text.front() <= u'9' &&
         std::ranges::all_of(text,
                             [](char16_t c) { return c == u'.' || (c >= u'0' && c <= u'9'); });
}

// `name` split at its '|': the short part (before) and the long part (after, null without '|').
std::pair<TalString, TalString> namesOf(const TalString& name) {
  TalString shortName;
  TalString longName;
  MSIEDirectory::SplitString(name, u'|', shortName, longName);
  return {shortName, longName};
}

}  // namespace

void ODLEXTFile::Add(const MSIEFile& row) {
  if (row.GetFileID().u16().empty()) {
    SetTempEntries(nullptr);
    throw ODLEXDatabaseError(ODLEXDatabaseError::eFileAddFailed);
  }
  AddEntry(row);
  if (GetTempEntries().isEmpty())
    throw ODLEXDatabaseError(ODLEXDatabaseError::eFileAddFailed);
}

MSIEFile& ODLEXTFile::GetFileWithID(const TalString& id) {
  return FindOrThrow(GetTable().Find(id), ODLEXDatabaseError::eFileNotFound);
}

RWBTree& ODLEXTFile::GetFiles(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

bool ODLEXTFile::DoesComponentHaveFiles(const MSIEComponent& component) {
  return std::ranges::any_of(GetEntries(), [&](RWCollectable* item) {
    const auto& file = static_cast<const MSIEFile&>(*item);
    return !file.IsDeleted() && file.GetComponent() == component.GetComponentID();
  });
}

bool ODLEXTFile::IsEmpty() {
  return std::ranges::all_of(GetEntries(), [](RWCollectable* item) {
    return static_cast<const MSIEntry&>(*item).IsDeleted();
  });
}

short ODLEXTFile::GetLastSequence() {
  short last = 0;
  for (RWCollectable* item : GetEntries()) {
    const auto& file = static_cast<const MSIEFile&>(*item);
    if (!file.IsDeleted())
      last = std::max(last, file.GetSequence());
  }
  return last;
}

void ODLEXTFile::init(MSIEFile& row, const MSIEComponent& component) {
  row.SetComponent(component.GetComponentID());
  row.SetSequence(static_cast<short>(std::min<int>(GetLastSequence() + 1, 32767)));
  row.SetAttributes(NullableSignedShort());
}

MSIEComponent& ODLEXTFile::GetComponent(const MSIEFile& file) {
  return followReference(GetDatabase().GetComponent().Lookup(file.GetComponent()), kType, file,
                         ODLEXDatabaseError::eComponentNotFound);
}

MSIEDirectory& ODLEXTFile::GetDirectory(const MSIEFile& file) {
  return GetDatabase().GetComponent().GetDirectory(GetComponent(file));
}

MSIEBindImage& ODLEXTFile::GetBindImage(const MSIEFile& file) {
  return followReference(GetDatabase().GetBindImage().Lookup(file.GetFileID()), kType, file,
                         ODLEXDatabaseError::eBindImageNotFound);
}

TalString ODLEXTFile::GetLongFileName(const TalString& fileName) {
  auto [shortName, longName] = namesOf(fileName);
  return longName.isNull() ? shortName : longName;
}

TalString ODLEXTFile::GetShortFileName(const TalString& fileName) {
  return namesOf(fileName).first;
}

TalString ODLEXTFile::GetCombinedFile(const TalString& shortName, const TalString& longName) {
  if (longName.u16().empty() || longName == shortName)
    return shortName;
  return TalString(shortName.u16() + u'|' + longName.u16());
}

TalString ODLEXTFile::GetFilenameFromPath(const TalString& path) {
  return odlex::path::FileName(path);
}

TalString ODLEXTFile::GetKeyPath(const TalString& id) {
  return GetLongFileName(GetFileWithID(id));
}

TalString ODLEXTFile::GetLongFilePathSource(const MSIEFile& file) {
  const TalString folder = GetDirectory(file).GetSourcePath(true, false, false);
  if (folder.isNull())
    return folder;
  return TalString(folder.u16() + GetLongFileName(file).u16());
}

TalString ODLEXTFile::GetSourcePath(const MSIEFile& file) {
  const TalString folder = GetDirectory(file).GetSourcePath(true, false, true);
  if (folder.isNull())
    return folder;
  return TalString(folder.u16() + GetShortFileName(file).u16());
}

TalString ODLEXTFile::GetTargetPath(const MSIEFile& file) {
  const TalString folder = GetDirectory(file).GetTargetPath(true, false, false);
  if (folder.isNull())
    return folder;
  return TalString(folder.u16() + GetLongFileName(file).u16());
}

TalString ODLEXTFile::GetVersionToDisplay(const MSIEFile& file) {
  std::set<const MSIEFile*> visited;
  for (const MSIEFile* current = &file; visited.insert(current).second;) {
    const TalString version = current->GetVersion();
    if (version.u16().empty())
      return version;
    if (const MSIEFile* companion = Lookup(version)) {
      current = companion;
      continue;
    }
    if (isVersion(version.u16()))
      return version;
    break;
  }
  throw ODLEXDatabaseErrorWithEntry(kType, file, ODLEXDatabaseError::eFileVersionFailed);
}

bool ODLEXTFile::SetCompanionFile(MSIEFile& file, const MSIEFile& companion) {
  if (&companion == &file || Lookup(companion.GetFileID()) != &companion)
    return false;
  file.SetVersion(companion.GetFileID());
  Revive(file);
  return true;
}

bool ODLEXTFile::SetToFileVersion(MSIEFile& file, const TalString& path) {
  std::string why;
  const std::optional<odlex::signature::PeVersion> version =
      odlex::signature::fileVersion(odlex::lower::toPath(path), why);
  if (!version)
    return false;
  file.SetVersion(TalString::FromUtf8(version->version));
  file.SetLanguage(version->language.empty() ? TalString()
                                             : TalString::FromUtf8(version->language));
  Revive(file);
  return true;
}

bool ODLEXTFile::IsFileAFont(const MSIEFile& file) {
  return GetDatabase().GetFont().IsFileAFont(file);
}

TalString ODLEXTFile::GetTTFontName(const TalString& path) {
  std::string why;
  const auto name = odlex::signature::fileFontName(odlex::lower::toPath(path), why);
  return name ? TalString(*name) : TalString();
}

bool ODLEXTFile::IsFileAutoRegister(const MSIEFile& file) {
  return GetDatabase().GetSelfReg().Lookup(file.GetFileID()) != nullptr;
}

void ODLEXTFile::SetFileAutoRegister(const MSIEFile& file, bool on) {
  ODLEXTSelfReg& selfReg = GetDatabase().GetSelfReg();
  MSIESelfReg* row = selfReg.Lookup(file.GetFileID());
  if (on && !row)
    selfReg.Add(MSIESelfReg(file.GetFileID()));
  else if (!on && row)
    selfReg.Delete(*row);
}

bool ODLEXTFile::IsFileInComponentKeyPath(const MSIEFile& file) {
  const MSIEComponent* component = GetDatabase().GetComponent().Lookup(file.GetComponent());
  return component && component->GetKeyPath() == file.GetFileID() &&
         (component->GetAttributes() & msidbComponentAttributesRegistryKeyPath) == 0;
}

RWBTree& ODLEXTFile::GetPermissions(RWBTree& out, const MSIEFile& file) {
  return GetDatabase().GetLockPermissions().GetLockPermissions(out, u"File", file.GetFileID());
}

void ODLEXTFile::SetPermissions(const MSIEFile& file, const RWBTree& permissions) {
  GetDatabase().GetLockPermissions().SetLockPermissions(u"File", file.GetFileID(), permissions);
}
