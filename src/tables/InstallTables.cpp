// Operations of the IniFile, RemoveIniFile, RemoveRegistry, Environment, Shortcut,
// CreateFolder, LockPermissions, ReserveCost, ServiceControl, ServiceInstall, Complus and
// LaunchCondition table objects.

#include <memory>
#include <vector>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectLiveRows;
using odlex::tables::collectRowsOfComponent;
using odlex::tables::followReference;

namespace {

// The Table value of the permissions that secure a folder created by a component.
constexpr const char16_t* kCreateFolderLockTable = u"CreateFolder";

// Component attribute bits saying the key path is not a file.
constexpr short kRegistryKeyPath = 0x0004;
constexpr short kODBCDataSourceKeyPath = 0x0020;

}  // namespace

RWBTree& ODLEXTIniFile::GetIniFiles(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTRemoveIniFile::GetRemoveIniFiles(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTRemoveRegistry::GetRemoveRegistries(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

TalString ODLEXTRemoveRegistry::GetRootText(short root) {
  switch (root) {
    case -1:
      return u"HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE (per-user/per-machine)";
    case 0:
      return u"HKEY_CLASSES_ROOT";
    case 1:
      return u"HKEY_CURRENT_USER";
    case 2:
      return u"HKEY_LOCAL_MACHINE";
    case 3:
      return u"HKEY_USERS";
    default:
      return TalString();
  }
}

RWBTree& ODLEXTEnvironment::GetEnvironments(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

MSIEShortcut& ODLEXTShortcut::GetShortcutWithID(const TalString& shortcutID) {
  return FindOrThrow(GetTable().Find(shortcutID), ODLEXDatabaseError::eShortcutNotFound);
}

RWBTree& ODLEXTShortcut::GetShortcuts(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

MSIECreateFolder& ODLEXTCreateFolder::GetCreateFolder(const TalString& directory,
                                                      const TalString& component) {
  return FindOrThrow(GetTable().Find(directory, component),
                     ODLEXDatabaseError::eCreateFolderNotFound);
}

RWBTree& ODLEXTCreateFolder::GetCreateFolders(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTCreateFolder::GetPermissions(RWBTree& out, const MSIECreateFolder& folder) {
  return GetDatabase().GetLockPermissions().GetLockPermissions(out, kCreateFolderLockTable,
                                                               folder.GetDirectory());
}

void ODLEXTCreateFolder::SetPermissions(const MSIECreateFolder& folder,
                                        const RWBTree& permissions) {
  GetDatabase().GetLockPermissions().SetLockPermissions(kCreateFolderLockTable,
                                                        folder.GetDirectory(), permissions);
}

RWBTree& ODLEXTLockPermissions::GetLockPermissions(RWBTree& out, const TalString& table,
                                                   const TalString& lockObject) {
  return collectLiveRows<MSIELockPermissions>(
      GetEntries(), out, [&](const MSIELockPermissions& row) {
        return row.GetTable() == table && row.GetLockObject() == lockObject;
      });
}

void ODLEXTLockPermissions::SetLockPermissions(const TalString& table, const TalString& lockObject,
                                               const RWBTree& permissions) {
  // The grants as free-standing rows keyed for this object; `wanted` finds them by key.
  std::vector<std::unique_ptr<MSIELockPermissions>> grants;
  RWBTree wanted;
  for (RWCollectable* item : permissions) {
    const auto* given = dynamic_cast<const MSIELockPermissions*>(item);
    if (!given || given->IsDeleted())
      continue;
    auto grant = std::make_unique<MSIELockPermissions>(*given);
    grant->SetLockObject(lockObject);
    grant->SetTable(table);
    wanted.insert(grant.get());
    grants.push_back(std::move(grant));
  }

  RWBTree current;
  for (RWCollectable* item : GetLockPermissions(current, table, lockObject)) {
    if (!wanted.find(item))
      Delete(static_cast<MSIELockPermissions&>(*item));
  }
  for (RWCollectable* item : wanted) {
    const auto& grant = static_cast<const MSIELockPermissions&>(*item);
    if (MSIELockPermissions* existing =
            Lookup(lockObject, table, grant.GetDomain(), grant.GetUser()))
      Change(*existing, grant);
    else
      Add(grant);
  }
}

MSIEComponent& ODLEXTReserveCost::GetComponent(const MSIEReserveCost& row) {
  return followReference(GetDatabase().GetComponent().Lookup(row.GetComponent()), kType, row,
                         ODLEXDatabaseError::eComponentNotFound);
}

MSIEDirectory& ODLEXTReserveCost::GetDirectory(const MSIEReserveCost& row) {
  const TalString folder = row.GetReserveFolder();
  const TalString directory = folder.isNull() ? GetComponent(row).GetDirectoryID() : folder;
  return followReference(GetDatabase().GetDirectory().Lookup(directory), kType, row,
                         ODLEXDatabaseError::eDirectoryNotFound);
}

RWBTree& ODLEXTReserveCost::GetReserveCosts(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTServiceControl::GetServiceControls(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTServiceInstall::GetServiceInstalls(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTServiceInstall::GetValidComponents(RWBTree& out) {
  ODLEXTFile& files = GetDatabase().GetFile();
  return collectLiveRows<MSIEComponent>(
      GetDatabase().GetComponent().GetEntries(), out, [&files](const MSIEComponent& component) {
        const bool keyPathIsFile =
            (component.GetAttributes() & (kRegistryKeyPath | kODBCDataSourceKeyPath)) == 0;
        return keyPathIsFile && !component.GetKeyPath().isNull() &&
               files.Lookup(component.GetKeyPath()) != nullptr;
      });
}

MSIEComplus& ODLEXTComplus::GetEntry(const MSIEComponent& component) {
  return followReference(GetTable().FindByComponent(component.GetComponentID()),
                         ODLEXTObject::eComponent, component, ODLEXDatabaseError::eComplusNotFound);
}

MSIELaunchCondition& ODLEXTLaunchCondition::GetEntry(const TalString& condition) {
  return FindOrThrow(GetTable().Find(condition), ODLEXDatabaseError::eLaunchConditionNotFound);
}
