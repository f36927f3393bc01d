// The operations of the Font, SelfReg, MoveFile, DuplicateFile, RemoveFile, IsolatedComponent
// and Binary table objects, on a copy of the idt package: files MainExe (component
// MainExe), Readme (Docs), Handbuch (GermanDocs) and HelperDll (Helpers); binaries SmallData
// and LargeData.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

MSIEDuplicateFile duplicateOf(const TalString& key, const TalString& component,
                              const TalString& file) {
  MSIEDuplicateFile row(key);
  row.SetComponent(component);
  row.SetFile(file);
  return row;
}

MSIEMoveFile moveFileOf(const TalString& key, const TalString& component) {
  MSIEMoveFile row(key);
  row.SetComponent(component);
  return row;
}

MSIERemoveFile removeFileOf(const TalString& key, const TalString& component) {
  MSIERemoveFile row(key);
  row.SetComponent(component);
  return row;
}

// Rows of each table, one of them deleted, the others of more than one owner.
class FileTablesTest : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    ODLEXDatabase& db = openPackage();
    font_ = &addRow(db.GetFont(), MSIEFont(u"Handbuch"));
    db.GetFont().Delete(addRow(db.GetFont(), MSIEFont(u"MainExe")));
    selfReg_ = &addRow(db.GetSelfReg(), MSIESelfReg(u"HelperDll"));
    ODLEXTDuplicateFile& duplicates = db.GetDuplicateFile();
    duplicates.Delete(addRow(duplicates, duplicateOf(u"Copy0", u"Docs", u"Readme")));
    inDocs_ = &addRow(duplicates, duplicateOf(u"Copy1", u"Docs", u"Readme"));
    inMain_ = &addRow(duplicates, duplicateOf(u"Copy2", u"MainExe", u"Readme"));
    ofHelper_ = &addRow(duplicates, duplicateOf(u"Copy3", u"Docs", u"HelperDll"));
    ODLEXTMoveFile& moves = db.GetMoveFile();
    move_ = &addRow(moves, moveFileOf(u"Move1", u"MainExe"));
    moves.Delete(addRow(moves, moveFileOf(u"Move2", u"MainExe")));
    addRow(moves, moveFileOf(u"Move3", u"Docs"));
    ODLEXTRemoveFile& removes = db.GetRemoveFile();
    remove_ = &addRow(removes, removeFileOf(u"Remove1", u"MainExe"));
    removes.Delete(addRow(removes, removeFileOf(u"Remove2", u"MainExe")));
    addRow(removes, removeFileOf(u"Remove3", u"Helpers"));
    ODLEXTIsolatedComponent& isolated = db.GetIsolatedComponent();
    helpersForMain_ = &addRow(isolated, MSIEIsolatedComponent(u"Helpers", u"MainExe"));
    helpersForDocs_ = &addRow(isolated, MSIEIsolatedComponent(u"Helpers", u"Docs"));
    docsForMain_ = &addRow(isolated, MSIEIsolatedComponent(u"Docs", u"MainExe"));
    isolated.Delete(addRow(isolated, MSIEIsolatedComponent(u"Docs", u"Helpers")));
    db_ = &db;
  }

  const MSIEFile& fileRow(const char16_t* key) { return *db_->GetFile().Lookup(key); }
  const MSIEComponent& component(const char16_t* key) { return *db_->GetComponent().Lookup(key); }

  ODLEXDatabase* db_ = nullptr;
  MSIEFont* font_ = nullptr;
  MSIESelfReg* selfReg_ = nullptr;
  MSIEDuplicateFile *inDocs_ = nullptr, *inMain_ = nullptr, *ofHelper_ = nullptr;
  MSIEMoveFile* move_ = nullptr;
  MSIERemoveFile* remove_ = nullptr;
  MSIEIsolatedComponent *helpersForMain_ = nullptr, *helpersForDocs_ = nullptr,
                        *docsForMain_ = nullptr;
};

