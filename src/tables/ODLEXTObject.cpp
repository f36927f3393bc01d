// The table-object base: life cycle, modification, temp entries and persisting.

#include "odlex/tables/ODLEXTObject.h"

#include <string>
#include <unordered_set>
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

ODLEXTObject::LowerTableHolder::~LowerTableHolder() = default;

ODLEXTObject::ODLEXTObject() : holder_(std::make_shared<LowerTableHolder>()) {}
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
  holder_->table = std::move(table);
}

bool ODLEXTObject::IsMergeModule() {
  return database_ && database_->IsMergeModule();
}

RWBTree& ODLEXTObject::GetEntries() {
  return GetLowerTable()->GetTable();
}

void ODLEXTObject::Persist() {
  MSITable* table = GetLowerTable();
  if (!table || !IsLoaded() || attributes_.IsReadOnly())
    return;
  if (IsMergeModule() && attributes_.IsNotInMergeModule())
    return;
  // A failed write leaves its reason in the lower layer's error list for the host to take.
  table->Persist();
  const TalString name = GetTableName();
  database_->UpdateChangeLog(kTablePersistedMessage, std::vector<std::u16string>{name.u16()}, name);
}

void ODLEXTObject::Unload() {
  holder_->table.reset();
  tempEntries_.clear();
  loaded_ = false;
  database_ = nullptr;
}

void ODLEXTObject::Load(ODLEXDatabase& db) {
  MSITable* table = GetLowerTable();
  if (loaded_ && table)
    return;
  database_ = &db;
  if (!table)
    return;
  table->SetDatabase(db.GetDatabase());
  // A failed read leaves its reason in the lower layer's error list for the host to take.
  table->PopulateKeepingEdits();
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
  const MSITable* table = GetLowerTable();
  return modified_ || (table && table->IsDirty());
}

// Rows are compared by address only: a row that is gone cannot be looked at.
RWBTree& ODLEXTObject::GetTempEntries() {
  const MSITable* table = GetLowerTable();
  if (tempEntries_.isEmpty() || (table && table->GetRowEpoch() == tempEntriesEpoch_))
    return tempEntries_;
  RWBTree held;
  if (table) {
    const std::unordered_set<const RWCollectable*> rows(table->GetTable().begin(),
                                                        table->GetTable().end());
    for (RWCollectable* item : tempEntries_) {
      if (rows.contains(item))
        held.insert(item);
    }
    tempEntriesEpoch_ = table->GetRowEpoch();
  }
  tempEntries_ = held;
  return tempEntries_;
}

void ODLEXTObject::SetTempEntries(const RWBTree& entries) {
  tempEntries_ = entries;
  if (const MSITable* table = GetLowerTable())
    tempEntriesEpoch_ = table->GetRowEpoch();
}

void ODLEXTObject::SetTempEntries(MSIEntry* entry) {
  tempEntries_.clear();
  if (entry)
    tempEntries_.insert(entry);
  if (const MSITable* table = GetLowerTable())
    tempEntriesEpoch_ = table->GetRowEpoch();
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
  const MSITable* table = GetLowerTable();
  return table ? table->GetName() : TalString();
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
