// Adding host files to a feature: a component, a File row, its hash and its feature link per
// file, and a disk for them, all checked before the first row is added.

#include <algorithm>
#include <set>
#include <string>

#include "msi/directory/FileNames.h"
#include "msi/engine/Result.h"
#include "msi/lower/PathText.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "signature/FileFacts.h"
#include "signature/SystemFile.h"

namespace {

constexpr int kLastNumber = 32767;                  // the largest sequence number and disk id
constexpr std::uint64_t kMaxFileSize = 2147483647;  // what File.FileSize holds
constexpr short kNoncompressed = 8192;              // msidbFileAttributesNoncompressed

// Records the failure in the lower layer's error list and throws it.
[[noreturn]] void refuse(ODLEXDatabase& database, ODLEXDatabaseError::eCodeMeaning code,
                         unsigned status, const TalString& text, const TalString& subject) {
  database.GetDatabase().AddError(TalError(status, text, subject));
  throw ODLEXDatabaseErrorWithErrorCode(code, status);
}

// A host file about to be added: everything its rows need.
struct NewFile {
  TalString key;
  TalString fileName;
  odlex::signature::FileFacts facts;
};

// The names of the live files whose components install into `directoryID`.
odlex::directory::FolderFileNames namesInFolder(ODLEXDatabase& database,
                                                const TalString& directoryID) {
  std::set<std::u16string> components;
  for (RWCollectable* item : database.GetComponent().GetEntries()) {
    const auto& component = static_cast<const MSIEComponent&>(*item);
    if (!component.IsDeleted() && component.GetDirectoryID() == directoryID)
      components.insert(component.GetComponentID().u16());
  }
  odlex::directory::FolderFileNames names;
  for (RWCollectable* item : database.GetFile().GetEntries()) {
    const auto& file = static_cast<const MSIEFile&>(*item);
    if (!file.IsDeleted() && components.count(file.GetComponent().u16()))
      names.add(file.GetFileName().u16());
  }
  return names;
}

// The keys of every File row and MsiFileHash row, deleted ones too (a new row must not take
// the place of either).
std::set<std::u16string> takenFileKeys(ODLEXDatabase& database, bool hashes) {
  std::set<std::u16string> keys;
  for (RWCollectable* item : database.GetFile().GetEntries())
    keys.insert(static_cast<const MSIEFile&>(*item).GetFileID().u16());
  if (hashes) {
    for (RWCollectable* item : database.GetMsiFileHash().GetEntries())
      keys.insert(static_cast<const MSIEMsiFileHash&>(*item).GetFile().u16());
  }
  return keys;
}

// Reads `host` and names it in its folder; refuses it with code 9 when it cannot be added.
NewFile describe(ODLEXDatabase& database, const TalString& host,
                 odlex::directory::FolderFileNames& names, std::set<std::u16string>& keys) {
  NewFile file;
  const unsigned long status =
      odlex::signature::readFileFacts(odlex::lower::toPath(host), kMaxFileSize, file.facts);
  if (status == odlex::signature::kFileTooLarge)
    refuse(database, ODLEXDatabaseError::eFileAddFailed, odlex::engine::kFunctionFailed,
           TalString(u"larger than a File row records"), host);
  if (status != odlex::signature::kSuccess)
    refuse(database, ODLEXDatabaseError::eFileAddFailed, odlex::engine::kFileNotFound,
           TalString::FromUtf8(odlex::signature::fileStatusText(status)), host);
  const std::u16string longName = ODLEXTFile::GetFilenameFromPath(host).u16();
  const auto fileName = names.addNew(longName);
  if (!fileName)
    refuse(database, ODLEXDatabaseError::eFileAddFailed, odlex::engine::kInvalidParameter,
           TalString(fileName.error()), host);
  file.fileName = TalString(*fileName);
  file.key = TalString(odlex::directory::makeFileKey(
      longName, [&](std::u16string_view key) { return keys.count(std::u16string(key)) > 0; }));
  keys.insert(file.key.u16());
  return file;
}

// The highest live sequence number of the files and disks, and the highest disk id of any
// Media row (a new disk must not take a deleted one's place).
std::pair<int, int> mediaEnd(ODLEXDatabase& database) {
  int lastSequence = database.GetFile().GetLastSequence();
  int lastDisk = 0;
  for (RWCollectable* item : database.GetMedia().GetEntries()) {
    const auto& disk = static_cast<const MSIEMedia&>(*item);
    if (!disk.IsDeleted())
      lastSequence = std::max<int>(lastSequence, disk.GetLastSequence());
    lastDisk = std::max<int>(lastDisk, disk.GetDiskId());
  }
  return {lastSequence, lastDisk};
}

// The rows of one new file, its component made first.
void addFileRows(ODLEXDatabase& database, const NewFile& file, const MSIEFeature& feature,
                 const MSIEDirectory& directory, short sequence, bool hashes) {
  ODLEXTComponent& components = database.GetComponent();
  MSIEComponent component(u"new", ODLEXTObject::GenerateGUID(), directory.GetDirectory());
  component.SetKeyPath(file.key);
  components.Add(component, directory);
  RWBTree& made = components.GetTempEntries();
  if (made.isEmpty())
    throw ODLEXDatabaseError(ODLEXDatabaseError::eInternalFailure);
  const TalString componentID = static_cast<const MSIEComponent&>(**made.begin()).GetComponentID();

  MSIEFile row(file.key);
  row.SetComponent(componentID);
  row.SetFileName(file.fileName);
  row.SetFileSize(static_cast<std::int32_t>(file.facts.size));
  if (file.facts.version) {
    row.SetVersion(TalString::FromUtf8(file.facts.version->version));
    row.SetLanguage(TalString::FromUtf8(file.facts.version->language));
  }
  row.SetAttributes(kNoncompressed);
  row.SetSequence(sequence);
  database.GetFile().Add(row);
  if (!file.facts.version && hashes) {
    MSIEMsiFileHash hash(file.key);
    hash.SetOptions(0);
    hash.SetHashPart1(file.facts.hash[0]);
    hash.SetHashPart2(file.facts.hash[1]);
    hash.SetHashPart3(file.facts.hash[2]);
    hash.SetHashPart4(file.facts.hash[3]);
    database.GetMsiFileHash().Add(hash);
  }
  database.GetFeatureComponents().Add(MSIEFeatureComponents(feature.GetFeature(), componentID));
}

}  // namespace