TEST_F(FileTablesTest, LookupsFindTheirRowOrThrowTheTablesCode) {
  ODLEXTFont& fonts = db_->GetFont();
  ODLEXTSelfReg& selfRegs = db_->GetSelfReg();
  ODLEXTMoveFile& moves = db_->GetMoveFile();
  ODLEXTBinary& binaries = db_->GetBinary();
  ODLEXTIsolatedComponent& isolated = db_->GetIsolatedComponent();
  ODLEXTDuplicateFile& duplicates = db_->GetDuplicateFile();
  const Lookup lookups[] = {
      {[&] { return &fonts.GetFontWithFileID(u"Handbuch"); },
       [&] { fonts.GetFontWithFileID(u"MainExe"); }, 16, font_},
      {[&] { return &selfRegs.GetSelfRegWithFileID(u"HelperDll"); },
       [&] { selfRegs.GetSelfRegWithFileID(u"MainExe"); }, 17, selfReg_},
      {[&] { return &moves.GetMoveFileWithID(u"Move1"); },
       [&] { moves.GetMoveFileWithID(u"move1"); }, 35, move_},
      {[&] { return &binaries.GetBinaryWithID(u"SmallData"); },
       [&] { binaries.GetBinaryWithID(u"smalldata"); }, 29},
      {[&] { return &isolated.GetEntry(u"Helpers", u"MainExe"); },
       [&] { isolated.GetEntry(u"Docs", u"Helpers"); }, 21, helpersForMain_},
      {[&] { return &isolated.GetEntry(u"Helpers", u"MainExe"); },
       [&] { isolated.GetEntry(u"MainExe", u"Helpers"); }, 21},
      {[&] { return &duplicates.GetDuplicateFile(fileRow(u"Readme")); },
       [&] { duplicates.GetDuplicateFile(fileRow(u"MainExe")); }, 34, inDocs_},
  };
  expectLookups(lookups);
  const MSIEFile& mainExe = fileRow(u"MainExe");
  expectErrorWithEntry([&] { duplicates.GetDuplicateFile(mainExe); },
                       ODLEXDatabaseError::eDuplicateFileNotFound, ODLEXTObject::eFile, mainExe);
  EXPECT_TRUE(fonts.IsFileAFont(fileRow(u"Handbuch")));
  EXPECT_FALSE(fonts.IsFileAFont(mainExe)) << "its font row is deleted";
  EXPECT_FALSE(fonts.IsFileAFont(fileRow(u"Readme")));
}

TEST_F(FileTablesTest, CollectorsGiveTheLiveRowsOfTheirOwner) {
  ODLEXTDuplicateFile& duplicates = db_->GetDuplicateFile();
  ODLEXTIsolatedComponent& isolated = db_->GetIsolatedComponent();
  const Collector collectors[] = {
      {[&](RWBTree& tree) { duplicates.GetDuplicateFiles(tree, fileRow(u"Readme")); },
       {inDocs_, inMain_}},
      {[&](RWBTree& tree) { duplicates.GetDuplicateFiles(tree, component(u"Docs")); },
       {inDocs_, ofHelper_}},
      {[&](RWBTree& tree) { db_->GetMoveFile().GetMoveFiles(tree, component(u"MainExe")); },
       {move_}},
      {[&](RWBTree& tree) { db_->GetRemoveFile().GetRemoveFiles(tree, component(u"MainExe")); },
       {remove_}},
      {[&](RWBTree& tree) {
         isolated.GetEntriesForApplicationComponent(tree, component(u"MainExe"));
       },
       {helpersForMain_, docsForMain_}},
      {[&](RWBTree& tree) { isolated.GetEntriesForSharedComponent(tree, component(u"Helpers")); },
       {helpersForMain_, helpersForDocs_}},
      {[&](RWBTree& tree) { isolated.GetEntries(tree, component(u"Docs")); },
       {helpersForDocs_, docsForMain_}},
  };
  expectCollectors(collectors);
  EXPECT_EQ(isolated.GetEntries().entries(), 4u) << "the table's own rows, deleted included";

  RWBTree both;
  db_->GetMoveFile().GetMoveFiles(both, component(u"MainExe"));
  db_->GetRemoveFile().GetRemoveFiles(both, component(u"MainExe"));
  EXPECT_EQ(itemsOf(both), (std::set<RWCollectable*>{move_, remove_})) << "added to the tree";
}

}  // namespace
}  // namespace odlex::test
