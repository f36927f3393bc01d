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

// A merge module names itself in its tables by one identifier: its name, ".", and its GUID
// without braces and with "_" for "-" (Mod.A1B2C3D4_E5F6_A7B8_C9D0_E1F2A3B4C5D6). People see
// the GUID in its braced form with hyphens. The conversions between the two change no letter's
// case and raise nothing.
class ODLEXTModuleSignature
    : public ODLEXTRowTable<ODLEXTModuleSignature, ODLEXTObject::eModuleSignature> {
 public:
  // "{" + the GUID with "_" turned into "-" + "}".
  static TalString GetDisplayGUIDFromModuleGUID(const TalString& moduleGuid);
  // The GUID with every "{" and "}" dropped (wherever they stand) and "-" turned into "_".
  static TalString GetModuleGUIDFromDisplayGUID(const TalString& displayGuid);
  // name + "." + the module form of `displayGuid`; the name is taken as it is.
  static TalString CombineMergeModuleID(const TalString& name, const TalString& displayGuid);
  // Splits `moduleId` at its first ".": `name` gets what stands before it and `displayGuid` the
  // display form of what follows; an output whose part is empty is left as it was, and so are
  // both when there is no ".".
  static void SplitMergeModuleID(TalString& name, TalString& displayGuid,
                                 const TalString& moduleId);
  // `moduleId` as the installer writes it: split and combined again, so that a GUID given in
  // its display form loses its braces and hyphens; unchanged when it holds no ".".
  static TalString GetInstallerModuleID(const TalString& moduleId);
};

// The Fix operations bring a merge module's tables in line with its ModuleSignature row after
// the module's name, GUID or language changed: every live row's own module identifier (in the
// installer's form, GetInstallerModuleID) and language become the signature's. A module's
// tables describe that one module, so every row is its. The rows change through Change, so a
// row whose key changes is replaced by a new row; a row that would take a key another live row
// holds stays as it was.
class ODLEXTModuleComponents
    : public ODLEXTRowTable<ODLEXTModuleComponents, ODLEXTObject::eModuleComponents> {
 public:
  // The components of the module `module` (same module ID and language).
  RWBTree& GetModuleComponents(RWBTree& out, const MSIEModuleSignature& module);
  // ModuleID and Language of every row become `module`'s.
  void FixComponents(const MSIEModuleSignature& module);
};

class ODLEXTModuleDependency
    : public ODLEXTRowTable<ODLEXTModuleDependency, ODLEXTObject::eModuleDependency> {
 public:
  // The modules that the module `module` requires (rows whose ModuleID and ModuleLanguage are
  // the module's).
  RWBTree& GetModuleDependencies(RWBTree& out, const MSIEModuleSignature& module);
  // ModuleID and ModuleLanguage of every row become `module`'s; the required modules stay.
  void FixDependency(const MSIEModuleSignature& module);
};

class ODLEXTModuleExclusion
    : public ODLEXTRowTable<ODLEXTModuleExclusion, ODLEXTObject::eModuleExclusion> {
 public:
  // The modules that the module `module` cannot be merged with (rows whose ModuleID and
  // ModuleLanguage are the module's).
  RWBTree& GetModuleExclusions(RWBTree& out, const MSIEModuleSignature& module);
  // ModuleID and ModuleLanguage of every row become `module`'s; the excluded modules stay.
  void FixExclusion(const MSIEModuleSignature& module);
};

class ODLEXTModuleIgnoreTable
    : public ODLEXTRowTable<ODLEXTModuleIgnoreTable, ODLEXTObject::eModuleIgnoreTable> {
 public:
  // The row telling the merge to leave out the table `table`; code 37 when there is none.
  MSIEModuleIgnoreTable& GetModuleIgnoreTableWithID(const TalString& table);
};
