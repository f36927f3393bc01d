// The table-object base and the shared row-table pattern: records of errors, attributes, the
// load/unload cycle, modification rules, temp entries and the common edits.

#include <gtest/gtest.h>

#include <algorithm>

#include <odlex/tables/ODLEXTables.h>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

TEST(ErrorRecords, CodesRowsAndStatuses) {
  const ODLEXDatabaseError none;
  EXPECT_TRUE(none == ODLEXDatabaseError::eNoPendingError);

  MSIEFile file(u"F1");
  ODLEXDatabaseErrorWithEntry withEntry(ODLEXTObject::eBindImage, file,
                                        ODLEXDatabaseError::eFileNotFound);
  withEntry = ODLEXDatabaseError::eBindImageNotFound;
  EXPECT_TRUE(withEntry == ODLEXDatabaseError::eBindImageNotFound);
  EXPECT_EQ(&static_cast<const MSIEntry&>(withEntry), &file) << "the row is kept";
  EXPECT_EQ(withEntry.GetType(), ODLEXTObject::eBindImage);

  try {
    throw ODLEXDatabaseErrorWithErrorCode(ODLEXDatabaseError::eTransformServiceFailed, 1624);
  } catch (const ODLEXDatabaseError& error) {
    EXPECT_TRUE(error == ODLEXDatabaseError::eTransformServiceFailed);
    EXPECT_EQ(static_cast<unsigned>(dynamic_cast<const ODLEXDatabaseErrorWithErrorCode&>(error)),
              1624u);
  }
}

TEST(TableAttributes, SettersTouchOnlyTheirBit) {
  ODLEXTableAttributes attributes(6ul);
  attributes.SetReadOnly(true);
  EXPECT_EQ(attributes.GetValue(), 7u);
  attributes.SetNotInMergeModule(false);
  EXPECT_EQ(attributes.GetValue(), 5u);
  EXPECT_TRUE(attributes.IsOnlyInPcp());
  EXPECT_TRUE(attributes == ODLEXTableAttributes(5ul));
  EXPECT_TRUE(attributes != ODLEXTableAttributes());
  // One 32-bit word: a wider value keeps its low bits only.
  EXPECT_EQ(ODLEXTableAttributes(0x100000002ul).GetValue(), 2u);
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
  MSIEError row(short{9});
  row.SetMessage(u"nine");
  db.GetError().Add(row);
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
}

// Persisting a table that merge modules do not hold writes nothing in a merge module, and
// writes as usual in a package.
TEST_F(TableObjectTest, PersistInAMergeModuleSkipsTablesItDoesNotHold) {
  for (const std::string name : {"gated.msi", "gated.msm"}) {
    const std::filesystem::path path = copyPackage(name);
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(path));
    MSIEFeature feature(u"Gated");
    feature.SetLevel(1);
    db.GetFeature().Add(feature);
    db.GetFeature().Persist();
    ASSERT_EQ(db.GetDatabase().commit(), 0u);
    const std::vector<std::string> rows = msiinfoRows(path, "Feature");
    const bool written = std::any_of(rows.begin(), rows.end(), [](const std::string& row) {
      return row.starts_with("Gated\t");
    });
    EXPECT_EQ(written, !db.IsMergeModule()) << name;
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

}  // namespace
}  // namespace odlex::test
