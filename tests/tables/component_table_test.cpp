// The Component table object: deleting a component removes exactly its rows and what hangs
// off them; adding, validity, change, the attribute record and the schema gates.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "common/DatabaseTest.h"
#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/Packages.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class ComponentTableTest : public DatabaseTest {};

// The first cell of each row of `table` in `package`, sorted; none when the table is not there.
std::vector<std::string> firstCells(const std::filesystem::path& package, const std::string& table,
                                    const std::vector<std::string>& tables) {
  std::vector<std::string> cells;
  if (std::ranges::count(tables, table) == 0)
    return cells;
  for (const std::string& line : msiinfoRows(package, table))
    cells.push_back(splitCells(line).front());
  std::ranges::sort(cells);
  return cells;
}

// The package of tests/oracle/fixtures/cascade, built by msibuild: components App (files AppExe
// and AppDll), Docs (DocFile) and Tools (ToolExe), each with rows in the tables of the cascade
// and rows hanging off those; App is in features Main and Manuals. Deleting App leaves exactly
// the rows of the others, which the saved file shows to msiinfo. A copy of AppExe that Docs
// makes goes with the file; App's FeatureComponents rows stay. Of the permissions, those of
// App's files, registry rows and of the folder AppData that only App creates go; AppDir's stay
// (Tools creates it too), and so does the Registry row's lock that shares a file's key.
TEST_F(ComponentTableTest, DeleteRemovesExactlyTheComponentsRows) {
  const std::filesystem::path package = file("cascade.msi");
  ASSERT_TRUE(msibuildImport(package, idtFilesIn(fixturePath("cascade"))));
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
  ODLEXTComponent& components = db.GetComponent();
  components.Delete(components.GetComponentWithID(u"App"));
  ASSERT_TRUE(db.SaveChanges());

  using Keys = std::vector<std::string>;
  const std::pair<std::string, Keys> survivors[] = {
      {"Component", {"Docs", "Tools"}},
      {"File", {"DocFile", "ToolExe"}},
      {"Registry", {"DocReg", "ToolReg"}},
      {"Shortcut", {"DocShortcut"}},
      {"ServiceInstall", {"DocSvc"}},
      {"ServiceControl", {}},
      {"Environment", {"DocEnv", "ToolEnv"}},
      {"IniFile", {"DocIni"}},
      {"RemoveIniFile", {}},
      {"ODBCDriver", {}},
      {"ODBCAttribute", {}},
      {"ODBCDataSource", {"DocDS"}},
      {"ODBCSourceAttribute", {"DocDS"}},
      {"ODBCTranslator", {}},
      {"Class", {"{BBBBBBBB-0000-4000-8000-000000000002}"}},
      {"ProgId", {"Doc.File"}},
      {"Extension", {"docx"}},
      {"Verb", {"docx"}},
      {"MIME", {}},
      {"TypeLib", {"{BBBBBBBB-2222-4222-8222-222222222222}"}},
      {"SelfReg", {}},
      {"Font", {}},
      {"MsiFileHash", {"DocFile"}},
      {"BindImage", {}},
      {"DuplicateFile", {"DocCopy"}},
      {"MoveFile", {}},
      {"CreateFolder", {"AppDir", "DocDir"}},
      {"LockPermissions", {"AppDir", "AppExe", "DocDir", "DocFile", "ToolReg"}},
      {"PublishComponent", {"{F0000000-0000-4000-8000-000000000002}"}},
      {"RemoveFile", {}},
      {"RemoveRegistry", {}},
      {"ReserveCost", {}},
      {"FeatureComponents", {"Main", "Main", "Manuals", "Manuals"}},
  };
  const std::vector<std::string> tables = msiinfoPersistentTables(package);
  for (const auto& [table, keys] : survivors)
    EXPECT_EQ(firstCells(package, table, tables), keys) << table;
}

TEST_F(ComponentTableTest, AddSeveralIntoADirectory) {
  ODLEXDatabase& db = openPackage();
  ODLEXTComponent& components = db.GetComponent();
  MSIEDirectory& dir = *db.GetDirectory().Lookup(TalString(u"INSTALLDIR"));
  components.Add(3, dir);
  std::set<std::u16string> keys, guids;
  for (RWCollectable* item : components.GetTempEntries()) {
    const auto& row = static_cast<const MSIEComponent&>(*item);
    keys.insert(row.GetComponentID().u16());
    guids.insert(row.GetComponentGUID().u16());
    EXPECT_EQ(row.GetDirectoryID(), TalString(u"INSTALLDIR"));
    unsigned int code = 99;
    EXPECT_TRUE(components.IsValid(row, code)) << code;
  }
  EXPECT_EQ(keys.size(), 3u);
  EXPECT_EQ(guids.size(), 3u);
  EXPECT_FALSE(keys.contains(u"littleBunny"));

  MSIEDirectory missing(u"NoSuchDir");
  components.Add(MSIEComponent(u"x", ODLEXTObject::GenerateGUID(), u""), missing);
  EXPECT_EQ(components.GetTempEntries().entries(), 0u);
}

