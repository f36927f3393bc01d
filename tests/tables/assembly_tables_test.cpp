// The operations of the FileSFPCatalog, MsiAssembly, MsiAssemblyName and merge-module table
// objects, on a copy of the idt package (schema 200, so the assembly tables may exist).

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class AssemblyTablesTest : public DatabaseTest {};

// Rows of each table, one of them deleted, the others of more than one owner; module rows
// belong to the module of the same ID and language.
TEST_F(AssemblyTablesTest, RowsByKeyAndByOwner) {
  ODLEXDatabase& db = openPackage();
  ODLEXTMsiAssembly& assemblies = db.GetMsiAssembly();
  ODLEXTMsiAssemblyName& names = db.GetMsiAssemblyName();
  ODLEXTFileSFPCatalog& catalogs = db.GetFileSFPCatalog();
  ODLEXTModuleIgnoreTable& ignored = db.GetModuleIgnoreTable();
  ODLEXTModuleExclusion& exclusions = db.GetModuleExclusion();
  MSIEMsiAssembly& assembly = addRow(assemblies, MSIEMsiAssembly(u"MainExe"));
  MSIEMsiAssemblyName& name = addRow(names, MSIEMsiAssemblyName(u"MainExe", u"Name"));
  names.Delete(addRow(names, MSIEMsiAssemblyName(u"MainExe", u"Culture")));
  addRow(names, MSIEMsiAssemblyName(u"Docs", u"Name"));
  MSIEFileSFPCatalog& catalog = addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"app.cat"));
  catalogs.Delete(addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"old.cat")));
  addRow(catalogs, MSIEFileSFPCatalog(u"Readme", u"app.cat"));
  MSIEModuleComponents& component =
      addRow(db.GetModuleComponents(), MSIEModuleComponents(u"MainExe", u"Module.GUID", 1033));
  addRow(db.GetModuleComponents(), MSIEModuleComponents(u"Docs", u"Module.GUID", 1031));
  MSIEModuleDependency& dependency = addRow(
      db.GetModuleDependency(), MSIEModuleDependency(u"Module.GUID", 1033, u"Runtime.GUID", 0));
  addRow(db.GetModuleDependency(), MSIEModuleDependency(u"Other.GUID", 1033, u"Runtime.GUID", 0));
  exclusions.Delete(addRow(exclusions, MSIEModuleExclusion(u"Module.GUID", 1033, u"Old.GUID", 0)));
  MSIEModuleIgnoreTable& ignoredRow = addRow(ignored, MSIEModuleIgnoreTable(u"Registry"));
  MSIEComponent& main = *db.GetComponent().Lookup(u"MainExe");
  MSIEComponent& docs = *db.GetComponent().Lookup(u"Docs");
  const MSIEModuleSignature module(u"Module.GUID", 1033);

  const Lookup lookups[] = {
      {[&] { return &assemblies.GetEntry(main); }, [&] { assemblies.GetEntry(docs); }, 61,
       &assembly},
      {[&] { return &assemblies.GetWithComponentID(u"MainExe"); },
       [&] { assemblies.GetWithComponentID(u"Docs"); }, 61, &assembly},
      {[&] { return &names.GetWithCompIDAndName(u"MainExe", u"Name"); },
       [&] { names.GetWithCompIDAndName(u"MainExe", u"Culture"); }, 62, &name},
      {[&] { return &catalogs.GetEntry(u"MainExe", u"app.cat"); },
       [&] { catalogs.GetEntry(u"MainExe", u"old.cat"); }, 59, &catalog},
      {[&] { return &ignored.GetModuleIgnoreTableWithID(u"Registry"); },
       [&] { ignored.GetModuleIgnoreTableWithID(u"Shortcut"); }, 37, &ignoredRow},
  };
  expectLookups(lookups);
  expectErrorWithEntry([&] { assemblies.GetEntry(docs); }, ODLEXDatabaseError::eMsiAssemblyNotFound,
                       ODLEXTObject::eComponent, docs);

  const Collector collectors[] = {
      {[&](RWBTree& tree) { names.GetEntries(tree, main); }, {&name}},
      {[&](RWBTree& tree) { catalogs.GetEntries(tree, *db.GetFile().Lookup(u"MainExe")); },
       {&catalog}},
      {[&](RWBTree& tree) { db.GetModuleComponents().GetModuleComponents(tree, module); },
       {&component}},
      {[&](RWBTree& tree) { db.GetModuleDependency().GetModuleDependencies(tree, module); },
       {&dependency}},
      {[&](RWBTree& tree) { exclusions.GetModuleExclusions(tree, module); }, {}},
  };
  expectCollectors(collectors);
}

}  // namespace
}  // namespace odlex::test
