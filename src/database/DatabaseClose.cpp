// Closing a database, rolling it back to the file as first opened, reloading its tables, and the
// temporary read-only copy's name.

#include "database/DatabaseFiles.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

void ODLEXDatabase::Close(bool save) {
  const TalString databasePath = GetDatabasePath();
  const bool outputMode = !IsReadOnly() && !database_.getInPath().isNull();
  // The system tables of an output file are written last, into the output, by the commit that
  // closes it.
  if (save && outputMode) {
    for (ODLEXTObject::typeID type :
         {ODLEXTObject::e_Streams, ODLEXTObject::e_Storages, ODLEXTObject::e_SummaryInformation})
      GetTableObject(type).Persist();
  }
  database_.close(save);
  // A working copy this library made that is not saved is removed; no other file ever is.
  if (!save && ownsWorkingCopy_) {
    odlex::database::removeQuietly(databasePath);
    ownsWorkingCopy_ = false;
  }
  modified_ = false;
  exteriorModify_ = false;
}

// The file first opened is copied over the working copy made from it, which is then opened
// afresh; a database opened in place is opened again as it is on disk. Either is opened in the
// mode it had: read-only stays read-only.
void ODLEXDatabase::Rollback() {
  const TalString databasePath = GetDatabasePath();
  const TalString filePath = filePath_;
  const bool workingCopy = ownsWorkingCopy_;
  ODLEXOpenType reopen(readOnly_ ? MSIDatabase::ePersistReadOnly : MSIDatabase::ePersistDirect);
  Close(false);
  if (workingCopy)
    odlex::database::copyReplacing(filePath, databasePath);
  SetDatabasePath(databasePath, reopen);
  filePath_ = filePath;
  ownsWorkingCopy_ = workingCopy;
}

// The file is read again, so that what another program wrote to it is what the tables show and
// what a save copies.
void ODLEXDatabase::Reload() {
  if (database_.open() == 0)
    stringChecker_ = std::make_unique<MSIStringChecker>(database_);
  for (auto& table : tableObjects_) {
    if (table) {
      table->Unload();
      table->Load(*this);
    }
  }
  AcquireDatabaseInfo();
}

void ODLEXDatabase::UnloadTables() {
  for (auto& table : tableObjects_) {
    if (table)
      table->Unload();
  }
}

TalString ODLEXDatabase::GetTempMsiFileName(const TalString& path) {
  return ChangeFilePathToExt(path, u".mri");
}

void ODLEXDatabase::DeleteReadOnlyTemp(const TalString& path) {
  const TalString temporary = GetTempMsiFileName(path);
  if (!odlex::database::isSameFile(temporary, path))
    odlex::database::removeQuietly(temporary);
}
