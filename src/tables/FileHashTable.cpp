// The MsiFileHash table object: hashes of files' source files.

#include <algorithm>
#include <array>
#include <cstdint>

#include "msi/lower/PathText.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "signature/SystemFile.h"

namespace {

// The installer's hash part `index` (0 to 3): four bytes of the digest, little-endian, signed.
long hashPart(const std::array<unsigned char, 16>& digest, std::size_t index) {
  const unsigned char* bytes = digest.data() + 4 * index;
  const std::uint32_t word = std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 |
                             std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
  return static_cast<std::int32_t>(word);
}

}  // namespace

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
  row.SetOptions(0);
  row.SetHashPart1(hashPart(digest, 0));
  row.SetHashPart2(hashPart(digest, 1));
  row.SetHashPart3(hashPart(digest, 2));
  row.SetHashPart4(hashPart(digest, 3));
  return row;
}

void ODLEXTMsiFileHash::RefreshFileHash(const MSIEFile& file) {
  const MSIEMsiFileHash hash = GetFileHash(file);
  if (MSIEMsiFileHash* row = GetTable().Find(file.GetFileID()))
    Change(*row, hash);
  else
    Add(hash);
}
