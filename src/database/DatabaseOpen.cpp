// Opening a database object on a file: in place with a persist mode, or reading one file and
// writing the changes to an output file.

#include <memory>
#include <vector>

#include "database/DatabaseFiles.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

// Free-standing copies of every row of a loaded table object; they keep their data after the
// database they came from is closed.
template <class Row>
std::vector<std::unique_ptr<Row>> copyRows(ODLEXTObject& table) {
  std::vector<std::unique_ptr<Row>> copies;
  for (RWCollectable* item : table.GetEntries())
    copies.push_back(std::make_unique<Row>(static_cast<const Row&>(*item)));
  return copies;
}

}  // namespace

template <class Row>
void ODLEXDatabase::CarryRows(ODLEXTObject& table, const std::vector<std::unique_ptr<Row>>& rows) {
  MSITable* lower = table.GetLowerTable();
  if (!lower)
    return;
  for (const auto& row : rows) {
    if (MSIEntry* added = lower->AddCopy(*row))
      added->Modify();
  }
}

bool ODLEXDatabase::SetDatabasePath(const TalString& path, ODLEXOpenType& how) {
  if (how.IsOnlyLooking())
    return false;
  unsigned result = 0;
  std::vector<std::unique_ptr<MSIE_Streams>> streams;
  std::vector<std::unique_ptr<MSIE_Storages>> storages;
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
    streams = copyRows<MSIE_Streams>(Get_Streams());
    storages = copyRows<MSIE_Storages>(Get_Storages());
    database_.close(false);
    for (const auto& storage : storages)
      CreateStoragesFile(*storage, path);
    dropContainerTables();
    readOnly_ = false;
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
  // The source's streams and sub-storages go into the output file with the next save.
  if (how.IsFilePath()) {
    CarryRows(Get_Streams(), streams);
    CarryRows(Get_Storages(), storages);
  }
  compressed_ = CheckForCompression();
  return true;
}

void ODLEXDatabase::CreateStoragesFile(MSIE_Storages&, const TalString&) {
  throw ODLEXDatabaseError(ODLEXDatabaseError::eStorageFileRefused);
}
