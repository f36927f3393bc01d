// Fuzz target: the input is a merge module, merged into a small good package held in memory.
// Whatever the module holds, the merge must either stop with an error record (the package
// untouched) or finish, and a finished merge must save into a package the engine opens again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/schema/Schema.h"
#include "odlex/package/ODLEXMergeErrors.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "package/merge/ModuleMerge.h"
#include "storage/MemoryFileSystem.h"

namespace {

using odlex::engine::Database;

// Adds a row of text and integer cells (an integer where the column is one) to `table`.
void addRow(Database& db, const char16_t* table, const std::vector<std::u16string>& cells) {
  odlex::engine::Table* target = db.findTable(table);
  const std::size_t row = target->addRow();
  for (std::size_t c = 0; c < cells.size(); ++c) {
    const odlex::engine::Column& column = target->columns()[c];
    if (column.isInteger())
      target->setCell(row, c,
                      cells[c].empty() ? static_cast<std::uint32_t>(odlex::engine::kNullInteger)
                                       : static_cast<std::uint32_t>(std::stoi(
                                             std::string(cells[c].begin(), cells[c].end()))));
    else
      target->setCell(row, c, db.strings().intern(cells[c]));
  }
}

// A package with a feature, a folder, one file on one disk and a few standard actions.
std::unique_ptr<Database> goodPackage(odlex::storage::MemoryFileSystem& fs) {
  odlex::engine::Error error;
  auto db = Database::open(fs, "package.msi", Database::OpenMode::kCreate, error);
  for (const char16_t* table : {u"Feature", u"Directory", u"Component", u"File", u"Media",
                                u"FeatureComponents", u"InstallExecuteSequence", u"Property"}) {
    if (odlex::schema::createTable(*db, table, error) != odlex::engine::kSuccess)
      std::abort();
  }
  addRow(*db, u"Feature", {u"F", u"", u"Feature", u"", u"1", u"1", u"", u"0"});
  addRow(*db, u"Directory", {u"TARGETDIR", u"", u"SourceDir"});
  addRow(*db, u"Directory", {u"D", u"TARGETDIR", u"Dest"});
  addRow(*db, u"Component",
         {u"C", u"{11111111-2222-3333-4444-555555555555}", u"D", u"0", u"", u"f"});
  addRow(*db, u"File", {u"f", u"C", u"f.txt", u"1", u"", u"", u"0", u"1"});
  addRow(*db, u"Media", {u"1", u"1", u"", u"#a.cab", u"", u""});
  addRow(*db, u"FeatureComponents", {u"F", u"C"});
  addRow(*db, u"InstallExecuteSequence", {u"InstallFiles", u"", u"4000"});
  addRow(*db, u"InstallExecuteSequence", {u"InstallFinalize", u"", u"6600"});
  addRow(*db, u"Property", {u"ProductCode", u"{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}"});
  return db;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  odlex::storage::MemoryFileSystem fs;
  std::string writeError;
  if (!fs.writeFile("module.msm", {data, size}, writeError))
    std::abort();
  odlex::engine::Error error;
  const auto module = Database::open(fs, "module.msm", Database::OpenMode::kReadOnly, error);
  if (!module)
    return 0;
  const auto package = goodPackage(fs);
  ODLEXMergeErrors errors;
  odlex::merge::MergeLog log(errors);
  try {
    odlex::merge::mergeModule(*package, *module, {u"F", u"D", {{u"Item", u"1"}}, {}}, log);
  } catch (const ODLEXDatabaseError&) {
    return 0;
  }
  if (package->saveAs("merged.msi", error) != odlex::engine::kSuccess)
    return 0;
  if (!Database::open(fs, "merged.msi", Database::OpenMode::kReadOnly, error))
    std::abort();
  return 0;
}
