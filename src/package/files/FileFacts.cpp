// Reading a file's size, version and hash for a cabinet, and recording them in the File and
// MsiFileHash rows.

#include "package/files/FileFacts.h"

#include <optional>

#include "msi/engine/Text.h"
#include "package/cabinet/Cabinet.h"
#include "package/files/TableCells.h"
#include "signature/SystemFile.h"

namespace odlex::package {

bool readFileFacts(const std::filesystem::path& file, FileFacts& facts, TalError& error) {
  const unsigned long status = signature::readFileFacts(file, CabinetWriter::kMaxMemberSize, facts);
  if (status == signature::kSuccess)
    return true;
  const bool tooLarge = status == signature::kFileTooLarge;
  error = TalError(
      tooLarge ? engine::kFunctionFailed : engine::kFileNotFound,
      TalString::FromUtf8(tooLarge ? "too large for a cabinet" : signature::fileStatusText(status)),
      TalString::FromUtf8(file.string()));
  return false;
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
  const bool versioned = facts.version.has_value();
  engine::Table* hashes = versioned ? database.findTable(u"MsiFileHash")
                                    : standardTable(database, u"MsiFileHash", error);
  if (!hashes && !versioned)
    return false;
  setInteger(*files, *fileRow, u"FileSize", static_cast<std::int32_t>(facts.size));
  setText(database, *files, *fileRow, u"Version",
          versioned ? engine::fromUtf8(facts.version->version) : std::u16string());
  setText(database, *files, *fileRow, u"Language",
          versioned ? engine::fromUtf8(facts.version->language) : std::u16string());
  std::optional<std::size_t> hashRow = hashes ? rowWithKey(database, *hashes, key) : std::nullopt;
  if (versioned) {
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
