// The rows of one component in one table, and the rows that refer to them.

#include "odlex/tables/ODLEXComponentCascade.h"

#include <set>
#include <string>
#include <vector>

#include "msi/schema/Schema.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTObject.h"

namespace odlex::tables {
namespace {

// A column of table `child` that holds the value of column `parentKey` of a row of `parent`;
// with a `kind`, only in the child rows whose Table column names that kind of object (one
// LockPermissions column refers to files, registry rows or created folders).
struct Reference {
  ODLEXTObject::typeID parent;
  const char16_t* parentKey;
  ODLEXTObject::typeID child;
  const char16_t* column;
  const char16_t* kind = nullptr;
};

constexpr Reference kReferences[] = {
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eMsiFileHash, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eFont, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eSelfReg, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eBindImage, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eDuplicateFile, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::ePatch, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eODBCDriver, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eODBCTranslator, u"File_"},
    {ODLEXTObject::eFile, u"File", ODLEXTObject::eLockPermissions, u"LockObject", u"File"},
    {ODLEXTObject::eRegistry, u"Registry", ODLEXTObject::eLockPermissions, u"LockObject",
     u"Registry"},
    {ODLEXTObject::eCreateFolder, u"Directory_", ODLEXTObject::eLockPermissions, u"LockObject",
     u"CreateFolder"},
    {ODLEXTObject::eClass, u"CLSID", ODLEXTObject::eProgId, u"Class_"},
    {ODLEXTObject::eProgId, u"ProgId", ODLEXTObject::eProgId, u"ProgId_Parent"},
    {ODLEXTObject::eExtension, u"Extension", ODLEXTObject::eVerb, u"Extension_"},
    {ODLEXTObject::eExtension, u"Extension", ODLEXTObject::eMIME, u"Extension_"},
    {ODLEXTObject::eODBCDriver, u"Driver", ODLEXTObject::eODBCAttribute, u"Driver_"},
    {ODLEXTObject::eODBCDataSource, u"DataSource", ODLEXTObject::eODBCSourceAttribute,
     u"DataSource_"},
};

// The tables of rows that belong to a component which the File step clears too: the
// component's other work on the file system and its publication, which no step names.
constexpr ODLEXTObject::typeID kFileStepCompanions[] = {
    ODLEXTObject::eCreateFolder, ODLEXTObject::eDuplicateFile, ODLEXTObject::eMoveFile,
    ODLEXTObject::ePublishComponent};

using Keys = std::set<std::u16string>;

std::u16string textOf(const MSIEntry& row, const char16_t* column) {
  MSIRecordColumn value;
  if (!row.GetColumn(column, value) || value.IsNull())
    return {};
  return value.GetString().u16();
}

void deleteRow(ODLEXTObject& table, MSIEntry& row) {
  row.Modify();
  row.Delete();
  table.Modify(true);
}

// The table object of `type`, or null when the database's schema cannot hold the table (then
// it has no rows to lose).
ODLEXTObject* tableObject(ODLEXDatabase& db, ODLEXTObject::typeID type) {
  try {
    return &db.GetTableObject(type);
  } catch (const ODLEXDatabaseError&) {
    return nullptr;
  }
}

// The catalog position of the column `name` of `table`.
std::size_t columnOf(const MSITable& table, std::u16string_view name) {
  const auto& columns = table.GetSchema().columns;
  for (std::size_t i = 0; i < columns.size(); ++i)
    if (columns[i].name == name)
      return i;
  return columns.size();
}

// Appends to `rows` the live rows of `table` whose column `column` holds `value`, found by the
// lower layer's index of the column (built once, kept while rows are only marked deleted).
void appendRowsWith(ODLEXTObject& table, std::size_t column, const std::u16string& value,
                    std::vector<MSIEntry*>& rows) {
  const MSITable* lower = table.GetLowerTable();
  if (!lower || column >= lower->GetSchema().columns.size() || value.empty())
    return;
  for (MSIEntry* row : lower->FindEntriesBy(column, MSIRecordColumn::String(TalString(value))))
    rows.push_back(row);
}

void deleteReferringRows(ODLEXDatabase& db, ODLEXTObject::typeID type, const Keys& removed);

// The key column of `type` that other tables refer to, or null when none does.
const char16_t* referredKeyOf(ODLEXTObject::typeID type) {
  for (const Reference& reference : kReferences)
    if (reference.parent == type)
      return reference.parentKey;
  return nullptr;
}

// Deletes those of `rows` (rows of `table`) that are live, then follows them.
void deleteRowsAndDependants(ODLEXTObject& table, const std::vector<MSIEntry*>& rows) {
  const auto type = static_cast<ODLEXTObject::typeID>(table.isA());
  const char16_t* referredKey = referredKeyOf(type);
  Keys removed;
  for (MSIEntry* row : rows) {
    if (row->IsDeleted())
      continue;
    deleteRow(table, *row);
    if (referredKey)
      removed.insert(textOf(*row, referredKey));
  }
  if (!removed.empty())
    deleteReferringRows(table.GetDatabase(), type, removed);
}

// Follows the keys `removed` of rows of table `type` into the tables that refer to them.
void deleteReferringRows(ODLEXDatabase& db, ODLEXTObject::typeID type, const Keys& removed) {
  // Keys still held by a live row of the referred table keep their dependants.
  ODLEXTObject& referred = db.GetTableObject(type);
  const std::size_t keyColumn = columnOf(*referred.GetLowerTable(), referredKeyOf(type));
  Keys gone;
  for (const std::u16string& key : removed) {
    std::vector<MSIEntry*> holders;
    appendRowsWith(referred, keyColumn, key, holders);
    if (holders.empty())
      gone.insert(key);
  }
  for (const Reference& reference : kReferences) {
    if (reference.parent != type || gone.empty())
      continue;
    ODLEXTObject* child = tableObject(db, reference.child);
    if (!child || !child->GetLowerTable())
      continue;
    const std::size_t column = columnOf(*child->GetLowerTable(), reference.column);
    std::vector<MSIEntry*> rows;
    for (const std::u16string& key : gone)
      appendRowsWith(*child, column, key, rows);
    if (reference.kind)
      std::erase_if(rows,
                    [&](const MSIEntry* row) { return textOf(*row, u"Table") != reference.kind; });
    deleteRowsAndDependants(*child, rows);
  }
}

}  // namespace

void deleteRowsOfComponent(ODLEXTObject& table, const MSIEComponent& component) {
  // Every column that refers to a component counts (IsolatedComponent has two).
  std::vector<MSIEntry*> rows;
  if (const MSITable* lower = table.GetLowerTable()) {
    const auto& columns = lower->GetSchema().columns;
    for (std::size_t i = 0; i < columns.size(); ++i)
      if (columns[i].keyTable == u"Component" && columns[i].keyColumn == 1)
        appendRowsWith(table, i, component.GetComponentID().u16(), rows);
  }
  deleteRowsAndDependants(table, rows);
  if (table.isA() != ODLEXTObject::eFile)
    return;
  for (ODLEXTObject::typeID companion : kFileStepCompanions)
    if (ODLEXTObject* other = tableObject(table.GetDatabase(), companion))
      deleteRowsOfComponent(*other, component);
}

}  // namespace odlex::tables
