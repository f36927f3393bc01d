// Reading a file's size, version and hash, and recording them in the File and MsiFileHash rows.

#include "package/files/FileFacts.h"

#include <optional>
#include <system_error>

#include "msi/engine/Text.h"
#include "odlex/tables/ODLEXTables.h"
#include "package/cabinet/Cabinet.h"
#include "package/files/TableCells.h"
#include "signature/PeVersion.h"

namespace odlex::package {

bool readFileFacts(const std::filesystem::path& file, FileFacts& facts, TalError& error) {
  const TalString name = TalString::FromUtf8(file.string());
  std::error_code failed;
  const std::uintmax_t size = std::filesystem::file_size(file, failed);
  if (failed) {
    error = TalError(engine::kFileNotFound, TalString::FromUtf8(failed.message()), name);
    return false;
  }
  if (size > CabinetWriter::kMaxMemberSize) {
    error = TalError(engine::kFunctionFailed, TalString(u"too large for a cabinet"), name);
    return false;
  }
  facts = FileFacts{};
  facts.size = static_cast<std::int32_t>(size);
  std::string why;
  if (const auto version = signature::fileVersion(file, why)) {
    facts.versioned = true;
    facts.version = engine::fromUtf8(version->version);
    facts.language = engine::fromUtf8(version->language);
    return true;
  }
  try {
    const MSIEMsiFileHash row = ODLEXTMsiFileHash::HashFile(name, TalString(u"-"));
    facts.hash = {static_cast<std::int32_t>(row.GetHashPart1()),
                  static_cast<std::int32_t>(row.GetHashPart2()),
                  static_cast<std::int32_t>(row.GetHashPart3()),
                  static_cast<std::int32_t>(row.GetHashPart4())};
  } catch (const ODLEXDatabaseError&) {
    error = TalError(engine::kFileNotFound, TalString(u"cannot be read"), name);
    return false;
  }
  return true;
}

bool recordFileFacts(engine::Database& database, std::u16string_view key, const FileFacts& facts,
                     TalError& error) {
  engine::Table* files = database.findTable(u"File");
  const std::optional<std::size_t> fileRow =
      files ? rowWithKey(database, *files, key) : std::nullopt;
  if (!fileRow) {
    error = TalError(engine::kInvalidParameter, TalString(u"no such file in the package"),
                     TalString(std::u16string(key)));
    return false;
  }
  engine::Table* hashes = facts.versioned ? database.findTable(u"MsiFileHash")
                                          : standardTable(database, u"MsiFileHash", error);
  if (!hashes && !facts.versioned)
    return false;
  setInteger(*files, *fileRow, u"FileSize", facts.size);
  setText(database, *files, *fileRow, u"Version", facts.version);
  setText(database, *files, *fileRow, u"Language", facts.language);
  std::optional<std::size_t> hashRow = hashes ? rowWithKey(database, *hashes, key) : std::nullopt;
  if (facts.versioned) {
    if (hashRow)
      hashes->removeRow(*hashRow);
    return true;
  }
  if (!hashRow) {
    hashRow = hashes->addRow();
    setText(database, *hashes, *hashRow, u"File_", key);
  }
  setInteger(*hashes, *hashRow, u"Options", 0);
  const char16_t* parts[] = {u"HashPart1", u"HashPart2", u"HashPart3", u"HashPart4"};
  for (std::size_t i = 0; i < 4; ++i)
    setInteger(*hashes, *hashRow, parts[i], facts.hash[i]);
  return true;
}

}  // namespace odlex::package
