// The operations of the FileSFPCatalog, MsiAssembly, MsiAssemblyName and merge-module table
// objects, on a copy of the wixl package (schema 200, so the assembly tables may exist).

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class AssemblyTablesTest : public DatabaseTest {};

TEST_F(AssemblyTablesTest, AssemblyOfAComponentOrTheComponentInTheError) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kWixl);
  ODLEXTMsiAssembly& assemblies = db.GetMsiAssembly();
  MSIEComponent& main = *db.GetComponent().Lookup(u"MainExecutable");
  MSIEComponent& readme = *db.GetComponent().Lookup(u"ReadmeDoc");
  MSIEMsiAssembly& assembly = addRow(assemblies, MSIEMsiAssembly(u"MainExecutable"));
  EXPECT_EQ(&assemblies.GetEntry(main), &assembly);
  EXPECT_EQ(&assemblies.GetWithComponentID(u"MainExecutable"), &assembly);
  expectErrorWithEntry([&] { assemblies.GetEntry(readme); },
                       ODLEXDatabaseError::eMsiAssemblyNotFound, ODLEXTObject::eComponent, readme);
  EXPECT_EQ(thrownCode([&] { assemblies.GetWithComponentID(u"ReadmeDoc"); }), 61);

  ODLEXTMsiAssemblyName& names = db.GetMsiAssemblyName();
  MSIEMsiAssemblyName& name = addRow(names, MSIEMsiAssemblyName(u"MainExecutable", u"Name"));
  names.Delete(addRow(names, MSIEMsiAssemblyName(u"MainExecutable", u"Culture")));
  addRow(names, MSIEMsiAssemblyName(u"ReadmeDoc", u"Name"));
  RWBTree ofMain;
  names.GetEntries(ofMain, main);
  EXPECT_EQ(itemsOf(ofMain), (std::set<RWCollectable*>{&name}));
  EXPECT_EQ(&names.GetWithCompIDAndName(u"MainExecutable", u"Name"), &name);
  EXPECT_EQ(thrownCode([&] { names.GetWithCompIDAndName(u"MainExecutable", u"Culture"); }), 62);
}

TEST_F(AssemblyTablesTest, CatalogEntriesOfAFile) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kWixl);
  ODLEXTFileSFPCatalog& catalogs = db.GetFileSFPCatalog();
  MSIEFileSFPCatalog& entry = addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"app.cat"));
  catalogs.Delete(addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"old.cat")));
  addRow(catalogs, MSIEFileSFPCatalog(u"Readme", u"app.cat"));
  RWBTree ofFile;
  catalogs.GetEntries(ofFile, *db.GetFile().Lookup(u"MainExe"));
  EXPECT_EQ(itemsOf(ofFile), (std::set<RWCollectable*>{&entry}));
  EXPECT_EQ(&catalogs.GetEntry(u"MainExe", u"app.cat"), &entry);
  EXPECT_EQ(thrownCode([&] { catalogs.GetEntry(u"MainExe", u"old.cat"); }), 59);
}

TEST_F(AssemblyTablesTest, ModuleRowsBelongToTheModuleOfTheSameIDAndLanguage) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kWixl);
  const MSIEModuleSignature module(u"Module.GUID", 1033);
  MSIEModuleComponents& component = addRow(
      db.GetModuleComponents(), MSIEModuleComponents(u"MainExecutable", u"Module.GUID", 1033));
  addRow(db.GetModuleComponents(), MSIEModuleComponents(u"ReadmeDoc", u"Module.GUID", 1031));
  MSIEModuleDependency& dependency = addRow(
      db.GetModuleDependency(), MSIEModuleDependency(u"Module.GUID", 1033, u"Runtime.GUID", 0));
  addRow(db.GetModuleDependency(), MSIEModuleDependency(u"Other.GUID", 1033, u"Runtime.GUID", 0));
  ODLEXTModuleExclusion& exclusions = db.GetModuleExclusion();
  exclusions.Delete(addRow(exclusions, MSIEModuleExclusion(u"Module.GUID", 1033, u"Old.GUID", 0)));

  RWBTree components;
  db.GetModuleComponents().GetModuleComponents(components, module);
  EXPECT_EQ(itemsOf(components), (std::set<RWCollectable*>{&component}));
  RWBTree dependencies;
  db.GetModuleDependency().GetModuleDependencies(dependencies, module);
  EXPECT_EQ(itemsOf(dependencies), (std::set<RWCollectable*>{&dependency}));
  RWBTree excluded;
  EXPECT_TRUE(exclusions.GetModuleExclusions(excluded, module).isEmpty());

  ODLEXTModuleIgnoreTable& ignored = db.GetModuleIgnoreTable();
  MSIEModuleIgnoreTable& row = addRow(ignored, MSIEModuleIgnoreTable(u"Registry"));
  EXPECT_EQ(&ignored.GetModuleIgnoreTableWithID(u"Registry"), &row);
  EXPECT_EQ(thrownCode([&] { ignored.GetModuleIgnoreTableWithID(u"Shortcut"); }), 37);
}

}  // namespace
}  // namespace odlex::test
