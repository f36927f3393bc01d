// _Tables: the database's table names, and creating or dropping tables by adding or deleting
// rows.

#include <algorithm>

#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"

using odlex::rows::catalogSchema;

MSIE_Tables::MSIE_Tables() : MSIEntry(catalogSchema(u"_Tables")) {}

MSIE_Tables::MSIE_Tables(const TalString& name) : MSIE_Tables() {
  SetName(name);
}

MSIT_Tables::MSIT_Tables() : MSITable(catalogSchema(u"_Tables")) {}

std::unique_ptr<MSIEntry> MSIT_Tables::NewEntry() const {
  return std::make_unique<MSIE_Tables>();
}

MSIE_Tables* MSIT_Tables::Add(const TalString& name) {
  return static_cast<MSIE_Tables*>(AddEntry(std::make_unique<MSIE_Tables>(name)));
}

MSIE_Tables* MSIT_Tables::Find(const TalString& name) const {
  return static_cast<MSIE_Tables*>(FindEntry(MSIE_Tables(name)));
}

bool MSIT_Tables::Populate() {
  odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  listed_.clear();
  std::vector<std::unique_ptr<MSIEntry>> rows;
  for (std::size_t index = 0; index < db->tableCount(); ++index) {
    listed_.push_back(db->table(index).name());
    rows.push_back(std::make_unique<MSIE_Tables>(TalString(listed_.back())));
  }
  LoadRows(std::move(rows));
  return true;
}

bool MSIT_Tables::Persist() {
  odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  std::vector<std::u16string> live;
  for (RWCollectable* item : GetTable()) {
    const auto* row = static_cast<const MSIE_Tables*>(item);
    if (!row->IsDeleted())
      live.push_back(row->GetName().u16());
  }
  // Every new table is checked before anything changes.
  std::vector<std::u16string> created;
  for (const std::u16string& name : live) {
    if (db->findTable(name))
      continue;
    const odlex::schema::TableSchema* schema = odlex::schema::findTable(name);
    if (!schema || schema->system() || schema->temporary()) {
      ReportError(odlex::engine::kInvalidTable,
                  TalString(u"table _Tables: cannot create table " + name +
                            (schema ? u": the database keeps it itself" : u": unknown table")));
      return false;
    }
    created.push_back(name);
  }
  for (const std::u16string& name : created) {
    odlex::engine::Error error;
    if (odlex::schema::createTable(*db, name, error) != odlex::engine::kSuccess) {
      ReportError(error.code, TalString::FromUtf8(error.text));
      return false;
    }
  }
  for (const std::u16string& name : listed_) {
    if (std::find(live.begin(), live.end(), name) == live.end())
      db->dropTable(name);
  }
  listed_ = std::move(live);
  ClearChanges();
  return true;
}