std::vector<TalString> ODLEXTFeature::AddFiles(const TalString& featureID,
                                               const TalString& directoryID,
                                               const std::vector<TalString>& files) {
  ODLEXDatabase& database = GetDatabase();
  const MSIEFeature* feature = Lookup(featureID);
  if (!feature)
    refuse(database, ODLEXDatabaseError::eFeatureNotFound, odlex::engine::kInvalidParameter,
           TalString(u"no such feature"), featureID);
  const MSIEDirectory* directory = database.GetDirectory().Lookup(directoryID);
  if (!directory)
    refuse(database, ODLEXDatabaseError::eDirectoryNotFound, odlex::engine::kInvalidParameter,
           TalString(u"no such folder"), directoryID);
  if (files.empty())
    return {};

  const bool hashes = database.IsTableValid(ODLEXTObject::eMsiFileHash);
  odlex::directory::FolderFileNames names = namesInFolder(database, directoryID);
  std::set<std::u16string> keys = takenFileKeys(database, hashes);
  std::vector<NewFile> added;
  for (const TalString& host : files)
    added.push_back(describe(database, host, names, keys));
  const auto [lastSequence, lastDisk] = mediaEnd(database);
  if (lastSequence + static_cast<std::int64_t>(added.size()) > kLastNumber ||
      lastDisk >= kLastNumber)
    refuse(database, ODLEXDatabaseError::eFileAddFailed, odlex::engine::kFunctionFailed,
           TalString(u"no sequence numbers are left"), featureID);

  std::vector<TalString> madeKeys;
  short sequence = static_cast<short>(lastSequence);
  for (const NewFile& file : added) {
    addFileRows(database, file, *feature, *directory, ++sequence, hashes);
    madeKeys.push_back(file.key);
  }
  MSIEMedia disk(static_cast<short>(lastDisk + 1));
  disk.SetLastSequence(sequence);
  database.GetMedia().Add(disk);
  return madeKeys;
}
