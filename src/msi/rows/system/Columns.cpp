// _Columns: the columns of every table of the database, read-only.

#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"

using odlex::rows::catalogSchema;

MSIE_Columns::MSIE_Columns() : MSIEntry(catalogSchema(u"_Columns")) {}

MSIE_Columns::MSIE_Columns(const TalString& table, short number, const TalString& name, short type)
    : MSIE_Columns() {
  SetTextAt(0, table);
  SetIntegerAt(1, number);
  SetTextAt(2, name);
  SetIntegerAt(3, type);
}

MSIT_Columns::MSIT_Columns() : MSITable(catalogSchema(u"_Columns")) {}

std::unique_ptr<MSIEntry> MSIT_Columns::NewEntry() const {
  return std::make_unique<MSIE_Columns>();
}

MSIE_Columns* MSIT_Columns::Find(const TalString& table, short number) const {
  return static_cast<MSIE_Columns*>(FindEntry(MSIE_Columns(table, number)));
}

bool MSIT_Columns::Populate() {
  const odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  std::vector<std::unique_ptr<MSIEntry>> rows;
  for (std::size_t index = 0; index < db->tableCount(); ++index) {
    const odlex::engine::Table& table = db->table(index);
    short number = 0;
    for (const odlex::engine::Column& column : table.columns()) {
      if (column.temporary())
        continue;
      rows.push_back(std::make_unique<MSIE_Columns>(TalString(table.name()), ++number,
                                                    TalString(column.name),
                                                    static_cast<short>(column.type)));
    }
  }
  LoadRows(std::move(rows));
  return true;
}

bool MSIT_Columns::Persist() {
  if (!IsDirty())
    return true;
  ReportError(odlex::engine::kAccessDenied,
              u"table _Columns is read-only: columns change with their tables");
  return false;
}
