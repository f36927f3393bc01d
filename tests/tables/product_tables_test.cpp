// The product's own tables, the change log's switches, the GUI property list and the removal of
// a package's user interface.

#include <optional>

#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

const TalString kShippedCatalog = TalString::FromUtf8(ODLEX_SOURCE_DIR "/share/odlex/messages.txt");

class ProductTablesTest : public DatabaseTest {
 protected:
  void TearDown() override {
    ODLEXDatabase::SetChangeLogging(false);
    DatabaseTest::TearDown();
  }

  void setKeyword(ODLEXDatabase& db, const char16_t* keyword, const char16_t* value) {
    MSIEZrKeyword row(keyword, 0);
    row.SetValue(value);
    db.GetZrKeyword().Add(row);
  }
};

TEST_F(ProductTablesTest, ChangeLogFollowsTheSwitchAndThePackagesKeyword) {
  const struct {
    bool catalog;
    bool switchOn;
    const char16_t* keyword;  // null: no ChangeLog keyword
    bool written;
  } cases[] = {
      {false, true, u"ENABLED", false}, {true, false, nullptr, false},
      {true, false, u"enabled", true},  {true, true, nullptr, true},
      {true, true, u"Disabled", false}, {true, false, u"DISABLED", false},
      {true, true, u"other", true},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    const std::string name = "log" + std::to_string(i) + ".msi";
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(copyPackage(name)));
    ODLEXDatabase::SetResources(cases[i].catalog ? kShippedCatalog : text(file("missing.txt")));
    ODLEXDatabase::SetChangeLogging(cases[i].switchOn);
    if (cases[i].keyword)
      setKeyword(db, u"ChangeLog", cases[i].keyword);
    db.UpdateChangeLog(0x400D0074, {u"Feature"}, u"Feature");
    RWBTree& rows = db.GetZrChangeLog().GetEntries();
    ASSERT_EQ(rows.entries(), cases[i].written ? 1u : 0u);
    if (cases[i].written) {
      const auto& row = static_cast<const MSIEZrChangeLog&>(**rows.begin());
      EXPECT_EQ(row.GetMessage(), u"Table Feature was changed.");
      EXPECT_EQ(row.GetTable(), u"Feature");
      EXPECT_EQ(row.GetMessageId(), 0x400D0074);
    }
  }
}

TEST_F(ProductTablesTest, VersionRangesIncludeBothEnds) {
  importTable(package(),
              "Action\tVerFirst\tVerLast\tSequence\tDescription\r\n"
              "s72\ti2\ti2\tI2\tL255\r\n"
              "_ZrActionInformation\tAction\r\n"
              "Old\t100\t200\t\t\r\nMid\t200\t300\t\t\r\nNew\t300\t500\t\t\r\n"
              "Gone\t100\t500\t\t\r\n");
  ODLEXT_ZrActionInformation& table = openPackage().Get_ZrActionInformation();
  for (RWCollectable* item : table.GetEntries()) {
    auto& row = static_cast<MSIE_ZrActionInformation&>(*item);
    if (row.GetAction() == u"Gone")
      row.Delete();
  }
  const struct {
    eSchemaVersion version;
    std::set<std::u16string> actions;
  } cases[] = {{eSchema30, {}},
               {eSchema100, {u"Old"}},
               {eSchema200, {u"Old", u"Mid"}},
               {eSchema300, {u"Mid", u"New"}},
               {eSchema500, {u"New"}}};
  for (const auto& query : cases) {
    SCOPED_TRACE(static_cast<int>(query.version));
    RWBTree out;
    std::set<std::u16string> actions;
    for (RWCollectable* item : table.GetEntries(out, query.version))
      actions.insert(static_cast<const MSIE_ZrActionInformation&>(*item).GetAction().u16());
    EXPECT_EQ(actions, query.actions);
  }
}

