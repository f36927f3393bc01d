// Modification state and saving: the modified flags, SaveChanges and the order in which table
// objects are persisted.

#include <algorithm>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTables.h"

void ODLEXDatabase::SetModified(bool modified) {
  if (!readOnly_)
    modified_ = modified;
}

bool ODLEXDatabase::IsModified() const {
  return !readOnly_ && (modified_ || exteriorModify_);
}

bool ODLEXDatabase::GetInteriorModify() const {
  return !readOnly_ && modified_;
}

bool ODLEXDatabase::HasUnsavedChanges() {
  if (!database_.committedUnchanged())
    return true;
  return std::any_of(tableObjects_.begin(), tableObjects_.end(), [](const auto& table) {
    const MSITable* lower = table ? table->GetLowerTable() : nullptr;
    return lower && table->IsLoaded() && table->IsModified() && lower->HasUnsavedChanges();
  });
}

bool ODLEXDatabase::SaveChanges() {
  // With nothing changed since the last save wrote the file, persisting would only stamp a new
  // last-save time into the summary information: the file stays as that save wrote it.
  const bool unsaved = HasUnsavedChanges();
  if (modified_ && unsaved) {
    Get_SummaryInformation().DeclareModified();
    const bool newPackageCode =
        info_.packageCodePolicy == ODLEXDatabaseInfo::ePackageCodeAlways ||
        (info_.packageCodePolicy == ODLEXDatabaseInfo::ePackageCodeAskHost &&
         autoUpdatePackageCode && autoUpdatePackageCode());
    if (newPackageCode && !info_.packageCodeChanged) {
      ODLEXDatabaseInfo info = info_;
      info.packageCode = ODLEXTObject::GenerateGUID();
      SetDatabaseInfo(info, nullptr);
    }
  }
  if (unsaved)
    PersistTables();
  // A failed commit (a full disk, the file changed by another program) leaves its reason in
  // the lower layer's error list and the file as it was.
  if (database_.commit() != 0)
    return false;
  if (creatingTransform_)
    GenerateTransform(GetFilePath(), GetTransformPath());
  return true;
}

// Each modified table object is written after the members of its table set. After an
// output-file open the system tables are written too, so that one save writes the output
// complete.
void ODLEXDatabase::PersistTables() {
  InitRelatedTables();
  for (std::size_t slot = 0; slot < totalODLEXTObjects; ++slot) {
    ODLEXTObject* table = tableObjects_[slot].get();
    if (!table || !table->IsModified())
      continue;
    const auto [first, last] = related_tables.equal_range(table->GetTableSet());
    for (auto member = first; member != last; ++member)
      GetTableObject(member->second).Persist();
    table->Persist();
  }
}
