// The process-wide list of open databases: opening into the list, finding by file name,
// removing and destroying.

#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/DebugOutput.h"
#include "odlex/support/Path.h"
#include "odlex/tables/ODLEXDatabaseError.h"

RWBTree ODLEXDatabase::databaseList;

namespace {

// Copies `from` over `to`, replacing it; false when the copy failed.
bool copyReplacing(const TalString& from, const TalString& to) {
  std::error_code error;
  std::filesystem::copy_file(odlex::path::ToFilesystem(from), odlex::path::ToFilesystem(to),
                             std::filesystem::copy_options::overwrite_existing, error);
  return !error;
}

}  // namespace

ODLEXDatabase& ODLEXDatabase::AddDatabaseToList(const TalString& path) {
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  return AddDatabaseToList(path, forUpdate);
}

ODLEXDatabase& ODLEXDatabase::AddDatabaseToList(const TalString& path, ODLEXOpenType& how) {
  // Owned here until the list takes it, so a failure or an error thrown while opening frees it.
  std::unique_ptr<ODLEXDatabase> opened(new ODLEXDatabase());
  TalString workingPath = path;
  // Working on an output file: the named file is copied there and the copy opened for update,
  // so the named file is never written.
  if (how.IsFilePath()) {
    const TalString output = how;
    if (!copyReplacing(path, output)) {
      odlex::DebugOutput::write(u"ODLEX: Unable to copy file.\r\n");
      throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
    }
    how = ODLEXOpenType(MSIDatabase::ePersistDirect);
    workingPath = output;
  }
  if (!opened->SetDatabasePath(workingPath, how))
    throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
  ODLEXDatabase* database = opened.get();
  RWCollectable* listed = databaseList.insert(database);
  if (listed == database) {
    opened.release();
    // After an output-file open the database names the file the caller opened.
    if (database->filePath_ != path)
      database->filePath_ = path;
  } else {
    // A database with the same working path is open already: that one is used.
    database = static_cast<ODLEXDatabase*>(listed);
  }
  database->SetMergeModule(MatchesExtension(path, u"MSM"));
  if (database->IsMergeModule())
    database->AcquireDatabaseInfo();
  return *database;
}

ODLEXDatabase& ODLEXDatabase::GetDatabaseWithFilePath(const TalString& path) {
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  return GetDatabaseWithFilePath(path, forUpdate);
}

// The list is ordered by working path, so the file name the caller used is searched for by
// walking it, ignoring case.
ODLEXDatabase& ODLEXDatabase::GetDatabaseWithFilePath(const TalString& path, ODLEXOpenType& how) {
  for (RWCollectable* item : databaseList) {
    auto* database = static_cast<ODLEXDatabase*>(item);
    if (database->GetFilePath().compareTo(path, RWWString::ignoreCase) == 0)
      return *database;
  }
  if (how.IsOnlyLooking())
    throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseNotOpen);
  return AddDatabaseToList(path, how);
}

bool ODLEXDatabase::IsDatabaseFilePathLoaded(const TalString& path) {
  try {
    ODLEXOpenType onlyLooking;
    GetDatabaseWithFilePath(path, onlyLooking);
    return true;
  } catch (const ODLEXDatabaseError&) {
    return false;
  }
}

RWBTree& ODLEXDatabase::GetDatabaseList() {
  return databaseList;
}

void ODLEXDatabase::RemoveDatabaseFromList(const TalString& path, bool save) {
  if (!IsDatabaseFilePathLoaded(path))
    return;
  ODLEXOpenType onlyLooking;
  ODLEXDatabase* database = &GetDatabaseWithFilePath(path, onlyLooking);
  if (save && database->IsModified())
    database->SaveChanges();
  // Saving leaves the database modified; one that is not modified is closed without saving.
  database->Close(save && database->IsModified());
  RemoveFromDatabaseList(database);
  delete database;
}

void ODLEXDatabase::RemoveFromList(bool save) {
  if (!GetFilePath().isNull())
    RemoveDatabaseFromList(GetFilePath(), save);
}

// Opening a listed database again on another path changes the key the list is ordered by, so a
// database the tree cannot find by key is taken out by rebuilding the list without it.
void ODLEXDatabase::RemoveFromDatabaseList(ODLEXDatabase* database) {
  if (databaseList.find(database) == database) {
    databaseList.remove(database);
    return;
  }
  std::vector<RWCollectable*> others;
  for (RWCollectable* item : databaseList) {
    if (item != database)
      others.push_back(item);
  }
  databaseList.clear();
  for (RWCollectable* item : others)
    databaseList.insert(item);
}

void ODLEXDatabase::KillDatabaseList() {
  const std::vector<RWCollectable*> databases(databaseList.begin(), databaseList.end());
  databaseList.clear();
  for (RWCollectable* item : databases)
    delete static_cast<ODLEXDatabase*>(item);
  singleProgress.reset();
  dualProgress.reset();
}
