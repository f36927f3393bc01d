// The rows of one component in one table, and the rows that refer to them.

#include "odlex/tables/ODLEXComponentCascade.h"

#include <set>
#include <string>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTObject.h"

namespace odlex::tables {
namespace {

// A column of table `child` that holds the value of column `parentKey` of a row of `parent`.
struct Reference {
  ODLEXTObject::typeID parent;
  const char16_t* parentKey;
  ODLEXTObject::typeID child;
  const char16_t* column;
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

void deleteReferringRows(ODLEXDatabase& db, ODLEXTObject::typeID type, const Keys& removed);

// The key column of `type` that other tables refer to, or null when none does.
const char16_t* referredKeyOf(ODLEXTObject::typeID type) {
  for (const Reference& reference : kReferences)
    if (reference.parent == type)
      return reference.parentKey;
  return nullptr;
}

// Deletes the live rows of `table` for which `matches(row)` holds, then follows them.
template <class Matches>
void deleteRowsAndDependants(ODLEXTObject& table, Matches matches) {
  const auto type = static_cast<ODLEXTObject::typeID>(table.isA());
  const char16_t* referredKey = referredKeyOf(type);
  Keys removed;
  for (RWCollectable* item : table.GetEntries()) {
    auto& row = static_cast<MSIEntry&>(*item);
    if (row.IsDeleted() || !matches(row))
      continue;
    deleteRow(table, row);
    if (referredKey)
      removed.insert(textOf(row, referredKey));
  }
  if (!removed.empty())
    deleteReferringRows(table.GetDatabase(), type, removed);
}

// Follows the keys `removed` of rows of table `type` into the tables that refer to them.
void deleteReferringRows(ODLEXDatabase& db, ODLEXTObject::typeID type, const Keys& removed) {
  // Keys still held by a live row of the referred table keep their dependants.
  const char16_t* referredKey = referredKeyOf(type);
  Keys gone = removed;
  for (RWCollectable* item : db.GetTableObject(type).GetEntries()) {
    const auto& row = static_cast<const MSIEntry&>(*item);
    if (!row.IsDeleted())
      gone.erase(textOf(row, referredKey));
  }
  if (gone.empty())
    return;
  for (const Reference& reference : kReferences) {
    if (reference.parent != type)
      continue;
    if (ODLEXTObject* child = tableObject(db, reference.child))
      deleteRowsAndDependants(*child, [&](const MSIEntry& row) {
        return gone.contains(textOf(row, reference.column));
      });
  }
}

}  // namespace

void deleteRowsOfComponent(ODLEXTObject& table, const MSIEComponent& component) {
  const std::u16string key = component.GetComponentID().u16();
  const bool isolated = table.isA() == ODLEXTObject::eIsolatedComponent;
  deleteRowsAndDependants(table, [&](const MSIEntry& row) {
    return row.GetComponentKey().u16() == key ||
           (isolated && textOf(row, u"Component_Application") == key);
  });
  if (table.isA() != ODLEXTObject::eFile)
    return;
  for (ODLEXTObject::typeID companion : kFileStepCompanions)
    if (ODLEXTObject* other = tableObject(table.GetDatabase(), companion))
      deleteRowsOfComponent(*other, component);
}

}  // namespace odlex::tables
