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

class FileTablesTest : public DatabaseTest {};

// Rows of each table, one of them deleted, the others of more than one owner.
TEST_F(FileTablesTest, RowsByKeyAndByOwner) {
  ODLEXDatabase& db = openPackage();
  ODLEXTFont& fonts = db.GetFont();
  ODLEXTSelfReg& selfRegs = db.GetSelfReg();
  ODLEXTDuplicateFile& duplicates = db.GetDuplicateFile();
  ODLEXTMoveFile& moves = db.GetMoveFile();
  ODLEXTRemoveFile& removes = db.GetRemoveFile();
  ODLEXTIsolatedComponent& isolated = db.GetIsolatedComponent();
  MSIEFont& font = addRow(fonts, MSIEFont(u"Handbuch"));
  fonts.Delete(addRow(fonts, MSIEFont(u"MainExe")));
  MSIESelfReg& selfReg = addRow(selfRegs, MSIESelfReg(u"HelperDll"));
  duplicates.Delete(addRow(duplicates, duplicateOf(u"Copy0", u"Docs", u"Readme")));
  MSIEDuplicateFile& inDocs = addRow(duplicates, duplicateOf(u"Copy1", u"Docs", u"Readme"));
  MSIEDuplicateFile& inMain = addRow(duplicates, duplicateOf(u"Copy2", u"MainExe", u"Readme"));
  MSIEDuplicateFile& ofHelper = addRow(duplicates, duplicateOf(u"Copy3", u"Docs", u"HelperDll"));
  MSIEMoveFile& move = addRow(moves, moveFileOf(u"Move1", u"MainExe"));
  moves.Delete(addRow(moves, moveFileOf(u"Move2", u"MainExe")));
  addRow(moves, moveFileOf(u"Move3", u"Docs"));
  MSIERemoveFile& remove = addRow(removes, removeFileOf(u"Remove1", u"MainExe"));
  removes.Delete(addRow(removes, removeFileOf(u"Remove2", u"MainExe")));
  addRow(removes, removeFileOf(u"Remove3", u"Helpers"));
  MSIEIsolatedComponent& helpersForMain =
      addRow(isolated, MSIEIsolatedComponent(u"Helpers", u"MainExe"));
  MSIEIsolatedComponent& helpersForDocs =
      addRow(isolated, MSIEIsolatedComponent(u"Helpers", u"Docs"));
  MSIEIsolatedComponent& docsForMain = addRow(isolated, MSIEIsolatedComponent(u"Docs", u"MainExe"));
  isolated.Delete(addRow(isolated, MSIEIsolatedComponent(u"Docs", u"Helpers")));
  const MSIEFile& readme = *db.GetFile().Lookup(u"Readme");
  const MSIEFile& mainExeFile = *db.GetFile().Lookup(u"MainExe");
  const MSIEComponent& mainExe = *db.GetComponent().Lookup(u"MainExe");
  const MSIEComponent& docs = *db.GetComponent().Lookup(u"Docs");

  const Lookup lookups[] = {
      {[&] { return &fonts.GetFontWithFileID(u"Handbuch"); },
       [&] { fonts.GetFontWithFileID(u"MainExe"); }, 16, &font},
      {[&] { return &selfRegs.GetSelfRegWithFileID(u"HelperDll"); },
       [&] { selfRegs.GetSelfRegWithFileID(u"MainExe"); }, 17, &selfReg},
      {[&] { return &moves.GetMoveFileWithID(u"Move1"); },
       [&] { moves.GetMoveFileWithID(u"move1"); }, 35, &move},
      {[&] { return &db.GetBinary().GetBinaryWithID(u"SmallData"); },
       [&] { db.GetBinary().GetBinaryWithID(u"smalldata"); }, 29},
      {[&] { return &isolated.GetEntry(u"Helpers", u"MainExe"); },
       [&] { isolated.GetEntry(u"Docs", u"Helpers"); }, 21, &helpersForMain},
      {[&] { return &duplicates.GetDuplicateFile(readme); },
       [&] { duplicates.GetDuplicateFile(mainExeFile); }, 34, &inDocs},
  };
  expectLookups(lookups);
  expectErrorWithEntry([&] { duplicates.GetDuplicateFile(mainExeFile); },
                       ODLEXDatabaseError::eDuplicateFileNotFound, ODLEXTObject::eFile,
                       mainExeFile);
  EXPECT_TRUE(fonts.IsFileAFont(*db.GetFile().Lookup(u"Handbuch")));
  EXPECT_FALSE(fonts.IsFileAFont(mainExeFile)) << "its font row is deleted";
  EXPECT_FALSE(fonts.IsFileAFont(readme));

  const Collector collectors[] = {
      {[&](RWBTree& tree) { duplicates.GetDuplicateFiles(tree, readme); }, {&inDocs, &inMain}},
      {[&](RWBTree& tree) { duplicates.GetDuplicateFiles(tree, docs); }, {&inDocs, &ofHelper}},
      {[&](RWBTree& tree) { moves.GetMoveFiles(tree, mainExe); }, {&move}},
      {[&](RWBTree& tree) { removes.GetRemoveFiles(tree, mainExe); }, {&remove}},
      {[&](RWBTree& tree) { isolated.GetEntriesForApplicationComponent(tree, mainExe); },
       {&helpersForMain, &docsForMain}},
      {[&](RWBTree& tree) {
         isolated.GetEntriesForSharedComponent(tree, *db.GetComponent().Lookup(u"Helpers"));
       },
       {&helpersForMain, &helpersForDocs}},
      {[&](RWBTree& tree) { isolated.GetEntries(tree, docs); }, {&helpersForDocs, &docsForMain}},
  };
  expectCollectors(collectors);
  EXPECT_EQ(isolated.GetEntries().entries(), 4u) << "the table's own rows, deleted included";
  RWBTree both;
  moves.GetMoveFiles(both, mainExe);
  removes.GetRemoveFiles(both, mainExe);
  EXPECT_EQ(itemsOf(both), (std::set<RWCollectable*>{&move, &remove})) << "added to the tree";
}

}  // namespace
}  // namespace odlex::test
