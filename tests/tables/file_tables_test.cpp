// The operations of the Font, SelfReg, MoveFile, DuplicateFile, RemoveFile, IsolatedComponent
// and Binary table objects, on a copy of the msibuild package: files MainExe (component
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

TEST_F(FileTablesTest, KeyLookupsOrTheirCodes) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  MSIEFont& font = addRow(db.GetFont(), MSIEFont(u"Handbuch"));
  MSIESelfReg& selfReg = addRow(db.GetSelfReg(), MSIESelfReg(u"HelperDll"));
  MSIEMoveFile& move = addRow(db.GetMoveFile(), moveFileOf(u"MoveLogs", u"MainExe"));

  EXPECT_EQ(&db.GetFont().GetFontWithFileID(u"Handbuch"), &font);
  EXPECT_EQ(&db.GetSelfReg().GetSelfRegWithFileID(u"HelperDll"), &selfReg);
  EXPECT_EQ(&db.GetMoveFile().GetMoveFileWithID(u"MoveLogs"), &move);
  EXPECT_EQ(db.GetBinary().GetBinaryWithID(u"SmallData").GetName(), TalString(u"SmallData"));

  EXPECT_EQ(thrownCode([&] { db.GetFont().GetFontWithFileID(u"MainExe"); }), 16);
  EXPECT_EQ(thrownCode([&] { db.GetSelfReg().GetSelfRegWithFileID(u"MainExe"); }), 17);
  EXPECT_EQ(thrownCode([&] { db.GetMoveFile().GetMoveFileWithID(u"movelogs"); }), 35);
  EXPECT_EQ(thrownCode([&] { db.GetBinary().GetBinaryWithID(u"smalldata"); }), 29);

  const MSIEFile& handbuch = *db.GetFile().Lookup(u"Handbuch");
  EXPECT_TRUE(db.GetFont().IsFileAFont(handbuch));
  EXPECT_FALSE(db.GetFont().IsFileAFont(*db.GetFile().Lookup(u"Readme")));
  db.GetFont().Delete(font);
  EXPECT_FALSE(db.GetFont().IsFileAFont(handbuch));
  EXPECT_EQ(thrownCode([&] { db.GetFont().GetFontWithFileID(u"Handbuch"); }), 16);
}

TEST_F(FileTablesTest, DuplicatesOfAFileOrOfAComponent) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  ODLEXTDuplicateFile& duplicates = db.GetDuplicateFile();
  const MSIEFile& readme = *db.GetFile().Lookup(u"Readme");
  const MSIEFile& mainExe = *db.GetFile().Lookup(u"MainExe");
  duplicates.Delete(addRow(duplicates, duplicateOf(u"Copy0", u"Docs", u"Readme")));
  MSIEDuplicateFile& inDocs = addRow(duplicates, duplicateOf(u"Copy1", u"Docs", u"Readme"));
  MSIEDuplicateFile& inMain = addRow(duplicates, duplicateOf(u"Copy2", u"MainExe", u"Readme"));
  MSIEDuplicateFile& ofHelper = addRow(duplicates, duplicateOf(u"Copy3", u"Docs", u"HelperDll"));

  EXPECT_EQ(&duplicates.GetDuplicateFile(readme), &inDocs) << "the first live one in key order";
  expectErrorWithEntry([&] { duplicates.GetDuplicateFile(mainExe); },
                       ODLEXDatabaseError::eDuplicateFileNotFound, ODLEXTObject::eFile, mainExe);

  RWBTree ofReadme;
  duplicates.GetDuplicateFiles(ofReadme, readme);
  EXPECT_EQ(itemsOf(ofReadme), (std::set<RWCollectable*>{&inDocs, &inMain}));
  RWBTree ofDocs;
  duplicates.GetDuplicateFiles(ofDocs, *db.GetComponent().Lookup(u"Docs"));
  EXPECT_EQ(itemsOf(ofDocs), (std::set<RWCollectable*>{&inDocs, &ofHelper}));
}

TEST_F(FileTablesTest, MovedAndRemovedFilesOfAComponent) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  const MSIEComponent& mainExe = *db.GetComponent().Lookup(u"MainExe");
  ODLEXTMoveFile& moves = db.GetMoveFile();
  MSIEMoveFile& move = addRow(moves, moveFileOf(u"Move1", u"MainExe"));
  moves.Delete(addRow(moves, moveFileOf(u"Move2", u"MainExe")));
  addRow(moves, moveFileOf(u"Move3", u"Docs"));
  ODLEXTRemoveFile& removes = db.GetRemoveFile();
  MSIERemoveFile& remove = addRow(removes, removeFileOf(u"Remove1", u"MainExe"));
  removes.Delete(addRow(removes, removeFileOf(u"Remove2", u"MainExe")));
  addRow(removes, removeFileOf(u"Remove3", u"Helpers"));

  RWBTree found;
  moves.GetMoveFiles(found, mainExe);
  EXPECT_EQ(itemsOf(found), (std::set<RWCollectable*>{&move}));
  removes.GetRemoveFiles(found, mainExe);
  EXPECT_EQ(itemsOf(found), (std::set<RWCollectable*>{&move, &remove})) << "added to the tree";
}

TEST_F(FileTablesTest, IsolatedComponentsBySharedOrApplicationComponent) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  ODLEXTIsolatedComponent& isolated = db.GetIsolatedComponent();
  const MSIEComponent& helpers = *db.GetComponent().Lookup(u"Helpers");
  const MSIEComponent& docs = *db.GetComponent().Lookup(u"Docs");
  const MSIEComponent& mainExe = *db.GetComponent().Lookup(u"MainExe");
  MSIEIsolatedComponent& helpersForMain =
      addRow(isolated, MSIEIsolatedComponent(u"Helpers", u"MainExe"));
  MSIEIsolatedComponent& helpersForDocs =
      addRow(isolated, MSIEIsolatedComponent(u"Helpers", u"Docs"));
  MSIEIsolatedComponent& docsForMain = addRow(isolated, MSIEIsolatedComponent(u"Docs", u"MainExe"));
  isolated.Delete(addRow(isolated, MSIEIsolatedComponent(u"Docs", u"Helpers")));

  RWBTree forMain;
  isolated.GetEntriesForApplicationComponent(forMain, mainExe);
  EXPECT_EQ(itemsOf(forMain), (std::set<RWCollectable*>{&helpersForMain, &docsForMain}));
  RWBTree ofHelpers;
  isolated.GetEntriesForSharedComponent(ofHelpers, helpers);
  EXPECT_EQ(itemsOf(ofHelpers), (std::set<RWCollectable*>{&helpersForMain, &helpersForDocs}));
  RWBTree withDocs;
  isolated.GetEntries(withDocs, docs);
  EXPECT_EQ(itemsOf(withDocs), (std::set<RWCollectable*>{&helpersForDocs, &docsForMain}));
  EXPECT_EQ(isolated.GetEntries().entries(), 4u) << "the table's own rows, deleted included";

  EXPECT_EQ(&isolated.GetEntry(u"Helpers", u"MainExe"), &helpersForMain);
  EXPECT_EQ(thrownCode([&] { isolated.GetEntry(u"MainExe", u"Helpers"); }), 21);
  EXPECT_EQ(thrownCode([&] { isolated.GetEntry(u"Docs", u"Helpers"); }), 21);
}

}  // namespace
}  // namespace odlex::test
