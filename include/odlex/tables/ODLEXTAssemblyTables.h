#pragma once
// Table objects of the tables about assemblies, protected files and merge modules:
// FileSFPCatalog, MsiAssembly, MsiAssemblyName, ModuleComponents, ModuleDependency,
// ModuleExclusion and ModuleIgnoreTable.
//
// Collectors insert the matching rows that are not marked deleted into `out`, keep whatever
// `out` already held, and return `out`; GetEntries() with no argument is still the table's
// whole row tree. Lookups return the row (deleted rows are never found) or throw the table's
// not-found ODLEXDatabaseError.

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTFileSFPCatalog
    : public ODLEXTRowTable<ODLEXTFileSFPCatalog, ODLEXTObject::eFileSFPCatalog> {
 public:
  using ODLEXTObject::GetEntries;
  // The rows that put the file `file` under the protection of a catalog.
  RWBTree& GetEntries(RWBTree& out, const MSIEFile& file);
  // The row putting the file `fileID` into the catalog `sfpCatalog`; code 59 when there is
  // none.
  MSIEFileSFPCatalog& GetEntry(const TalString& fileID, const TalString& sfpCatalog);
};

class ODLEXTMsiAssembly : public ODLEXTRowTable<ODLEXTMsiAssembly, ODLEXTObject::eMsiAssembly> {
 public:
  // The assembly that `component` installs; ODLEXDatabaseErrorWithEntry (the Component table,
  // `component`, code 61) when the component is no assembly.
  MSIEMsiAssembly& GetEntry(const MSIEComponent& component);
  // The assembly of the component keyed `componentID`; code 61 when there is none.
  MSIEMsiAssembly& GetWithComponentID(const TalString& componentID);
};

class ODLEXTMsiAssemblyName
    : public ODLEXTRowTable<ODLEXTMsiAssemblyName, ODLEXTObject::eMsiAssemblyName> {
 public:
  using ODLEXTObject::GetEntries;
  // The name attributes (name, version, culture, ...) of the assembly of `component`.
  RWBTree& GetEntries(RWBTree& out, const MSIEComponent& component);
  // The attribute `name` of the assembly of the component keyed `componentID`; code 62 when
  // there is none.
  MSIEMsiAssemblyName& GetWithCompIDAndName(const TalString& componentID, const TalString& name);
};

class ODLEXTModuleComponents
    : public ODLEXTRowTable<ODLEXTModuleComponents, ODLEXTObject::eModuleComponents> {
 public:
  // The components of the module `module` (same module ID and language).
  RWBTree& GetModuleComponents(RWBTree& out, const MSIEModuleSignature& module);
};

class ODLEXTModuleDependency
    : public ODLEXTRowTable<ODLEXTModuleDependency, ODLEXTObject::eModuleDependency> {
 public:
  // The modules that the module `module` requires (rows whose ModuleID and ModuleLanguage are
  // the module's).
  RWBTree& GetModuleDependencies(RWBTree& out, const MSIEModuleSignature& module);
};

class ODLEXTModuleExclusion
    : public ODLEXTRowTable<ODLEXTModuleExclusion, ODLEXTObject::eModuleExclusion> {
 public:
  // The modules that the module `module` cannot be merged with (rows whose ModuleID and
  // ModuleLanguage are the module's).
  RWBTree& GetModuleExclusions(RWBTree& out, const MSIEModuleSignature& module);
};

class ODLEXTModuleIgnoreTable
    : public ODLEXTRowTable<ODLEXTModuleIgnoreTable, ODLEXTObject::eModuleIgnoreTable> {
 public:
  // The row telling the merge to leave out the table `table`; code 37 when there is none.
  MSIEModuleIgnoreTable& GetModuleIgnoreTableWithID(const TalString& table);
};