TEST_F(ProductTablesTest, RemovingTheUserInterfaceTwiceChangesNothingMore) {
  ODLEXDatabase& db = openPackage();
  db.GetDialog().Add(MSIEDialog(u"Welcome"));
  db.GetTextStyle().Add(MSIETextStyle(u"Bold"));
  ASSERT_TRUE(db.SaveChanges());
  const std::vector<std::string> before = msiinfoPersistentTables(package());
  ASSERT_TRUE(std::find(before.begin(), before.end(), "Dialog") != before.end());

  db.RemoveGUI();
  EXPECT_TRUE(db.IsModified());
  ASSERT_TRUE(db.SaveChanges());
  const std::vector<std::string> once = msiinfoPersistentTables(package());
  std::vector<std::string> expected = before;
  std::erase_if(expected, [](const std::string& t) { return t == "Dialog" || t == "TextStyle"; });
  EXPECT_EQ(once, expected);
  EXPECT_TRUE(db.GetDialog().GetEntries().isEmpty());

  db.RemoveGUI();
  ASSERT_TRUE(db.SaveChanges());
  EXPECT_EQ(msiinfoPersistentTables(package()), once);
}

// The source of an import is listed afterwards only when the host had it open; importing from
// the package itself changes nothing.
TEST_F(ProductTablesTest, ImportingDialogsLeavesTheListAsItWas) {
  const TalString source = text(copyPackage("source.msi"));
  {
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(source);
    db.GetDialog().Add(MSIEDialog(u"Branded"));
    ASSERT_TRUE(db.SaveChanges());
    db.RemoveFromList(false);
  }
  for (const bool openBefore : {false, true}) {
    SCOPED_TRACE(openBefore);
    if (openBefore)
      ODLEXDatabase::AddDatabaseToList(source);
    ODLEXDatabase& db = openPackage();
    db.GetDialog().Add(MSIEDialog(u"Welcome"));
    db.ImportGUI(source);
    EXPECT_EQ(ODLEXDatabase::IsDatabaseFilePathLoaded(source), openBefore);
    EXPECT_NE(db.GetDialog().Lookup(TalString(u"Branded")), nullptr);
    EXPECT_EQ(db.GetDialog().Lookup(TalString(u"Welcome")), nullptr);
    db.ImportGUI(text(package()));
    EXPECT_NE(db.GetDialog().Lookup(TalString(u"Branded")), nullptr);
    ODLEXDatabase::KillDatabaseList();
  }
}

TEST_F(ProductTablesTest, QueryDialogsGiveTheirPromptAndTitle) {
  ODLEXDatabase& db = openPackage();
  for (const char16_t* dialog : {u"ZrQueryX", u"Welcome", u"MyZrQueryName"})
    db.GetDialog().Add(MSIEDialog(dialog));
  db.GetProperty().SetValue(u"ZrQueryXPrompt", u"Your name?");
  db.GetProperty().SetValue(u"ZrQueryXTitle", u"Name");
  db.GetProperty().SetValue(u"MyZrQueryNamePrompt", u"Which?");
  db.AddGUIProperty(u"Added", u"P", nullptr);

  void* handle = db.OpenGUIProperties();
  std::vector<std::array<std::u16string, 3>> triples;
  TalString key, prompt, title;
  while (db.GetNextGUIProperty(key, prompt, title, handle))
    triples.push_back({key.u16(), prompt.u16(), title.u16()});
  EXPECT_TRUE(key.isNull() && prompt.isNull() && title.isNull());
  db.CloseGUIProperties(handle);
  const std::vector<std::array<std::u16string, 3>> expected = {
      {u"Added", u"P", u""}, {u"MyName", u"Which?", u""}, {u"X", u"Your name?", u"Name"}};
  EXPECT_EQ(triples, expected);
}

