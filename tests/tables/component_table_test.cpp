// The Component table object: deleting a component from the wixl package (with rows of the
// other component tables added for two of its components) leaves no row naming it or its
// file, and leaves the other components whole; adding, validity, change and the attribute
// record.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

using Cells = std::vector<std::pair<const char16_t*, const char16_t*>>;

// Adds `row` with the text of `cells` (decimal text for integer columns) through `table`.
template <class Table, class Row>
void addWith(Table& table, Row row, const Cells& cells) {
  for (const auto& [column, value] : cells)
    ASSERT_TRUE(row.SetColumn(column, MSIRecordColumn::String(value)))
        << TalString(column).ToUtf8();
  addRow(table, row);
}

// Rows of the component MainExecutable (file MainExe) and of ReadmeDoc (file Readme) in the
// tables that refer to components and files, beside those wixl wrote (the files' MsiFileHash
// rows among them).
void addComponentRows(ODLEXDatabase& db) {
  addWith(db.GetFont(), MSIEFont(u"MainExe"), {});
  addWith(db.GetFont(), MSIEFont(u"Readme"), {});
  addWith(db.GetSelfReg(), MSIESelfReg(u"MainExe"), {});
  // A copy of MainExe made by another component goes with the file.
  addWith(db.GetDuplicateFile(), MSIEDuplicateFile(u"CopyOfMain"),
          {{u"Component_", u"ReadmeDoc"}, {u"File_", u"MainExe"}});
  const char16_t* clsid = u"{11111111-2222-3333-4444-555555555555}";
  addWith(db.GetClass(), MSIEClass(clsid, u"LocalServer32", u"MainExecutable"),
          {{u"Feature_", u"Complete"}});
  addWith(db.GetProgId(), MSIEProgId(u"Odlex.App.1"), {{u"Class_", clsid}});
  addWith(db.GetProgId(), MSIEProgId(u"Odlex.App"), {{u"ProgId_Parent", u"Odlex.App.1"}});
  addWith(db.GetExtension(), MSIEExtension(u"odx", u"MainExecutable"),
          {{u"ProgId_", u"Odlex.App.1"}, {u"Feature_", u"Complete"}});
  addWith(db.GetExtension(), MSIEExtension(u"odt", u"ReadmeDoc"),
          {{u"Feature_", u"Documentation"}});
  addWith(db.GetVerb(), MSIEVerb(u"odx", u"open"), {});
  addWith(db.GetVerb(), MSIEVerb(u"odt", u"open"), {});
  addWith(db.GetODBCDriver(), MSIEODBCDriver(u"Driver"),
          {{u"Component_", u"MainExecutable"}, {u"Description", u"d"}, {u"File_", u"MainExe"}});
  addWith(db.GetODBCAttribute(), MSIEODBCAttribute(u"Driver", u"CPTimeout"), {});
  addWith(db.GetEnvironment(), MSIEEnvironment(u"MainPath"),
          {{u"Name", u"PATH"}, {u"Component_", u"MainExecutable"}});
  addWith(db.GetEnvironment(), MSIEEnvironment(u"DocPath"),
          {{u"Name", u"DOCS"}, {u"Component_", u"ReadmeDoc"}});
  addWith(db.GetTypeLib(),
          MSIETypeLib(u"{66666666-7777-8888-9999-000000000000}", 0, u"MainExecutable"),
          {{u"Feature_", u"Complete"}});
}

class ComponentTableTest : public DatabaseTest {
 protected:
  std::filesystem::path wixl_ = file("wixl.msi");
};

std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (std::size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
    fields.push_back(line.substr(start, tab - start));
  fields.push_back(line.substr(start));
  return fields;
}

TEST_F(ComponentTableTest, DeleteLeavesNoRowNamingTheComponentOrItsFiles) {
  ODLEXDatabase& db = openWixl();
  addComponentRows(db);
  ODLEXTComponent& components = db.GetComponent();
  components.Delete(components.GetComponentWithID(u"MainExecutable"));
  ASSERT_TRUE(db.SaveChanges());

  // Only FeatureComponents still names the component: unlinking is left to that table.
  for (const std::string& table : msiinfoPersistentTables(wixl_)) {
    for (const std::string& line : msiinfoRows(wixl_, table)) {
      const std::vector<std::string> fields = fieldsOf(line);
      const bool namesIt =
          std::ranges::count(fields, "MainExecutable") + std::ranges::count(fields, "MainExe") > 0;
      EXPECT_TRUE(!namesIt || table == "FeatureComponents") << table << ": " << line;
    }
  }
  EXPECT_EQ(std::ranges::count(msiinfoRows(wixl_, "FeatureComponents"), "Complete\tMainExecutable"),
            1);
  // What belongs to the other components stays; a table left without rows is not written.
  const std::vector<std::pair<std::string, std::size_t>> survivors = {
      {"Component", 4}, {"File", 4},          {"Registry", 1},          {"Font", 1},
      {"Extension", 1}, {"Verb", 1},          {"Environment", 1},       {"ProgId", 0},
      {"Class", 0},     {"ODBCAttribute", 0}, {"FeatureComponents", 5},
  };
  const std::vector<std::string> tables = msiinfoPersistentTables(wixl_);
  for (const auto& [table, rows] : survivors) {
    const bool written = std::ranges::count(tables, table) > 0;
    EXPECT_EQ(written ? msiinfoRows(wixl_, table).size() : 0u, rows) << table;
  }
}

TEST_F(ComponentTableTest, AddSeveralIntoADirectory) {
  ODLEXDatabase& db = openWixl();
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
  ODLEXDatabase& db = openWixl();
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent row(components.GetComponentWithID(u"ReadmeDoc"));
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
  ODLEXDatabase& db = openWixl();
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent& row = components.GetComponentWithID(u"ReadmeDoc");
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

  ODLEXComponentInfo registry(components.GetComponentWithID(u"ProgramMenuDir"));
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
    const std::filesystem::path path = file("gate" + std::to_string(n++) + ".msi");
    MSIDatabase created(c.version);
    ASSERT_EQ(created.open(text(path), MSIDatabase::ePersistCreate), 0u);
    ASSERT_EQ(created.commit(), 0u);
    created.close(false);
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(path));
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
