// Closing a database, rolling it back to the file as first opened, reloading its tables, and the
// temporary read-only copy's name.

#include <filesystem>
#include <system_error>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/Path.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

void removeFileQuietly(const TalString& path) {
  std::error_code ignored;
  std::filesystem::remove(odlex::path::ToFilesystem(path), ignored);
}

}  // namespace

void ODLEXDatabase::Close(bool save) {
  const TalString databasePath = GetDatabasePath();
  const bool readOnly = IsReadOnly();
  const bool outputMode = !readOnly && !database_.getInPath().isNull();
  database_.close(save);
  // A working copy that is not saved is removed.
  if (!save && !readOnly && filePath_.compareTo(databasePath, RWWString::ignoreCase) != 0)
    removeFileQuietly(databasePath);
  // The system tables of an output file are written last, into the committed output.
  if (save && outputMode) {
    database_.open();
    for (ODLEXTObject::typeID type :
         {ODLEXTObject::e_Streams, ODLEXTObject::e_Storages, ODLEXTObject::e_SummaryInformation})
      GetTableObject(type).Persist();
    database_.close(true);
  }
  if (readOnly)
    DeleteReadOnlyTemp(databasePath);
  modified_ = false;
  exteriorModify_ = false;
}

// The file first opened is copied over the working file, which is then opened afresh. For a
// database opened in place both are the same file, and the copy fails harmlessly.
void ODLEXDatabase::Rollback() {
  const TalString databasePath = GetDatabasePath();
  const TalString filePath = filePath_;
  Close(false);
  std::error_code ignored;
  std::filesystem::copy_file(odlex::path::ToFilesystem(filePath),
                             odlex::path::ToFilesystem(databasePath),
                             std::filesystem::copy_options::overwrite_existing, ignored);
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  SetDatabasePath(databasePath, forUpdate);
  filePath_ = filePath;
}

void ODLEXDatabase::Reload() {
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
  removeFileQuietly(GetTempMsiFileName(path));
}
