// Operations of the FileSFPCatalog, MsiAssembly, MsiAssemblyName and merge-module table
// objects.

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
