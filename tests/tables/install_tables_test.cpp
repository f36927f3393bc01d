// The operations of the install tables that hold their own logic (Complus, ReserveCost,
// CreateFolder's permissions, ServiceInstall) on a copy of the idt package, whose
// components are MainExe, Docs, GermanDocs (key files) and Helpers (registry key path, none
// set).

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class InstallTablesTest : public DatabaseTest {};

MSIELockPermissions grant(const char16_t* domain, const char16_t* user, int permission) {
  MSIELockPermissions row(u"ignored", u"ignored", domain, user);
  row.SetPermission(permission);
  return row;
}

MSIEReserveCost reserveCostOf(const char16_t* key, const char16_t* component,
                              const char16_t* folder) {
  MSIEReserveCost row(key);
  row.SetComponent(component);
  row.SetReserveFolder(folder);
  return row;
}

// The Complus table object cannot add rows: the package gets one by import.
TEST_F(InstallTablesTest, ComplusEntryOfAComponentOrTheComponentInTheError) {
  importTable(package(), "Component_\tExpType\ns72\tI2\nComplus\tComponent_\tExpType\nDocs\t1\n");
  ODLEXDatabase& db = openPackage();

  ODLEXTComplus& complus = db.GetComplus();
  MSIEComponent& docs = *db.GetComponent().Lookup(u"Docs");
  MSIEComponent& mainExe = *db.GetComponent().Lookup(u"MainExe");
  EXPECT_EQ(complus.GetEntry(docs).GetExpType(), NullableSignedShort(1));
  expectErrorWithEntry([&] { complus.GetEntry(mainExe); }, ODLEXDatabaseError::eComplusNotFound,
                       ODLEXTObject::eComponent, mainExe);
  complus.Delete(complus.GetEntry(docs));
  expectErrorWithEntry([&] { complus.GetEntry(docs); }, ODLEXDatabaseError::eComplusNotFound,
                       ODLEXTObject::eComponent, docs);
}

TEST_F(InstallTablesTest, ReserveCostFollowsItsComponentAndFolder) {
  ODLEXDatabase& db = openPackage();
  ODLEXTReserveCost& costs = db.GetReserveCost();
  MSIEReserveCost& inComponentDir = addRow(costs, reserveCostOf(u"R1", u"MainExe", u""));
  MSIEReserveCost& inOwnFolder = addRow(costs, reserveCostOf(u"R2", u"MainExe", u"DocDir"));
  MSIEReserveCost& noComponent = addRow(costs, reserveCostOf(u"R3", u"Gone", u""));
  MSIEReserveCost& propertyFolder = addRow(costs, reserveCostOf(u"R4", u"Docs", u"DATAPATH"));

  EXPECT_EQ(costs.GetComponent(inComponentDir).GetComponentID(), TalString(u"MainExe"));
  EXPECT_EQ(costs.GetDirectory(inComponentDir).GetDirectory(), TalString(u"BinDir"));
  EXPECT_EQ(costs.GetDirectory(inOwnFolder).GetDirectory(), TalString(u"DocDir"));
  expectErrorWithEntry([&] { costs.GetComponent(noComponent); },
                       ODLEXDatabaseError::eComponentNotFound, ODLEXTObject::eReserveCost,
                       noComponent);
  expectErrorWithEntry([&] { costs.GetDirectory(noComponent); },
                       ODLEXDatabaseError::eComponentNotFound, ODLEXTObject::eReserveCost,
                       noComponent);
  expectErrorWithEntry([&] { costs.GetDirectory(propertyFolder); },
                       ODLEXDatabaseError::eDirectoryNotFound, ODLEXTObject::eReserveCost,
                       propertyFolder);
}

TEST_F(InstallTablesTest, FolderPermissionsAreReplacedAsAWhole) {
  ODLEXDatabase& db = openPackage();
  ODLEXTCreateFolder& folders = db.GetCreateFolder();
  ODLEXTLockPermissions& permissions = db.GetLockPermissions();
  MSIECreateFolder& folder = addRow(folders, MSIECreateFolder(u"BinDir", u"MainExe"));
  MSIELockPermissions& fileGrant =
      addRow(permissions, MSIELockPermissions(u"BinDir", u"File", u"", u"Alice"));

  RWBTree first;
  MSIELockPermissions alice = grant(u"CORP", u"Alice", 1);
  MSIELockPermissions bob = grant(u"", u"Bob", 2);
  first.insert(&alice);
  first.insert(&bob);
  folders.SetPermissions(folder, first);
  RWBTree granted;
  folders.GetPermissions(granted, folder);
  ASSERT_EQ(granted.entries(), 2u);
  for (RWCollectable* item : granted) {
    EXPECT_EQ(static_cast<MSIELockPermissions*>(item)->GetLockObject(), TalString(u"BinDir"));
    EXPECT_EQ(static_cast<MSIELockPermissions*>(item)->GetTable(), TalString(u"CreateFolder"));
  }
  MSIELockPermissions& bobRow = *permissions.Lookup(u"BinDir", u"CreateFolder", u"", u"Bob");
  MSIELockPermissions& aliceRow =
      *permissions.Lookup(u"BinDir", u"CreateFolder", u"CORP", u"Alice");

  RWBTree second;
  MSIELockPermissions bobAgain = grant(u"", u"Bob", 3);
  MSIELockPermissions carol = grant(u"", u"Carol", 4);
  second.insert(&bobAgain);
  second.insert(&carol);
  folders.SetPermissions(folder, second);

  EXPECT_TRUE(aliceRow.IsDeleted());
  EXPECT_EQ(bobRow.GetPermission(), NullableLong(3));
  RWBTree replaced;
  folders.GetPermissions(replaced, folder);
  EXPECT_EQ(itemsOf(replaced),
            (std::set<RWCollectable*>{
                &bobRow, permissions.Lookup(u"BinDir", u"CreateFolder", u"", u"Carol")}));
  EXPECT_FALSE(fileGrant.IsDeleted());
}

TEST_F(InstallTablesTest, ServicesNeedAComponentWhoseKeyPathIsAnExistingFile) {
  ODLEXDatabase& db = openPackage();
  MSIEComponent broken(u"Broken", u"", u"BinDir");
  broken.SetAttributes(0);
  broken.SetKeyPath(u"NoSuchFile");
  db.GetComponent().Add(broken);

  RWBTree valid;
  db.GetServiceInstall().GetValidComponents(valid);
  ODLEXTComponent& components = db.GetComponent();
  EXPECT_EQ(itemsOf(valid),
            (std::set<RWCollectable*>{components.Lookup(u"MainExe"), components.Lookup(u"Docs"),
                                      components.Lookup(u"GermanDocs")}));
}

}  // namespace
}  // namespace odlex::test
