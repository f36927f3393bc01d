#pragma once
// Table objects of the tables that say what a component does to the machine besides copying
// files: .ini entries, environment variables, shortcuts, folders and their permissions, disk
// space reservations, services, COM+ applications and launch conditions.
//
// Collectors ("Get<Rows>(RWBTree& out, ...)") insert the matching rows that are not marked
// deleted into `out`, keep whatever `out` already held, and return `out`. Lookups by key return
// the row (deleted rows are never found) or throw the table's not-found ODLEXDatabaseError;
// lookups that follow a row's reference into another table throw ODLEXDatabaseErrorWithEntry
// naming the row and its table.

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTIniFile : public ODLEXTRowTable<ODLEXTIniFile, ODLEXTObject::eIniFile> {
 public:
  // The .ini entries that `component` writes.
  RWBTree& GetIniFiles(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTRemoveIniFile
    : public ODLEXTRowTable<ODLEXTRemoveIniFile, ODLEXTObject::eRemoveIniFile> {
 public:
  // The .ini entries that `component` removes.
  RWBTree& GetRemoveIniFiles(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTRemoveRegistry
    : public ODLEXTRowTable<ODLEXTRemoveRegistry, ODLEXTObject::eRemoveRegistry> {
 public:
  // The registry values and keys that `component` removes when it is installed.
  RWBTree& GetRemoveRegistries(RWBTree& out, const MSIEComponent& component);
  // The name of a value of the Root column:
  //   -1  "HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE (per-user/per-machine)": the installer
  //       picks the user's hive for a per-user and the machine's for a per-machine install;
  //    0  "HKEY_CLASSES_ROOT", 1 "HKEY_CURRENT_USER", 2 "HKEY_LOCAL_MACHINE", 3 "HKEY_USERS".
  // Any other value is not a root the installer knows: the text is empty.
  static TalString GetRootText(short root);
};

class ODLEXTEnvironment : public ODLEXTRowTable<ODLEXTEnvironment, ODLEXTObject::eEnvironment> {
 public:
  // The environment variables that `component` sets or removes.
  RWBTree& GetEnvironments(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTShortcut : public ODLEXTRowTable<ODLEXTShortcut, ODLEXTObject::eShortcut> {
 public:
  // The shortcut `shortcutID`; code 25 when there is none.
  MSIEShortcut& GetShortcutWithID(const TalString& shortcutID);
  // The shortcuts that `component` installs.
  RWBTree& GetShortcuts(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTCreateFolder : public ODLEXTRowTable<ODLEXTCreateFolder, ODLEXTObject::eCreateFolder> {
 public:
  // The row that makes `component` create the folder `directory`; code 12 when there is none.
  MSIECreateFolder& GetCreateFolder(const TalString& directory, const TalString& component);
  // The folders that `component` creates.
  RWBTree& GetCreateFolders(RWBTree& out, const MSIEComponent& component);
  // The LockPermissions rows that secure the folder of `folder`: those whose LockObject is the
  // folder's directory and whose Table is "CreateFolder". The permissions belong to the folder,
  // so every component creating the same folder shares them.
  RWBTree& GetPermissions(RWBTree& out, const MSIECreateFolder& folder);
  // Makes the folder's permissions those of `permissions`, as
  // ODLEXTLockPermissions::SetLockPermissions does.
  void SetPermissions(const MSIECreateFolder& folder, const RWBTree& permissions);
};

class ODLEXTLockPermissions
    : public ODLEXTRowTable<ODLEXTLockPermissions, ODLEXTObject::eLockPermissions> {
 public:
  // The permissions of one secured object: the rows whose Table is `table` (a table that holds
  // securable objects: "CreateFolder", "File" or "Registry") and whose LockObject is
  // `lockObject`, a key of that table.
  RWBTree& GetLockPermissions(RWBTree& out, const TalString& table, const TalString& lockObject);
  // Makes the permissions of that object exactly the rows of `permissions`. Each item that is a
  // LockPermissions row not marked deleted stands for one (Domain, User, Permission) grant,
  // whatever its own LockObject and Table say; other items are ignored, and of two grants for
  // the same domain and user the first in the tree's order counts. A grant for a domain and
  // user that the object already has changes that row's Permission, any other grant is added,
  // and the object's rows whose domain and user no grant names are deleted. Every edit is an
  // Add, Change or Delete of this table object, so rows and table are marked as those mark
  // them; the temp entries are left as the last Add or Change set them.
  void SetLockPermissions(const TalString& table, const TalString& lockObject,
                          const RWBTree& permissions);
};

class ODLEXTReserveCost : public ODLEXTRowTable<ODLEXTReserveCost, ODLEXTObject::eReserveCost> {
 public:
  // The component whose installation reserves the space; ODLEXDatabaseErrorWithEntry (this
  // table, `row`, code 21) when it does not exist.
  MSIEComponent& GetComponent(const MSIEReserveCost& row);
  // The folder in which the space is reserved: the Directory row named by ReserveFolder or,
  // when ReserveFolder is empty, the component's own directory (so a missing component throws
  // as GetComponent does). ODLEXDatabaseErrorWithEntry (this table, `row`, code 18) when that
  // directory does not exist, which includes a ReserveFolder naming a property rather than a
  // directory.
  MSIEDirectory& GetDirectory(const MSIEReserveCost& row);
  // The reservations made by `component`.
  RWBTree& GetReserveCosts(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTServiceControl
    : public ODLEXTRowTable<ODLEXTServiceControl, ODLEXTObject::eServiceControl> {
 public:
  // The services that `component` starts, stops or deletes.
  RWBTree& GetServiceControls(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTServiceInstall
    : public ODLEXTRowTable<ODLEXTServiceInstall, ODLEXTObject::eServiceInstall> {
 public:
  // The services that `component` installs.
  RWBTree& GetServiceInstalls(RWBTree& out, const MSIEComponent& component);
  // The components that may install a service: the installer installs a service with the
  // executable that is its component's key path, so these are the live Component rows whose
  // key path is a file (neither the registry nor the ODBC data source key-path attribute is
  // set) naming a live File row.
  RWBTree& GetValidComponents(RWBTree& out);
};

class ODLEXTComplus : public ODLEXTRowTable<ODLEXTComplus, ODLEXTObject::eComplus> {
 public:
  // The COM+ application row of `component` (the first of its rows when it has several);
  // ODLEXDatabaseErrorWithEntry (the Component table, `component`, code 78) when it has none.
  MSIEComplus& GetEntry(const MSIEComponent& component);
};

class ODLEXTLaunchCondition
    : public ODLEXTRowTable<ODLEXTLaunchCondition, ODLEXTObject::eLaunchCondition> {
 public:
  // The launch condition whose expression is `condition`; code 67 when there is none.
  MSIELaunchCondition& GetEntry(const TalString& condition);
};
