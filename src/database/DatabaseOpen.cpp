// Opening a database object on a file: in place with a persist mode, or reading one file and
// writing the changes to an output file.

#include <memory>
#include <vector>

#include "database/DatabaseFiles.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTables.h"

bool ODLEXDatabase::SetDatabasePath(const TalString& path, ODLEXOpenType& how) {
  if (how.IsOnlyLooking())
    return false;
  unsigned result = 0;
  if (how.IsFilePath()) {
    // The container tables' objects hold the rows of the file that was open when they loaded.
    auto dropContainerTables = [this] {
      tableObjects_[SlotOf(ODLEXTObject::e_Storages)].reset();
      tableObjects_[SlotOf(ODLEXTObject::e_Streams)].reset();
    };
    result = database_.open(path, MSIDatabase::ePersistReadOnly);
    if (result != 0)
      return false;
    dropContainerTables();
    std::vector<TalString> storages;
    for (RWCollectable* item : Get_Storages().GetEntries())
      storages.push_back(static_cast<MSIE_Storages*>(item)->GetName());
    database_.close(false);
    for (const TalString& name : storages) {
      MSIE_Storages storage(name);
      CreateStoragesFile(storage, path);
    }
    dropContainerTables();
    readOnly_ = false;
    // The output reads `path` itself: it holds every stream of the source, left in the source
    // file until a save copies it in bounded pieces, so no stream row is copied here (a copy
    // would read each stream whole into memory).
    result = database_.open(path, TalString(how));
  } else {
    const MSIDatabase::ePersistMode mode = how;
    readOnly_ = mode == MSIDatabase::ePersistReadOnly;
    result = database_.open(path, mode);
  }
  // A failed open leaves its reason in the lower layer's error list (GetTalError).
  if (result != 0)
    return false;

  filePath_ = path;
  canonicalPath_ = odlex::database::canonicalPathOf(GetDatabasePath());
  ownsWorkingCopy_ = false;
  stringChecker_ = std::make_unique<MSIStringChecker>(database_);
  UnloadTables();
  info_.packageCodeChanged = false;
  AcquireDatabaseInfo();
  modified_ = false;
  compressed_ = CheckForCompression();
  return true;
}

void ODLEXDatabase::CreateStoragesFile(MSIE_Storages&, const TalString&) {
  throw ODLEXDatabaseError(ODLEXDatabaseError::eStorageFileRefused);
}
