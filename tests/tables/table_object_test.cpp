// The table-object base and the shared row-table pattern: the attribute word, the load/unload
// cycle, modification rules, temp entries and the common edits; and rows handed out by table
// objects, which stay valid, or leave visibly, across loads, reloads, rollbacks, saves, key
// changes and copies of the table object.

#include <algorithm>
#include <map>
#include <memory>
#include <tuple>

#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

// Each setter of the attribute word touches only its own bit.
TEST(TableAttributes, SettersTouchOnlyTheirBit) {
  ODLEXTableAttributes attributes(6ul);
  attributes.SetReadOnly(true);
  EXPECT_EQ(attributes.GetValue(), 7u);
  attributes.SetNotInMergeModule(false);
  EXPECT_EQ(attributes.GetValue(), 5u);
  EXPECT_TRUE(attributes.IsOnlyInPcp());
}

MSIEError errorRow(short number, const char16_t* message) {
  MSIEError row(number);
  row.SetMessage(message);
  return row;
}

class TableObjectTest : public DatabaseTest {};

TEST_F(TableObjectTest, LoadOnceUnloadKeepsTheModifiedFlag) {
  ODLEXDatabase& db = openPackage();
  ODLEXTError errors;
  errors.Load(db);
  ASSERT_TRUE(errors.IsLoaded());
  errors.Add(MSIEError(25000));
  const std::size_t rows = errors.GetEntries().entries();
  errors.Load(db);
  EXPECT_EQ(errors.GetEntries().entries(), rows) << "a second Load does not re-read the rows";
  EXPECT_TRUE(errors.IsModified());
  EXPECT_TRUE(db.IsModified());

  errors.Unload();
  EXPECT_FALSE(errors.IsLoaded());
  EXPECT_TRUE(errors.IsModified());
  errors.Load(db);
  EXPECT_EQ(errors.GetEntries().entries(), rows - 1) << "reloaded from the unsaved database";

  ODLEXTObject bare;
  bare.Load(db);
  EXPECT_FALSE(bare.IsLoaded()) << "nothing to load without a lower-layer table";
}

// A table whose file declares another key than the catalog loads with the repeated rows left
// out, and a write to a closed database is refused; each reason stays in the lower layer's error
// list for the host.
TEST_F(TableObjectTest, LoadAndPersistFailuresLeaveTheLowerLayerErrorForTheHost) {
  const std::filesystem::path idt = file("Error.idt");
  writeFileBytes(idt, "Message\tError\ns255\ti2\nError\tMessage\none\t1\ntwo\t1\n");
  ODLEXDatabase& db = openPackage();
  ASSERT_EQ(db.GetDatabase().Import(text(idt)), 0u);
  EXPECT_EQ(db.GetError().GetEntries().entries(), 1u);
  EXPECT_EQ(thrownCode([&] { db.GetTalError(); }), -1) << "no pending error left";

  db.DumpAllErrors();
  db.GetError().Add(errorRow(9, u"nine"));
  db.GetDatabase().close(false);  // the lower database closed under the table object
  db.GetError().Persist();
  EXPECT_EQ(thrownCode([&] { db.GetTalError(); }), -1) << "the refused write left no error";
}

