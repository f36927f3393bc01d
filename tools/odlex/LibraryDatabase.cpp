// Opening packages through the library's database object, for the commands on table objects.

#include "LibraryDatabase.h"

#include <filesystem>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/msi/MSIEntry.h>
#include <odlex/tables/ODLEXDatabaseError.h>
#include <odlex/tables/ODLEXTSystemTables.h>

#include "msi/schema/Schema.h"

namespace odlex::cli {

namespace {

template <class Open>
ODLEXDatabase& open(const std::string& package, Open how) {
  return library("cannot open " + package,
                 [&]() -> ODLEXDatabase& { return how(TalString::FromUtf8(package)); });
}

// The change log's message catalog shipped with the tool: share/odlex beside the installed
// tool's bin folder, or in the build tree two levels above it; empty when neither has it.
std::filesystem::path shippedMessageCatalog() {
  std::error_code failed;
  const std::filesystem::path tool = std::filesystem::read_symlink("/proc/self/exe", failed);
  if (failed)
    return {};
  for (const char* up : {"..", "../.."}) {
    const std::filesystem::path catalog =
        tool.parent_path() / up / "share" / "odlex" / "messages.txt";
    if (std::filesystem::is_regular_file(catalog, failed))
      return catalog;
  }
  return {};
}

}  // namespace

LibrarySession::LibrarySession() {
  ODLEXDatabase::INIT();
  if (const std::filesystem::path catalog = shippedMessageCatalog(); !catalog.empty())
    ODLEXDatabase::SetResources(TalString::FromUtf8(catalog.string()));
}

LibrarySession::~LibrarySession() {
  for (ODLEXDatabase* db : unsavedOutputs_)
    db->Close(false);  // removes the copy the open made
  ODLEXDatabase::KillDatabaseList();
}

ODLEXDatabase& LibrarySession::openReadOnly(const std::string& package) {
  return open(package, [](const TalString& path) -> ODLEXDatabase& {
    ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
    return ODLEXDatabase::AddDatabaseToList(path, readOnly);
  });
}

ODLEXDatabase& LibrarySession::openForEdit(const std::string& package, const EditTarget& target) {
  // A dry run edits the package opened in place (some edits refuse a read-only database) and
  // is never saved, so nothing is written.
  if (target.dryRun || target.output.empty()) {
    ODLEXDatabase& db = open(package, [](const TalString& path) -> ODLEXDatabase& {
      return ODLEXDatabase::AddDatabaseToList(path);
    });
    if (target.dryRun)
      dryRuns_.insert(&db);
    return db;
  }
  // The package is read and never written; the output receives the changes, written once by
  // the save. The named file as its own output would be written while it is read: refused, as
  // the copying open below refuses it.
  std::error_code unknown;
  if (std::filesystem::equivalent(package, target.output, unknown))
    throw Failure(ODLEXDatabaseError::eDatabaseOpenFailed, "cannot open " + package);
  ODLEXDatabase& db = openReadOnly(package);
  const TalString outputPath = TalString::FromUtf8(target.output);
  ODLEXOpenType intoOutput(outputPath.u16().c_str());
  if (db.Get_Storages().GetEntries().isEmpty()) {
    library("cannot open " + package, [&] {
      if (!db.SetDatabasePath(TalString::FromUtf8(package), intoOutput))
        throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
    });
    return db;
  }
  // That open refuses a package holding sub-storages: such a package is copied to the output
  // and the copy opened for update.
  db.RemoveFromList(false);
  ODLEXDatabase& copy = open(package, [&intoOutput](const TalString& path) -> ODLEXDatabase& {
    return ODLEXDatabase::AddDatabaseToList(path, intoOutput);
  });
  unsavedOutputs_.insert(&copy);
  return copy;
}

void LibrarySession::save(ODLEXDatabase& db) {
  if (dryRuns_.contains(&db))
    return;
  if (!db.SaveChanges()) {
    const TalError& error = db.GetTalError();
    throw Failure(error.GetCode(), "cannot save: " + error.GetText().ToUtf8());
  }
  unsavedOutputs_.erase(&db);
}

ODLEXTObject& tableNamed(ODLEXDatabase& db, const std::string& table) {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) \
  if (table == #Table)                                 \
    return db.GetTableObject(ODLEXTObject::e##Table);
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
  throw Failure(ODLEXDatabaseError::eTableNotFound, "no table " + table);
}

std::string keyOf(const MSIEntry& row) {
  std::string key;
  for (const auto& column : row.GetSchema().columns) {
    if (!column.key())
      continue;
    MSIRecordColumn value;
    row.GetColumn(TalString(std::u16string(column.name)), value);
    key += (key.empty() ? "" : "/") + value.GetString().ToUtf8();
  }
  return key;
}

}  // namespace odlex::cli
