// The MsiFileHash table object: hashes of files' source files.

#include <algorithm>
#include <array>
#include <cstdint>

#include "msi/lower/PathText.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "signature/FileFacts.h"
#include "signature/SystemFile.h"

void ODLEXTMsiFileHash::Add(const MSIEFile& file) {
  Add(GetFileHash(file));
}

void ODLEXTMsiFileHash::Delete(const MSIEFile& file) {
  if (MSIEMsiFileHash* row = GetTable().Find(file.GetFileID()))
    Delete(*row);
}

MSIEMsiFileHash& ODLEXTMsiFileHash::GetEntryWithFileID(const TalString& fileID) {
  return FindOrThrow(GetTable().Find(fileID), ODLEXDatabaseError::eFileHashNotFound);
}

MSIEMsiFileHash& ODLEXTMsiFileHash::GetEntry(const MSIEFile& file) {
  return GetEntryWithFileID(file.GetFileID());
}

TalString ODLEXTMsiFileHash::GetSourceFile(const MSIEFile& file) {
  static constexpr std::u16string_view kSourceDir = u"[SourceDir]";
  std::u16string path = GetDatabase().GetFile().GetLongFilePathSource(file).u16();
  if (!path.starts_with(kSourceDir))
    return TalString();
  std::u16string root = GetDatabase().GetSourceRoot().u16();
  if (root.empty())
    root = u".";
  if (root.back() != u'/' && root.back() != u'\\')
    root += u'/';
  path.replace(0, kSourceDir.size(), root);
  std::replace(path.begin(), path.end(), u'\\', u'/');
  return TalString(path);
}

MSIEMsiFileHash ODLEXTMsiFileHash::GetFileHash(const MSIEFile& file) {
  return HashFile(GetSourceFile(file), file.GetFileID());
}

MSIEMsiFileHash ODLEXTMsiFileHash::HashFile(const TalString& path, const TalString& fileID) {
  MSIEMsiFileHash row(fileID);
  std::array<unsigned char, 16> digest{};
  const unsigned long status =
      path.isNull() ? odlex::signature::kPathNotFound
                    : odlex::signature::md5OfFile(odlex::lower::toPath(path), digest);
  if (status != odlex::signature::kSuccess)
    throw ODLEXDatabaseErrorWithErrorCode(ODLEXDatabaseError::eFileHashFailed,
                                          static_cast<unsigned int>(status));
  const std::array<std::int32_t, 4> parts = odlex::signature::hashParts(digest);
  row.SetOptions(0);
  row.SetHashPart1(parts[0]);
  row.SetHashPart2(parts[1]);
  row.SetHashPart3(parts[2]);
  row.SetHashPart4(parts[3]);
  return row;
}

void ODLEXTMsiFileHash::RefreshFileHash(const MSIEFile& file) {
  const MSIEMsiFileHash hash = GetFileHash(file);
  if (MSIEMsiFileHash* row = GetTable().Find(file.GetFileID()))
    Change(*row, hash);
  else
    Add(hash);
}