TEST_F(TableObjectTest, ReadOnlyAndMergeModuleTablesIgnoreEdits) {
  ODLEXDatabase& db = openPackage();
  ODLEXT_Columns& columns = db.Get_Columns();
  columns.Modify(true);
  EXPECT_FALSE(columns.IsModified());
  EXPECT_FALSE(db.IsModified());

  // The same package named as a merge module: its not-in-merge-module tables ignore edits,
  // the others do not.
  const std::filesystem::path module = copyPackage("module.msm");
  ODLEXDatabase& moduleDb = ODLEXDatabase::AddDatabaseToList(text(module));
  ASSERT_TRUE(moduleDb.IsMergeModule());
  moduleDb.GetFeature().Modify(true);
  EXPECT_FALSE(moduleDb.GetFeature().IsModified());
  EXPECT_FALSE(moduleDb.IsModified());
  moduleDb.GetError().Modify(false);
  EXPECT_TRUE(moduleDb.GetError().IsModified()) << "Modify(false) still marks the table";

  db.GetFeature().Modify(true);
  EXPECT_TRUE(db.GetFeature().IsModified()) << "the flag means nothing outside merge modules";

  // Persisting such a table writes nothing in a merge module, and writes as usual in a package.
  for (const auto& [each, path] : {std::pair{&db, package()}, {&moduleDb, module}}) {
    MSIEFeature feature(u"Gated");
    feature.SetLevel(1);
    each->GetFeature().Add(feature);
    each->GetFeature().Persist();
    ASSERT_EQ(each->GetDatabase().commit(), 0u);
    const std::vector<std::string> rows = msiinfoRows(path, "Feature");
    EXPECT_EQ(
        std::ranges::count_if(rows, [](const auto& row) { return row.starts_with("Gated\t"); }),
        each == &db ? 1 : 0)
        << path;
  }
}

TEST_F(TableObjectTest, TempEntriesFilteringAndModifyingRows) {
  ODLEXDatabase& db = openPackage();
  ODLEXTProperty& properties = db.GetProperty();
  properties.SetTempEntries(static_cast<MSIEntry*>(nullptr));
  EXPECT_TRUE(properties.GetTempEntries().isEmpty());

  RWBTree all = properties.GetEntries();
  ASSERT_GE(all.entries(), 2u);
  for (RWCollectable* row : all)
    static_cast<MSIEntry*>(row)->SetDeleted(true);
  RWBTree filtered = all;
  properties.FilterOutDeletedEntries(filtered, false);
  EXPECT_TRUE(filtered.isEmpty());
  EXPECT_EQ(properties.GetEntries().entries(), all.entries()) << "rows stay in the table";

  MSIEntry* first = static_cast<MSIEntry*>(*all.begin());
  first->SetDeleted(false);
  properties.ModifyEntries();
  for (RWCollectable* row : all) {
    const auto* entry = static_cast<MSIEntry*>(row);
    EXPECT_EQ(entry->IsModified(), entry == first) << "deleted rows are not marked modified";
  }

  // Rows counted by their component: two of three in the components asked about.
  auto& folders = static_cast<ODLEXTCreateFolder&>(db.GetTableObject(ODLEXTObject::eCreateFolder));
  for (const auto& [directory, component] : {std::pair{u"D1", u"A"}, {u"D2", u"A"}, {u"D3", u"B"}})
    folders.Add(MSIECreateFolder(directory, component));
  MSIEComponent a(u"A");
  RWBTree components;
  components.insert(&a);
  EXPECT_EQ(folders.GetCount(components), 2);
  EXPECT_TRUE(properties.IsCharOK(u'x'));
}

TEST_F(TableObjectTest, CommonEditsFollowTheKeyRules) {
  ODLEXDatabase& db = openPackage();
  ODLEXTActionText& texts = db.GetActionText();
  MSIEActionText values(u"InstallFiles");
  values.SetDescription(u"Copying files");
  texts.Add(values);
  ASSERT_EQ(texts.GetTempEntries().entries(), 1u);
  auto* row = static_cast<MSIEActionText*>(*texts.GetTempEntries().begin());
  EXPECT_EQ(row->GetDescription(), u"Copying files");

  // Adding the key again is refused without an error.
  texts.Add(values);
  EXPECT_TRUE(texts.GetTempEntries().isEmpty());

  // Equal values: nothing changes.
  EXPECT_FALSE(texts.Change(*row, values));
  EXPECT_EQ(*texts.GetTempEntries().begin(), row);

  values.SetTemplate(u"File: [1]");
  EXPECT_TRUE(texts.Change(*row, values));
  EXPECT_EQ(row->GetTemplate(), u"File: [1]");

  // A change of case in the key is a key change: a new row replaces the old.
  MSIEActionText renamed(*row);
  renamed.SetAction(u"installfiles");
  EXPECT_TRUE(texts.Change(*row, renamed));
  EXPECT_TRUE(row->IsDeleted());
  auto* moved = static_cast<MSIEActionText*>(*texts.GetTempEntries().begin());
  EXPECT_EQ(moved->GetAction(), u"installfiles");
  EXPECT_EQ(moved->GetTemplate(), u"File: [1]");

  // Deleted, then added again: the row is live.
  texts.Delete(*moved);
  EXPECT_TRUE(moved->IsDeleted());
  texts.Add(MSIEActionText(u"installfiles"));
  auto* again = static_cast<MSIEActionText*>(*texts.GetTempEntries().begin());
  EXPECT_FALSE(again->IsDeleted());
  EXPECT_TRUE(again->IsModified());

  // A lookup that fails throws the table's code and leaves the temp entries alone.
  ODLEXTIcon& icons = db.GetIcon();
  icons.SetTempEntries(static_cast<MSIEntry*>(nullptr));
  EXPECT_EQ(thrownCode([&] { icons.GetIconWithIconID(u"missing"); }),
            ODLEXDatabaseError::eIconNotFound);
  EXPECT_TRUE(icons.GetTempEntries().isEmpty());
}

