// The table-object base: life cycle, modification, temp entries and persisting.

#include "odlex/tables/ODLEXTObject.h"

#include <string>
#include <vector>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSIRows.h"
#include "odlex/tables/ODLEXDatabaseError.h"

namespace {

// The change-log message recorded whenever a table is written; its one insert is the table's
// name.
constexpr unsigned long kTablePersistedMessage = 0x400D0074;

MSIEntry* asEntry(RWCollectable* item) {
  return static_cast<MSIEntry*>(item);
}

}  // namespace

ODLEXTObject::ODLEXTObject() = default;
ODLEXTObject::ODLEXTObject(const ODLEXTObject&) = default;
ODLEXTObject& ODLEXTObject::operator=(const ODLEXTObject&) = default;
ODLEXTObject::~ODLEXTObject() = default;

RWCollectable* ODLEXTObject::newSpecies() const {
  return new (std::nothrow) ODLEXTObject();
}

RWCollectable* ODLEXTObject::copy() const {
  return new (std::nothrow) ODLEXTObject(*this);
}

RWClassID ODLEXTObject::isA() const {
  return classIsA();
}

void ODLEXTObject::SetLowerTable(std::unique_ptr<MSITable> table) {
  table_ = std::move(table);
}

bool ODLEXTObject::IsMergeModule() {
  return database_ && database_->IsMergeModule();
}

RWBTree& ODLEXTObject::GetEntries() {
  return table_->GetTable();
}

void ODLEXTObject::Persist() {
  if (!table_ || !IsLoaded() || attributes_.IsReadOnly())
    return;
  if (IsMergeModule() && attributes_.IsNotInMergeModule())
    return;
  if (!table_->Persist())
    CheckForErrors();
  const TalString name = GetTableName();
  database_->UpdateChangeLog(kTablePersistedMessage, std::vector<std::u16string>{name.u16()}, name);
}

void ODLEXTObject::Unload() {
  table_.reset();
  loaded_ = false;
  database_ = nullptr;
}

void ODLEXTObject::Load(ODLEXDatabase& db) {
  if (loaded_ && table_)
    return;
  database_ = &db;
  if (!table_)
    return;
  table_->SetDatabase(db.GetDatabase());
  if (!table_->Populate())
    CheckForErrors();
  loaded_ = true;
}

bool ODLEXTObject::IsLoaded() {
  return loaded_;
}

bool ODLEXTObject::SARExcludeEntry(const MSIEntry*) {
  return false;
}

eTableSets ODLEXTObject::GetTableSet() {
  return eNoTableSet;
}

bool ODLEXTObject::IsModified() {
  return modified_ || (table_ && table_->IsDirty());
}

void ODLEXTObject::SetTempEntries(const RWBTree& entries) {
  tempEntries_ = entries;
}

void ODLEXTObject::SetTempEntries(MSIEntry* entry) {
  tempEntries_.clear();
  if (entry)
    tempEntries_.insert(entry);
}

void ODLEXTObject::Modify(bool flag) {
  if (attributes_.IsReadOnly())
    return;
  if (IsMergeModule() && attributes_.IsNotInMergeModule())
    return;
  if (database_)
    database_->Modify(flag);
  modified_ = true;
}

void ODLEXTObject::ModifyEntries() {
  const RWBTree rows = GetEntries();
  for (RWCollectable* item : rows) {
    if (item && !asEntry(item)->IsDeleted())
      asEntry(item)->Modify();
  }
}

void ODLEXTObject::FilterOutDeletedEntries(RWBTree& entries, bool askHost) {
  const RWBTree rows = entries;
  for (RWCollectable* item : rows) {
    if (askHost && !ODLEXDatabase::UserPermits())
      throw ODLEXDatabaseError(ODLEXDatabaseError::eUserCancelled);
    if (item && asEntry(item)->IsDeleted())
      entries.remove(item);
  }
}

int ODLEXTObject::GetCount(RWBTree& components) {
  int count = 0;
  for (RWCollectable* item : GetEntries()) {
    const MSIEComponent probe(asEntry(item)->GetComponentKey(), TalString(), TalString());
    if (components.find(&probe))
      ++count;
  }
  return count;
}

TalString ODLEXTObject::GetTableName() {
  return table_ ? table_->GetName() : TalString();
}

TalString ODLEXTObject::GenerateGUID() {
  return MSITable::GenerateGUID();
}

bool ODLEXTObject::IsCharOK(char16_t c) {
  return database_ && database_->IsCharOK(c);
}

bool ODLEXTObject::IsStringOK(const TalString& text) {
  return database_ && database_->IsStringOK(text);
}

ODLEXTObject::typeID ODLEXTObject::GetTableType(const TalString&) {
  _mapInit();
  return eNoTable;
}

void ODLEXTObject::_mapInit() {}

void ODLEXTObject::CheckForErrors() {
  if (database_)
    database_->DumpAllErrors();
}
