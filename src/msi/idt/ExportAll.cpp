#include "msi/idt/Idt.h"
#include "msi/idt/SafeFileName.h"
#include "msi/idt/TextCodec.h"

namespace odlex::idt {

std::uint32_t exportAll(engine::Database& db, storage::FileSystem& fs,
                        const std::filesystem::path& folder, engine::Error& error) {
  std::string reason;
  if (!fs.createDirectories(folder, reason)) {
    error = {engine::kWriteFault, folder.string() + ": " + reason};
    return error.code;
  }
  std::vector<std::u16string> tables;
  for (std::size_t i = 0; i < db.tableCount(); ++i)
    tables.push_back(db.table(i).name());
  if (db.summary())
    tables.emplace_back(kSummaryInformationTable);
  if (db.codePage() != 0)
    tables.emplace_back(kForceCodepageTable);

  // Each table's file and data folder are named after it; two names that become the same
  // file name would overwrite each other, so that is refused.
  UniqueNames names;
  for (const std::u16string& table : tables) {
    const std::string name = safeFileName(table);
    if (names.claim(name) != name) {
      error = {engine::kBadPathname,
               "tables " + forMessage(table) + " and another one both export to " + name + ".idt"};
      return error.code;
    }
    if (exportTable(db, table, fs, folder / (name + ".idt"), error) != engine::kSuccess) {
      return error.code;
    }
  }
  return engine::kSuccess;
}

}  // namespace odlex::idt
