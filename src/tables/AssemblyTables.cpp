// Operations of the FileSFPCatalog, MsiAssembly, MsiAssemblyName and merge-module table
// objects.

#include <vector>

#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectLiveRows;
using odlex::tables::collectRowsOfComponent;
using odlex::tables::collectRowsWithValue;
using odlex::tables::followReference;

namespace {

// The live rows of `rows` (of class Row, whose ModuleID column and the column read by
// `language` name the module a row belongs to) that belong to `module`.
template <class Row>
RWBTree& collectRowsOfModule(const RWBTree& rows, RWBTree& out, const MSIEModuleSignature& module,
                             short (Row::*language)() const) {
  return collectLiveRows<Row>(rows, out, [&](const Row& row) {
    return row.GetModuleID() == module.GetModuleID() && (row.*language)() == module.GetLanguage();
  });
}

}  // namespace

RWBTree& ODLEXTFileSFPCatalog::GetEntries(RWBTree& out, const MSIEFile& file) {
  return collectRowsWithValue(GetEntries(), out, &MSIEFileSFPCatalog::GetFile, file.GetFileID());
}

MSIEFileSFPCatalog& ODLEXTFileSFPCatalog::GetEntry(const TalString& fileID,
                                                   const TalString& sfpCatalog) {
  return FindOrThrow(GetTable().Find(fileID, sfpCatalog),
                     ODLEXDatabaseError::eFileSFPCatalogNotFound);
}

MSIEMsiAssembly& ODLEXTMsiAssembly::GetEntry(const MSIEComponent& component) {
  return followReference(GetTable().Find(component.GetComponentID()), ODLEXTObject::eComponent,
                         component, ODLEXDatabaseError::eMsiAssemblyNotFound);
}

MSIEMsiAssembly& ODLEXTMsiAssembly::GetWithComponentID(const TalString& componentID) {
  return FindOrThrow(GetTable().Find(componentID), ODLEXDatabaseError::eMsiAssemblyNotFound);
}

RWBTree& ODLEXTMsiAssemblyName::GetEntries(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

MSIEMsiAssemblyName& ODLEXTMsiAssemblyName::GetWithCompIDAndName(const TalString& componentID,
                                                                 const TalString& name) {
  return FindOrThrow(GetTable().Find(componentID, name),
                     ODLEXDatabaseError::eMsiAssemblyNameNotFound);
}

TalString ODLEXTModuleSignature::GetDisplayGUIDFromModuleGUID(const TalString& moduleGuid) {
  std::u16string display = u"{";
  for (char16_t c : moduleGuid.u16())
    display += c == u'_' ? u'-' : c;
  return TalString(display + u"}");
}

TalString ODLEXTModuleSignature::GetModuleGUIDFromDisplayGUID(const TalString& displayGuid) {
  std::u16string guid;
  for (char16_t c : displayGuid.u16()) {
    if (c != u'{' && c != u'}')
      guid += c == u'-' ? u'_' : c;
  }
  return TalString(guid);
}

TalString ODLEXTModuleSignature::CombineMergeModuleID(const TalString& name,
                                                      const TalString& displayGuid) {
  return TalString(name.u16() + u"." + GetModuleGUIDFromDisplayGUID(displayGuid).u16());
}

void ODLEXTModuleSignature::SplitMergeModuleID(TalString& name, TalString& displayGuid,
                                               const TalString& moduleId) {
  const std::u16string& id = moduleId.u16();
  const std::size_t dot = id.find(u'.');
  if (dot == std::u16string::npos)
    return;
  if (dot > 0)
    name = TalString(id.substr(0, dot));
  if (dot + 1 < id.size())
    displayGuid = GetDisplayGUIDFromModuleGUID(TalString(id.substr(dot + 1)));
}

TalString ODLEXTModuleSignature::GetInstallerModuleID(const TalString& moduleId) {
  if (moduleId.u16().find(u'.') == std::u16string::npos)
    return moduleId;
  TalString name, displayGuid;
  SplitMergeModuleID(name, displayGuid, moduleId);
  return CombineMergeModuleID(name, displayGuid);
}

namespace {

// Gives every live row of `table` the identifier and language of `module` in the columns that
// name the row's own module (set by `setID` and `setLanguage`).
template <class Table, class Row>
void fixModuleRows(Table& table, const MSIEModuleSignature& module,
                   bool (Row::*setID)(const TalString&), bool (Row::*setLanguage)(short)) {
  const TalString id = ODLEXTModuleSignature::GetInstallerModuleID(module.GetModuleID());
  std::vector<Row*> rows;
  for (RWCollectable* item : table.GetEntries()) {
    if (!static_cast<Row*>(item)->IsDeleted())
      rows.push_back(static_cast<Row*>(item));
  }
  for (Row* row : rows) {
    Row values(*row);
    (values.*setID)(id);
    (values.*setLanguage)(module.GetLanguage());
    table.Change(*row, values);
  }
}

}  // namespace

void ODLEXTModuleComponents::FixComponents(const MSIEModuleSignature& module) {
  fixModuleRows(*this, module, &MSIEModuleComponents::SetModuleID,
                &MSIEModuleComponents::SetLanguage);
}

void ODLEXTModuleDependency::FixDependency(const MSIEModuleSignature& module) {
  fixModuleRows(*this, module, &MSIEModuleDependency::SetModuleID,
                &MSIEModuleDependency::SetModuleLanguage);
}

void ODLEXTModuleExclusion::FixExclusion(const MSIEModuleSignature& module) {
  fixModuleRows(*this, module, &MSIEModuleExclusion::SetModuleID,
                &MSIEModuleExclusion::SetModuleLanguage);
}

RWBTree& ODLEXTModuleComponents::GetModuleComponents(RWBTree& out,
                                                     const MSIEModuleSignature& module) {
  return collectRowsOfModule(GetEntries(), out, module, &MSIEModuleComponents::GetLanguage);
}

RWBTree& ODLEXTModuleDependency::GetModuleDependencies(RWBTree& out,
                                                       const MSIEModuleSignature& module) {
  return collectRowsOfModule(GetEntries(), out, module, &MSIEModuleDependency::GetModuleLanguage);
}

RWBTree& ODLEXTModuleExclusion::GetModuleExclusions(RWBTree& out,
                                                    const MSIEModuleSignature& module) {
  return collectRowsOfModule(GetEntries(), out, module, &MSIEModuleExclusion::GetModuleLanguage);
}

MSIEModuleIgnoreTable& ODLEXTModuleIgnoreTable::GetModuleIgnoreTableWithID(const TalString& table) {
  return FindOrThrow(GetTable().Find(table), ODLEXDatabaseError::eModuleIgnoreTableNotFound);
}