// Validity codes, and the key path that names no row.
TEST_F(ComponentTableTest, ValidityCodes) {
  ODLEXDatabase& db = openPackage();
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent row(components.GetComponentWithID(u"Docs"));
  struct Case {
    const char16_t* guid;
    const char16_t* keyPath;
    unsigned int code;
  };
  const Case cases[] = {
      {u"", u"", 5},
      {u"{2a1d9d3f-8c75-4d3e-9f6b-3c0e4a5b7d12}", u"", 4},
      {u"{2A1D9D3F-8C75-4D3E-9F6B-3C0E4A5B7D12}", u"Readme", 0},
  };
  for (const Case& c : cases) {
    row.SetComponentGUID(c.guid);
    row.SetKeyPath(c.keyPath);
    unsigned int code = 99;
    EXPECT_EQ(components.IsValid(row, code), c.code == 0);
    EXPECT_EQ(code, c.code) << TalString(c.guid).ToUtf8();
  }
  row.SetKeyPath(u"NoSuchFile");
  unsigned int code = 0;
  EXPECT_EQ(thrownCode([&] { components.IsValid(row, code); }), 20);
  EXPECT_EQ(thrownCode([&] { components.GetComponentWithID(u"NoSuch"); }), 21);
}

// Change revives a deleted row only when something differs; the record rebuilds the
// attributes and does not assign registryKeyPath.
TEST_F(ComponentTableTest, ChangeAndTheAttributeRecord) {
  ODLEXDatabase& db = openPackage();
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent& row = components.GetComponentWithID(u"Docs");
  row.Delete();
  EXPECT_FALSE(components.Change(row, MSIEComponent(row)));
  EXPECT_TRUE(row.IsDeleted());
  MSIEComponent values(row);
  values.SetCondition(u"VersionNT");
  EXPECT_TRUE(components.Change(row, values));
  EXPECT_FALSE(row.IsDeleted());

  row.SetAttributes(256 | msidbComponentAttributesPermanent);
  ODLEXComponentInfo info(row);
  EXPECT_TRUE(info.permanent);
  components.SetToComponentInfo(row, info);
  EXPECT_EQ(row.GetAttributes(), 256 | msidbComponentAttributesPermanent);
  info.transitive = true;
  components.SetToComponentInfo(row, info);
  EXPECT_EQ(row.GetAttributes(),
            msidbComponentAttributesPermanent | msidbComponentAttributesTransitive);

  ODLEXComponentInfo registry(components.GetComponentWithID(u"Helpers"));
  EXPECT_TRUE(registry.registryKeyPath);
  info = registry;
  EXPECT_FALSE(info.registryKeyPath);
  EXPECT_TRUE(components.IsKeyPathForFiles(MSIEComponent(u"k", u"", u"")));
}

// The tables of newer schemas are reached only by databases that can hold them (a reach beyond
// would throw code 60), and ModuleComponents only in a merge module.
TEST_F(ComponentTableTest, VersionAndMergeModuleGates) {
  const struct {
    eSchemaVersion version;
    bool mergeModule;
    bool isolatedGoes;
    bool assemblyGoes;
    bool moduleRowGoes;
  } cases[] = {
      {eSchema100, false, false, false, false},
      {eSchema150, false, true, false, false},
      {eSchema200, false, true, true, false},
      {eSchema200, true, true, true, true},
  };
  int n = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.version) + (c.mergeModule ? " module" : ""));
    ODLEXDatabase& db = openNewDatabase("gate" + std::to_string(n++) + ".msi", c.version);
    db.SetMergeModule(c.mergeModule);
    MSIEComponent& main = addRow(db.GetComponent(), MSIEComponent(u"", u"", u"TARGETDIR"));
    const TalString key = main.GetComponentID();
    MSIEntry* isolated = c.version >= eSchema110
                             ? &addRow(db.GetIsolatedComponent(), MSIEIsolatedComponent(key, key))
                             : nullptr;
    MSIEntry* assembly =
        c.version >= eSchema200 ? &addRow(db.GetMsiAssembly(), MSIEMsiAssembly(key)) : nullptr;
    MSIEntry* moduleRow =
        c.version >= eSchema200
            ? &addRow(db.GetModuleComponents(), MSIEModuleComponents(key, u"Module.GUID", 1033))
            : nullptr;
    db.GetComponent().Delete(main);
    EXPECT_TRUE(main.IsDeleted());
    EXPECT_EQ(isolated && isolated->IsDeleted(), c.isolatedGoes);
    EXPECT_EQ(assembly && assembly->IsDeleted(), c.assemblyGoes);
    EXPECT_EQ(moduleRow && moduleRow->IsDeleted(), c.moduleRowGoes);
  }
}

}  // namespace
}  // namespace odlex::test
