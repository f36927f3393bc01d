// The operations of the FileSFPCatalog, MsiAssembly, MsiAssemblyName and merge-module table
// objects, on a copy of the idt package (schema 200, so the assembly tables may exist).

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

// Rows of each table, one of them deleted, the others of more than one owner.
class AssemblyTablesTest : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    ODLEXDatabase& db = openPackage();
    assembly_ = &addRow(db.GetMsiAssembly(), MSIEMsiAssembly(u"MainExe"));
    ODLEXTMsiAssemblyName& names = db.GetMsiAssemblyName();
    name_ = &addRow(names, MSIEMsiAssemblyName(u"MainExe", u"Name"));
    names.Delete(addRow(names, MSIEMsiAssemblyName(u"MainExe", u"Culture")));
    addRow(names, MSIEMsiAssemblyName(u"Docs", u"Name"));
    ODLEXTFileSFPCatalog& catalogs = db.GetFileSFPCatalog();
    catalog_ = &addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"app.cat"));
    catalogs.Delete(addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"old.cat")));
    addRow(catalogs, MSIEFileSFPCatalog(u"Readme", u"app.cat"));
    moduleComponent_ =
        &addRow(db.GetModuleComponents(), MSIEModuleComponents(u"MainExe", u"Module.GUID", 1033));
    addRow(db.GetModuleComponents(), MSIEModuleComponents(u"Docs", u"Module.GUID", 1031));
    dependency_ = &addRow(db.GetModuleDependency(),
                          MSIEModuleDependency(u"Module.GUID", 1033, u"Runtime.GUID", 0));
    addRow(db.GetModuleDependency(), MSIEModuleDependency(u"Other.GUID", 1033, u"Runtime.GUID", 0));
    ODLEXTModuleExclusion& exclusions = db.GetModuleExclusion();
    exclusions.Delete(
        addRow(exclusions, MSIEModuleExclusion(u"Module.GUID", 1033, u"Old.GUID", 0)));
    ignored_ = &addRow(db.GetModuleIgnoreTable(), MSIEModuleIgnoreTable(u"Registry"));
    db_ = &db;
  }

  ODLEXDatabase* db_ = nullptr;
  MSIEMsiAssembly* assembly_ = nullptr;
  MSIEMsiAssemblyName* name_ = nullptr;
  MSIEFileSFPCatalog* catalog_ = nullptr;
  MSIEModuleComponents* moduleComponent_ = nullptr;
  MSIEModuleDependency* dependency_ = nullptr;
  MSIEModuleIgnoreTable* ignored_ = nullptr;
};

TEST_F(AssemblyTablesTest, LookupsFindTheirRowOrThrowTheTablesCode) {
  ODLEXTMsiAssembly& assemblies = db_->GetMsiAssembly();
  ODLEXTMsiAssemblyName& names = db_->GetMsiAssemblyName();
  ODLEXTFileSFPCatalog& catalogs = db_->GetFileSFPCatalog();
  ODLEXTModuleIgnoreTable& ignored = db_->GetModuleIgnoreTable();
  MSIEComponent& main = *db_->GetComponent().Lookup(u"MainExe");
  MSIEComponent& docs = *db_->GetComponent().Lookup(u"Docs");
  const Lookup lookups[] = {
      {[&] { return &assemblies.GetEntry(main); }, [&] { assemblies.GetEntry(docs); }, 61,
       assembly_},
      {[&] { return &assemblies.GetWithComponentID(u"MainExe"); },
       [&] { assemblies.GetWithComponentID(u"Docs"); }, 61, assembly_},
      {[&] { return &names.GetWithCompIDAndName(u"MainExe", u"Name"); },
       [&] { names.GetWithCompIDAndName(u"MainExe", u"Culture"); }, 62, name_},
      {[&] { return &catalogs.GetEntry(u"MainExe", u"app.cat"); },
       [&] { catalogs.GetEntry(u"MainExe", u"old.cat"); }, 59, catalog_},
      {[&] { return &ignored.GetModuleIgnoreTableWithID(u"Registry"); },
       [&] { ignored.GetModuleIgnoreTableWithID(u"Shortcut"); }, 37, ignored_},
  };
  expectLookups(lookups);
  expectErrorWithEntry([&] { assemblies.GetEntry(docs); }, ODLEXDatabaseError::eMsiAssemblyNotFound,
                       ODLEXTObject::eComponent, docs);
}

// Module rows belong to the module of the same ID and language.
TEST_F(AssemblyTablesTest, CollectorsGiveTheLiveRowsOfTheirOwner) {
  const MSIEModuleSignature module(u"Module.GUID", 1033);
  const Collector collectors[] = {
      {[&](RWBTree& tree) {
         db_->GetMsiAssemblyName().GetEntries(tree, *db_->GetComponent().Lookup(u"MainExe"));
       },
       {name_}},
      {[&](RWBTree& tree) {
         db_->GetFileSFPCatalog().GetEntries(tree, *db_->GetFile().Lookup(u"MainExe"));
       },
       {catalog_}},
      {[&](RWBTree& tree) { db_->GetModuleComponents().GetModuleComponents(tree, module); },
       {moduleComponent_}},
      {[&](RWBTree& tree) { db_->GetModuleDependency().GetModuleDependencies(tree, module); },
       {dependency_}},
      {[&](RWBTree& tree) { db_->GetModuleExclusion().GetModuleExclusions(tree, module); }, {}},
  };
  expectCollectors(collectors);
}

}  // namespace
}  // namespace odlex::test