// The text-file rows of a component are collected by component, and deleting the component
// deletes them; the rows of other components stay.
TEST_F(ProductTablesTest, TextFileRowsFollowTheirComponent) {
  ODLEXDatabase& db = openPackage();
  ODLEXTZrTextFile& edits = db.GetZrTextFile();
  ODLEXTZrRemoveTextFile& removals = db.GetZrRemoveTextFile();
  auto edit = [&](const char16_t* key, const char16_t* component) -> RWCollectable* {
    MSIEZrTextFile row(key);
    row.SetComponent(component);
    row.SetFileName(u"app.ini");
    return &addRow(edits, row);
  };
  auto removal = [&](const char16_t* key, const char16_t* component) -> RWCollectable* {
    MSIEZrRemoveTextFile row(key);
    row.SetComponent(component);
    return &addRow(removals, row);
  };
  RWCollectable* mainEdit = edit(u"E1", u"MainExe");
  RWCollectable* docsEdit = edit(u"E2", u"Docs");
  RWCollectable* mainRemoval = removal(u"R1", u"MainExe");
  RWCollectable* docsRemoval = removal(u"R2", u"Docs");
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent& main = components.GetComponentWithID(u"MainExe");
  const Collector before[] = {
      {[&](RWBTree& out) { edits.GetZrTextFiles(out, main); }, {mainEdit}},
      {[&](RWBTree& out) { removals.GetZrRemoveTextFiles(out, main); }, {mainRemoval}},
      {[&](RWBTree& out) {
         ODLEXTZrTextFile::GetZrTextFiles(out, edits.GetEntries(), u"app.ini", u"");
       },
       {mainEdit, docsEdit}},
  };
  expectCollectors(before);
  components.Delete(main);
  const Collector after[] = {
      {[&](RWBTree& out) { edits.GetZrTextFiles(out, main); }, {}},
      {[&](RWBTree& out) { removals.GetZrRemoveTextFiles(out, main); }, {}},
      {[&](RWBTree& out) { edits.GetZrTextFiles(out, components.GetComponentWithID(u"Docs")); },
       {docsEdit}},
      {[&](RWBTree& out) {
         removals.GetZrRemoveTextFiles(out, components.GetComponentWithID(u"Docs"));
       },
       {docsRemoval}},
  };
  expectCollectors(after);
}

TEST_F(ProductTablesTest, TextFileActionBitsAndChangesOfManyRows) {
  ODLEXDatabase& db = openPackage();
  ODLEXTZrTextFile& edits = db.GetZrTextFile();
  MSIEZrTextFile values(u"E1");
  values.SetAction(msidbZrTextFileActionReplace | msidbZrTextFileActionCreate);
  MSIEZrTextFile& row = addRow(edits, values);
  RWBTree rows;
  rows.insert(&row);
  const struct {
    void (*apply)(RWBTree&, msidbZrTextFileAction);
    msidbZrTextFileAction bits;
    long action;
  } steps[] = {
      {ODLEXTZrTextFile::SetEntriesAction, msidbZrTextFileActionUndoOnRemove, 13},
      {ODLEXTZrTextFile::ResetEntriesAction, msidbZrTextFileActionReplace, 12},
      {ODLEXTZrTextFile::ResetEntriesAction, msidbZrTextFileActionAppend, 12},
  };
  for (const auto& step : steps) {
    step.apply(rows, step.bits);
    EXPECT_EQ(row.GetAction(), step.action);
  }
  MSIEZrTextFile changed(u"E1");
  changed.SetFileName(u"new.ini");
  RWBTree newValues;
  newValues.insert(&changed);
  EXPECT_TRUE(edits.Change(rows, newValues));
  EXPECT_EQ(row.GetFileName(), u"new.ini");
  EXPECT_FALSE(edits.Change(rows, newValues));
}

TEST_F(ProductTablesTest, KeywordLookups) {
  ODLEXDatabase& db = openPackage();
  ODLEXTZrKeyword& keywords = db.GetZrKeyword();
  MSIEZrKeyword& first = addRow(keywords, MSIEZrKeyword(u"Path", 0));
  MSIEZrKeyword& second = addRow(keywords, MSIEZrKeyword(u"Path", 1));
  addRow(keywords, MSIEZrKeyword(u"Other", 0));
  EXPECT_EQ(&keywords.GetEntry(u"Path", 1), &second);
  EXPECT_EQ(thrownCode([&] { keywords.GetEntry(u"Path", 2); }), 65);
  RWBTree rows;
  EXPECT_EQ(keywords.GetWithKeyword(rows, u"Path"), 2u);
  EXPECT_EQ(itemsOf(rows), (std::set<RWCollectable*>{&first, &second}));
  keywords.Delete(u"Path");
  RWBTree left;
  EXPECT_EQ(keywords.GetWithKeyword(left, u"Path"), 0u);
}

}  // namespace
}  // namespace odlex::test