TEST_F(TableObjectTest, PropertiesByNameAndTheirTranslation) {
  ODLEXDatabase& db = openPackage();
  ODLEXTProperty& properties = db.GetProperty();
  EXPECT_EQ(properties.GetValue(u"Manufacturer"), u"Odlex Fixtures");
  EXPECT_EQ(properties.GetValue(u"NotSet"), u"");
  EXPECT_EQ(thrownCode([&] { properties.Find(u"NotSet"); }), ODLEXDatabaseError::ePropertyNotFound);

  properties.SetValue(u"VENDOR", u"Acme");
  EXPECT_EQ(properties.TranslateVars(u"[VENDOR]"), u"Acme");
  EXPECT_EQ(properties.UnFormatVars(u"by Acme"), u"by [VENDOR]");

  properties.AddValue(u"SecureCustomProperties", u"A");
  properties.AddValue(u"SecureCustomProperties", u"B");
  properties.AddValue(u"SecureCustomProperties", u"A");
  EXPECT_EQ(properties.GetValue(u"SecureCustomProperties"), u"A;B");

  properties.SetValue(u"VENDOR", u"");
  EXPECT_EQ(properties.GetValue(u"VENDOR"), u"");
  EXPECT_EQ(properties.Expand(u"[VENDOR]"), u"[VENDOR]");
  EXPECT_TRUE(properties.SARExcludeEntry(&properties.Find(u"ProductCode")));
  EXPECT_FALSE(properties.SARExcludeEntry(&properties.Find(u"Manufacturer")));
}

// The Error rows of the package at `path` as the file holds them.
std::map<int, std::string> savedErrors(const std::filesystem::path& path) {
  MSIDatabase db(text(path), MSIDatabase::ePersistReadOnly);
  MSITError table;
  table.SetDatabase(db);
  EXPECT_TRUE(table.Populate());
  std::map<int, std::string> rows;
  for (RWCollectable* item : table.GetTable()) {
    const auto& row = static_cast<const MSIEError&>(*item);
    rows[row.GetError()] = row.GetMessage().ToUtf8();
  }
  return rows;
}

class TableObjectLifetimeTest : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    db_ = &openPackage();
  }

  // Saves Error rows 1 and 2 and opens the package again.
  void saveTwoErrors() {
    db_->GetError().Add(errorRow(1, u"one"));
    db_->GetError().Add(errorRow(2, u"two"));
    ASSERT_TRUE(db_->SaveChanges());
    db_->RemoveFromList(false);
    db_ = &openPackage();
  }

  ODLEXDatabase* db_ = nullptr;
};

