// Searching a table's rows with a checker, and replacing text in them.

#include <vector>

#include "msi/schema/Schema.h"
#include "odlex/msi/MSIEntry.h"
#include "odlex/msi/MSITable.h"
#include "odlex/tables/ODLEXCheckers.h"
#include "odlex/tables/ODLEXTObject.h"

namespace {

// The columns of `table`, described once for all its rows.
std::vector<MSISchemaColumn> columnsOf(const MSITable& table) {
  const odlex::schema::TableSchema& schema = table.GetSchema();
  const TalString name(schema.name);
  std::vector<MSISchemaColumn> columns;
  for (const odlex::schema::ColumnSchema& column : schema.columns)
    columns.emplace_back(name, TalString(column.name), column.type);
  return columns;
}

// A copy of the rows, so that changing a row cannot disturb the walk.
std::vector<MSIEntry*> rowsOf(MSITable& table) {
  std::vector<MSIEntry*> rows;
  for (RWCollectable* item : table.GetTable())
    rows.push_back(static_cast<MSIEntry*>(item));
  return rows;
}

MSIRecordColumn valueOf(const MSIEntry& row, const MSISchemaColumn& column) {
  MSIRecordColumn value;
  row.GetColumn(column.GetName(), value);
  return value;
}

// Whether `text` may be stored in `column`.
bool fits(const MSISchemaColumn& column, const TalString& text) {
  if (text.isNull())
    return column.IsNullable();
  return column.GetSize() == 0 || text.length() <= column.GetSize();
}

}  // namespace

unsigned ODLEXTObject::Search(const ODLEXBaseChecker& checker,
                              std::vector<ODLEXSearchMatch>* matches) {
  MSITable* table = GetLowerTable();
  if (!table)
    return 0;
  const std::vector<MSISchemaColumn> columns = columnsOf(*table);
  RWBTree found;
  for (MSIEntry* row : rowsOf(*table)) {
    if (!row || row->IsDeleted() || SARExcludeEntry(row))
      continue;
    for (const MSISchemaColumn& column : columns) {
      const MSIRecordColumn value = valueOf(*row, column);
      if (!checker(column, value))
        continue;
      found.insert(row);
      if (!matches)
        break;
      matches->push_back({row, column.GetName(), value.GetString()});
    }
  }
  SetTempEntries(found);
  return static_cast<unsigned>(found.entries());
}

unsigned ODLEXTObject::SearchAndReplace(const TalString& find, const TalString& replace,
                                        unsigned long flags) {
  MSITable* table = GetLowerTable();
  if (!table || attributes_.IsReadOnly() || find.isNull())
    return 0;
  if (IsMergeModule() && attributes_.IsNotInMergeModule())
    return 0;
  const RWWString::caseCompare rule =
      (flags & eSearchIgnoreCase) != 0 ? RWWString::ignoreCase : RWWString::exact;
  const bool wholeValue = (flags & eSearchWholeValue) != 0;
  const std::vector<MSISchemaColumn> columns = columnsOf(*table);
  unsigned count = 0;
  bool anyChanged = false;
  for (MSIEntry* row : rowsOf(*table)) {
    if (!row || row->IsDeleted() || SARExcludeEntry(row))
      continue;
    bool changed = false;
    for (const MSISchemaColumn& column : columns) {
      if (!ODLEXBaseChecker::IsSearchable(column))
        continue;
      TalString text = valueOf(*row, column).GetString();
      unsigned replaced = 0;
      if (wholeValue) {
        if (text.compareTo(find, rule) == 0) {
          text = replace;
          replaced = 1;
        }
      } else {
        replaced = SubStringReplace(text, find, replace, rule);
      }
      if (replaced == 0 || !fits(column, text) || (database_ && !IsStringOK(text)))
        continue;
      // A searchable column (text, not a key) takes any text that fits it.
      row->SetColumn(column.GetName(),
                     text.isNull() ? MSIRecordColumn() : MSIRecordColumn::String(text));
      count += replaced;
      changed = true;
    }
    if (changed) {
      row->Modify();
      anyChanged = true;
    }
  }
  if (anyChanged)
    Modify(true);
  return count;
}
