// The process-wide list of open databases: opening into the list, finding a database by the file
// it works on, removing and destroying.

#include <algorithm>
#include <memory>
#include <vector>

#include "database/DatabaseFiles.h"
#include "database/MessageCatalog.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/DebugOutput.h"
#include "odlex/tables/ODLEXDatabaseError.h"

RWBTree ODLEXDatabase::databaseList;

using odlex::database::copyReplacing;
using odlex::database::isSameFile;
using odlex::database::removeQuietly;

ODLEXDatabase* ODLEXDatabase::FindListed(const TalString& path,
                                         const TalString& (*which)(const ODLEXDatabase&)) {
  for (RWCollectable* item : databaseList) {
    auto* database = static_cast<ODLEXDatabase*>(item);
    if (isSameFile(which(*database), path))
      return database;
  }
  return nullptr;
}

ODLEXDatabase* ODLEXDatabase::FindByFilePath(const TalString& path) {
  return FindListed(path, [](const ODLEXDatabase& db) -> const TalString& { return db.filePath_; });
}

ODLEXDatabase* ODLEXDatabase::FindByWorkingFile(const TalString& path) {
  return FindListed(
      path, [](const ODLEXDatabase& db) -> const TalString& { return db.database_.getPath(); });
}

ODLEXDatabase& ODLEXDatabase::AddDatabaseToList(const TalString& path) {
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  return AddDatabaseToList(path, forUpdate);
}

ODLEXDatabase& ODLEXDatabase::AddDatabaseToList(const TalString& path, ODLEXOpenType& how) {
  // A database already working on the file is the one every caller gets.
  ODLEXDatabase* database = how.IsFilePath() ? nullptr : FindByWorkingFile(path);
  if (!database)
    database = OpenIntoList(path, how);
  database->SetMergeModule(MatchesExtension(path, u"MSM"));
  if (database->IsMergeModule())
    database->AcquireDatabaseInfo();
  return *database;
}

ODLEXDatabase* ODLEXDatabase::OpenIntoList(const TalString& path, ODLEXOpenType& how) {
  // Owned here until the list takes it, so a failure or an error thrown while opening frees it.
  std::unique_ptr<ODLEXDatabase> opened(new ODLEXDatabase());
  TalString workingPath = path;
  bool workingCopy = false;
  // Working on an output file: the named file is copied there and the copy opened for update,
  // so the named file is never written. An output file that an open database works on or was
  // opened from, or that is the named file itself, would be overwritten under it: refused.
  if (how.IsFilePath()) {
    const TalString output = how;
    if (isSameFile(output, path) || FindByWorkingFile(output) || FindByFilePath(output)) {
      odlex::DebugOutput::write(
          u"ODLEX: Unable to copy file: the output file is open or is the file opened.\r\n");
      throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
    }
    if (!copyReplacing(path, output)) {
      odlex::DebugOutput::write(u"ODLEX: Unable to copy file.\r\n");
      throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
    }
    how = ODLEXOpenType(MSIDatabase::ePersistDirect);
    workingPath = output;
    workingCopy = true;
  }
  if (!opened->SetDatabasePath(workingPath, how)) {
    if (workingCopy)
      removeQuietly(workingPath);
    throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
  }
  opened->ownsWorkingCopy_ = workingCopy;
  ODLEXDatabase* database = opened.get();
  RWCollectable* listed = databaseList.insert(database);
  if (listed != database)
    return static_cast<ODLEXDatabase*>(listed);
  opened.release();
  // After an output-file open the database names the file the caller opened.
  database->filePath_ = path;
  return database;
}

ODLEXDatabase& ODLEXDatabase::GetDatabaseWithFilePath(const TalString& path) {
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  return GetDatabaseWithFilePath(path, forUpdate);
}

ODLEXDatabase& ODLEXDatabase::GetDatabaseWithFilePath(const TalString& path, ODLEXOpenType& how) {
  if (ODLEXDatabase* database = FindByFilePath(path))
    return *database;
  if (how.IsOnlyLooking())
    throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseNotOpen);
  return AddDatabaseToList(path, how);
}

bool ODLEXDatabase::IsDatabaseFilePathLoaded(const TalString& path) {
  return FindByFilePath(path) != nullptr;
}

RWBTree& ODLEXDatabase::GetDatabaseList() {
  return databaseList;
}

void ODLEXDatabase::RemoveDatabaseFromList(const TalString& path, bool save) {
  if (ODLEXDatabase* database = FindByFilePath(path))
    database->RemoveFromList(save);
}

void ODLEXDatabase::RemoveFromList(bool save) {
  const bool listed = std::any_of(databaseList.begin(), databaseList.end(),
                                  [this](const RWCollectable* item) { return item == this; });
  if (!listed)
    return;
  if (save && IsModified())
    SaveChanges();
  // Saving leaves the database modified; one that is not modified is closed without saving.
  Close(save && IsModified());
  RemoveFromDatabaseList(this);
  delete this;
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
  messageCatalog.reset();
}
