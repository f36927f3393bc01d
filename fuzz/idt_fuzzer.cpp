// Fuzz target: the input is a table text file (.idt). It is imported into a new database, first
// replacing the table and then merging its rows into it; every table is exported to text again
// and the database saved and opened again. Damage must be refused with an error, never crash,
// hang or cost more than a small multiple of the input.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "msi/engine/Database.h"
#include "msi/idt/Idt.h"
#include "storage/MemoryFileSystem.h"

using odlex::engine::Database;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  odlex::storage::MemoryFileSystem fs;
  std::string reason;
  // A data file for Binary cells that name it.
  if (!fs.createDirectories("in/Binary", reason) ||
      !fs.writeFile("in/T.idt", {data, size}, reason) ||
      !fs.writeFile("in/Binary/a.ibd", {data, size < 16 ? size : 16}, reason))
    std::abort();
  odlex::engine::Error error;
  const std::unique_ptr<Database> database =
      Database::open(fs, "p.msi", Database::OpenMode::kCreate, error);
  if (!database ||
      odlex::idt::importTable(*database, fs, "in/T.idt", error) != odlex::engine::kSuccess)
    return 0;
  odlex::idt::importTable(*database, fs, "in/T.idt", error,
                          {odlex::idt::ImportMode::kMergeRows, nullptr});
  for (std::size_t index = 0; index < database->tableCount(); ++index) {
    odlex::idt::ExportedTable exported;
    odlex::idt::exportTableText(*database, database->table(index).name(), exported, error);
  }
  // What the engine imported it must be able to write and read again.
  if (database->commit(error) == odlex::engine::kSuccess &&
      !Database::open(fs, "p.msi", Database::OpenMode::kReadOnly, error))
    std::abort();
  return 0;
}