TEST_F(TableObjectLifetimeTest, TempEntriesLeaveWithTheirRows) {
  using DropRows = std::function<void(ODLEXDatabase&, MSIEError&)>;
  // The last way keeps the added row, so it comes last.
  const std::vector<std::tuple<const char*, DropRows, std::size_t>> ways = {
      {"unload", [](ODLEXDatabase& db, MSIEError&) { db.GetError().Unload(); }, 0},
      {"reload", [](ODLEXDatabase& db, MSIEError&) { db.Reload(); }, 0},
      {"rollback",
       [](ODLEXDatabase& db, MSIEError&) {
         db.Rollback();
         EXPECT_FALSE(db.IsModified());
       },
       0},
      {"save a deleted row",
       [](ODLEXDatabase& db, MSIEError& row) {
         db.GetError().Delete(row);
         db.SaveChanges();
       },
       0},
      {"save another row deleted",
       [](ODLEXDatabase& db, MSIEError& row) {
         ODLEXTError& errors = db.GetError();
         MSIEError& other = addRow(errors, errorRow(8, u"other"));
         errors.SetTempEntries(&row);
         errors.Delete(other);
         db.SaveChanges();
       },
       1},
  };
  for (const auto& [name, dropRows, kept] : ways) {
    SCOPED_TRACE(name);
    MSIEError& added = addRow(db_->GetError(), errorRow(9, u"added"));
    dropRows(*db_, added);
    EXPECT_EQ(db_->GetError().GetTempEntries().entries(), kept);
  }
}

TEST_F(TableObjectLifetimeTest, RowsEditedBeforeTheTableIsLoadedAreKept) {
  saveTwoErrors();
  auto& bound = static_cast<ODLEXTError&>(db_->GetTableObject(ODLEXTObject::eError, false));
  ASSERT_FALSE(bound.IsLoaded());
  MSIEError& added = addRow(bound, errorRow(3, u"three"));
  MSIEError& replacing = addRow(bound, errorRow(2, u"second two"));
  db_->GetError();  // loads the table
  EXPECT_EQ(itemsOf(bound.GetEntries()).count(&added), 1u);
  EXPECT_EQ(replacing.GetMessage(), u"second two");
  ASSERT_TRUE(db_->SaveChanges());
  EXPECT_EQ(savedErrors(package()),
            (std::map<int, std::string>{{1, "one"}, {2, "second two"}, {3, "three"}}));
}

TEST_F(TableObjectLifetimeTest, KeyChangesToAKeyAnotherRowHoldsChangeNothing) {
  saveTwoErrors();
  ODLEXTError& errors = db_->GetError();
  ASSERT_TRUE(errors.Lookup(short{1}));
  MSIEError& one = *errors.Lookup(short{1});
  EXPECT_FALSE(errors.Change(one, errorRow(2, u"clash")));
  EXPECT_EQ(errors.GetTempEntries().entries(), 0u);
  EXPECT_FALSE(one.IsDeleted());
  EXPECT_FALSE(one.SetError(2));
  EXPECT_EQ(one.GetError(), 1);

  // Renaming every row while walking the table meets each row once, under its first key.
  std::vector<int> met;
  for (RWCollectable* item : errors.GetEntries()) {
    auto& row = static_cast<MSIEError&>(*item);
    met.push_back(row.GetError());
    EXPECT_TRUE(row.SetError(static_cast<short>(row.GetError() + 10)));
  }
  EXPECT_EQ(met, (std::vector<int>{1, 2}));
  ASSERT_TRUE(db_->SaveChanges());
  EXPECT_EQ(savedErrors(package()), (std::map<int, std::string>{{11, "one"}, {12, "two"}}));
}

TEST_F(TableObjectLifetimeTest, ACopyMadeBeforeAReloadEditsTheReloadedTable) {
  std::unique_ptr<ODLEXTError> copy(static_cast<ODLEXTError*>(db_->GetError().copy()));
  db_->Reload();
  copy->Add(errorRow(7, u"from the copy"));
  EXPECT_TRUE(db_->IsModified());
  ASSERT_TRUE(db_->SaveChanges());
  EXPECT_EQ(savedErrors(package()), (std::map<int, std::string>{{7, "from the copy"}}));
}

}  // namespace
}  // namespace odlex::test
