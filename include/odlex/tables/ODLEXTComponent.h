#pragma once
// The Component table object: components made with fresh GUIDs, their validity, attribute bits,
// key paths (a File row, or a Registry row when attribute 4 is set), directory and features,
// and the deletion cascade through every table that names a component. ODLEXComponentInfo is
// a component's editable attributes in one value.

#include "odlex/tables/ODLEXTRowTable.h"

class MSIEFeature;
class MSIEFile;
class MSIERegistry;

// The attribute bits of a Component row that this library reads and writes.
enum msidbComponentAttributes : int {
  msidbComponentAttributesLocalOnly = 0,
  msidbComponentAttributesSourceOnly = 1,
  msidbComponentAttributesOptional = 2,
  msidbComponentAttributesRegistryKeyPath = 4,
  msidbComponentAttributesSharedDllRefCount = 8,
  msidbComponentAttributesPermanent = 16,
  msidbComponentAttributesODBCDataSource = 32,
  msidbComponentAttributesTransitive = 64,
  msidbComponentAttributesNeverOverwrite = 128,
};

// A component's editable attributes (not its key). Assignment, and the copy constructor, do not
// copy registryKeyPath: the target keeps its own (a copy starts with false).
class ODLEXComponentInfo {
 public:
  explicit ODLEXComponentInfo(const MSIEComponent& row);
  ODLEXComponentInfo(const ODLEXComponentInfo& other);
  ~ODLEXComponentInfo() = default;
  ODLEXComponentInfo& operator=(const ODLEXComponentInfo& other);
  ODLEXComponentInfo& operator=(const MSIEComponent& row);
  bool operator==(const ODLEXComponentInfo& other) const;
  bool operator==(const MSIEComponent& row) const;

  TalString directoryID;
  TalString keyPath;
  TalString componentGUID;
  TalString condition;
  // 1 (source only) when bit 1 is set, else 2 (optional) when bit 2 is, else 0.
  msidbComponentAttributes runFrom = msidbComponentAttributesLocalOnly;
  bool sharedDllRefCount = false;
  bool permanent = false;
  bool neverOverwrite = false;
  bool transitive = false;
  bool odbcDataSource = false;
  bool registryKeyPath = false;
};

class ODLEXTComponent : public ODLEXTRowTable<ODLEXTComponent, ODLEXTObject::eComponent> {
 public:
  // The row `id`; code 21 when there is none.
  MSIEComponent& GetComponentWithID(const TalString& id);
  // `out` becomes the live components.
  void GetComponents(RWBTree& out);

  // A new component with the GUID, directory, attributes, condition and key path of `c` (its
  // key is made by the lower layer); the temp entries hold it (nothing when none was made). In
  // a merge module it is recorded in ModuleComponents under the first live ModuleSignature.
  void Add(const MSIEComponent& c);
  // The same, installed into `dir`; a silent no-op (temp entries empty) when `dir` is no row
  // of the Directory table.
  void Add(const MSIEComponent& c, const MSIEDirectory& dir);
  // `count` components into `dir`, each with a new GUID; the temp entries hold them all.
  void Add(unsigned int count, const MSIEDirectory& dir);
  // Copies the columns of `values` that differ into `target` (never its key), reviving a
  // deleted row; false, changing nothing, when `values` is not valid or nothing differs.
  bool Change(MSIEComponent& target, const MSIEComponent& values);
  // `code` sums 1 (no GUID), 4 (not a braced, upper-case GUID) and 2 (a key path whose text is
  // empty); true when it is 0. A key path naming no row throws as GetKeyPathString does.
  bool IsValid(const MSIEComponent& c, unsigned int& code);

  // The cascade: unless `c` is deleted already, deletes its rows from, in this order, File,
  // RemoveFile, Shortcut, Registry, RemoveRegistry, ServiceInstall, ServiceControl, IniFile,
  // RemoveIniFile, Environment, Extension, Class, TypeLib, ODBCDriver, ODBCDataSource,
  // ODBCTranslator, ReserveCost, ZrRemoveTextFile, ZrTextFile; from schema 110 on Complus and
  // IsolatedComponent; from 200 on MsiAssembly and MsiAssemblyName (a database that declares
  // no schema counts as 100, the tables it can hold); in a merge module
  // ModuleComponents; each with what hangs off the rows (ODLEXComponentCascade.h). Then `c`
  // itself. Its FeatureComponents rows stay: unlinking is Delete(feature, c).
  void Delete(MSIEComponent& c);
  // Unlinks `c` from `f` (the FeatureComponents row); the component stays.
  void Delete(const MSIEFeature& f, MSIEComponent& c);

  bool HasKeyPath(const MSIEComponent& c);
  bool IsKeyPathForFiles(const MSIEComponent& c);
  bool IsKeyPathForRegistry(const MSIEComponent& c);
  // The File (or, with bit 4, Registry) row the key path names; code 20 (19) when there is
  // none, an empty key path included.
  MSIEntry& GetKeyPath(const MSIEComponent& c);
  // The text naming the key path: empty without one; a file's long name, or a registry row's
  // text (ODLEXTRegistry::GetKeyPath). A key path naming no row throws
  // ODLEXDatabaseErrorWithEntry(Component, c, 20 or 19).
  TalString GetKeyPathString(const MSIEComponent& c);
  void SetKeyPath(const MSIEFile& file, MSIEComponent& c);
  void SetKeyPath(const MSIERegistry& reg, MSIEComponent& c);

  // The attribute accessors; the setters mark neither the row nor the table modified.
  msidbComponentAttributes GetRunFrom(const MSIEComponent& c);
  bool IsSharedRefCount(const MSIEComponent& c);
  void SetSharedRefCount(MSIEComponent& c, bool on);
  bool IsPermanent(const MSIEComponent& c);
  void SetPermanent(MSIEComponent& c, bool on);
  bool IsNeverOverwrite(const MSIEComponent& c);
  void SetNeverOverwrite(MSIEComponent& c, bool on);
  bool IsTransitive(const MSIEComponent& c);
  void SetTransitive(MSIEComponent& c, bool on);

  // The component's Directory row; ODLEXDatabaseErrorWithEntry(Component, c, 18) when missing.
  MSIEDirectory& GetDirectory(const MSIEComponent& c);
  // The long target path of its directory, and the long source path.
  TalString GetTargetPath(const MSIEComponent& c);
  TalString GetSourcePath(const MSIEComponent& c);
  // Inserts into `out` the live features linked to `c` and all their ancestors.
  void GetFeatures(RWBTree& out, const MSIEComponent& c);
  // Insert into `out` the rows of `components` whose key path is a file (a registry row).
  void GetComponentsWithKeyFiles(RWBTree& out, const RWBTree& components);
  void GetComponentsWithKeyRegistries(RWBTree& out, const RWBTree& components);
  // Whether a live File row belongs to `c`.
  bool DoesComponentHaveFiles(const MSIEComponent& c);

  ODLEXComponentInfo GetComponentInfo(const MSIEComponent& c) { return ODLEXComponentInfo(c); }
  // Writes `info` into `c` unless they are equal; the attributes are rebuilt from the record
  // alone, so bits it does not describe are cleared.
  void SetToComponentInfo(MSIEComponent& c, const ODLEXComponentInfo& info);

 private:
  void setBit(MSIEComponent& c, int bit, bool on);
};
