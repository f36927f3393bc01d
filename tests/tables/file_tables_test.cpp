// The operations of the File, Font, SelfReg, MoveFile, DuplicateFile, RemoveFile,
// IsolatedComponent and Binary table objects, on a copy of the idt package: files MainExe
// (component MainExe, version 2.0.1.0, in BinDir), Readme (Docs, in DocDir), Handbuch
// (GermanDocs, in LocaleDir) and HelperDll (Helpers, 1.0.0.0, in BinDir); binaries SmallData
// and LargeData.

#include <tuple>

#include "common/FontFile.h"
#include "common/PeModule.h"
#include "common/VersionResource.h"
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

// Rows of each table, one of them deleted, the others of more than one owner. The found-or-throw
// lookups that are one line over the shared template are checked on a few tables (Font, a key of
// two columns, a reference followed); collectors that add to what the tree held, on MoveFile and
// RemoveFile.
TEST_F(FileTablesTest, RowsByKeyAndByOwner) {
  ODLEXDatabase& db = openPackage();
  ODLEXTFont& fonts = db.GetFont();
  ODLEXTDuplicateFile& duplicates = db.GetDuplicateFile();
  ODLEXTMoveFile& moves = db.GetMoveFile();
  ODLEXTRemoveFile& removes = db.GetRemoveFile();
  ODLEXTIsolatedComponent& isolated = db.GetIsolatedComponent();
  MSIEFont& font = addRow(fonts, MSIEFont(u"Handbuch"));
  fonts.Delete(addRow(fonts, MSIEFont(u"MainExe")));
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
      {[&] { return &isolated.GetEntry(u"Helpers", u"MainExe"); },
       [&] { isolated.GetEntry(u"Docs", u"Helpers"); }, 21, &helpersForMain},
      {[&] { return &duplicates.GetDuplicateFile(readme); },
       [&] { duplicates.GetDuplicateFile(mainExeFile); }, 34, &inDocs, &mainExeFile,
       ODLEXTObject::eFile},
  };
  expectLookups(lookups);
  EXPECT_TRUE(fonts.IsFileAFont(*db.GetFile().Lookup(u"Handbuch")));
  EXPECT_FALSE(fonts.IsFileAFont(mainExeFile)) << "its font row is deleted";
  EXPECT_FALSE(fonts.IsFileAFont(readme));

  const Collector collectors[] = {
      {[&](RWBTree& tree) { duplicates.GetDuplicateFiles(tree, readme); }, {&inDocs, &inMain}},
      {[&](RWBTree& tree) { duplicates.GetDuplicateFiles(tree, docs); }, {&inDocs, &ofHelper}},
      {[&](RWBTree& tree) { isolated.GetEntriesForApplicationComponent(tree, mainExe); },
       {&helpersForMain, &docsForMain}},
      {[&](RWBTree& tree) {
         isolated.GetEntriesForSharedComponent(tree, *db.GetComponent().Lookup(u"Helpers"));
       },
       {&helpersForMain, &helpersForDocs}},
      {[&](RWBTree& tree) { isolated.GetEntries(tree, docs); }, {&helpersForDocs, &docsForMain}},
  };
  expectCollectors(collectors);
  RWBTree both;
  moves.GetMoveFiles(both, mainExe);
  removes.GetRemoveFiles(both, mainExe);
  EXPECT_EQ(itemsOf(both), (std::set<RWCollectable*>{&move, &remove})) << "added to the tree";
}

TEST_F(FileTablesTest, FileNames) {
  const std::tuple<const char16_t*, const char*, const char*> names[] = {
      {u"IDTAPP~1.EXE|idt app.exe", "IDTAPP~1.EXE", "idt app.exe"},
      {u"readme.txt", "readme.txt", "readme.txt"},
  };
  for (const auto& [name, shortName, longName] : names) {
    EXPECT_EQ(ODLEXTFile::GetShortFileName(name).ToUtf8(), shortName);
    EXPECT_EQ(ODLEXTFile::GetLongFileName(name).ToUtf8(), longName);
  }
  const std::tuple<const char16_t*, const char16_t*, const char*> combined[] = {
      {u"README.TXT", u"readme.txt", "README.TXT|readme.txt"},
      {u"readme.txt", u"readme.txt", "readme.txt"},
      {u"README.TXT", u"", "README.TXT"},
  };
  for (const auto& [shortName, longName, name] : combined)
    EXPECT_EQ(ODLEXTFile::GetCombinedFile(shortName, longName).ToUtf8(), name);
  EXPECT_EQ(ODLEXTFile::GetFilenameFromPath(u"C:\\in\\a.txt").ToUtf8(), "a.txt");
  EXPECT_EQ(ODLEXTFile::GetFilenameFromPath(u"in/b.txt").ToUtf8(), "b.txt");
  EXPECT_EQ(ODLEXTFile::GetFilenameFromPath(u"c.txt").ToUtf8(), "c.txt");
}

// The version shown follows companions; a Version that is no file's key and no version, and a
// circle of companions, are errors naming the file asked about.
TEST_F(FileTablesTest, VersionsThroughCompanions) {
  ODLEXTFile& files = openPackage().GetFile();
  MSIEFile& main = files.GetFileWithID(u"MainExe");
  MSIEFile& readme = files.GetFileWithID(u"Readme");
  MSIEFile& handbuch = files.GetFileWithID(u"Handbuch");
  MSIEFile& helper = files.GetFileWithID(u"HelperDll");
  EXPECT_FALSE(files.SetCompanionFile(main, main));
  EXPECT_FALSE(files.SetCompanionFile(main, MSIEFile(u"NotInTheTable")));
  ASSERT_TRUE(files.SetCompanionFile(readme, main));
  ASSERT_TRUE(files.SetCompanionFile(handbuch, readme));
  EXPECT_TRUE(readme.IsModified());
  const std::pair<MSIEFile*, const char*> shown[] = {
      {&main, "2.0.1.0"}, {&readme, "2.0.1.0"}, {&handbuch, "2.0.1.0"}, {&helper, "1.0.0.0"}};
  for (const auto& [file, version] : shown)
    EXPECT_EQ(files.GetVersionToDisplay(*file).ToUtf8(), version) << file->GetFileID().ToUtf8();
  helper.SetVersion(u"");
  EXPECT_EQ(files.GetVersionToDisplay(helper).ToUtf8(), "");

  // Handbuch -> Readme -> MainExe -> a name that is no file, then back to Handbuch.
  for (const char16_t* mainVersion : {u"NoSuchFile", u"Handbuch"}) {
    main.SetVersion(mainVersion);
    expectErrorWithEntry([&] { files.GetVersionToDisplay(handbuch); },
                         ODLEXDatabaseError::eFileVersionFailed, ODLEXTObject::eFile, handbuch);
  }
}

// A module's version resource becomes the row's Version and Language; a file without one
// changes nothing.
TEST_F(FileTablesTest, VersionFromAModule) {
  ODLEXTFile& files = openPackage().GetFile();
  MSIEFile& helper = files.GetFileWithID(u"HelperDll");
  const struct {
    std::string bytes;
    bool set;
    const char* version;
    const char* language;
  } cases[] = {
      {test::peModuleWith(16,
                          test::versionResource(0x00050004, 0x00030002, {0x04B00409, 0x04E4040C})),
       true, "5.4.3.2", "1033,1036"},
      {test::peModuleWith(16, test::versionResource(0x00010000, 0, {})), true, "1.0.0.0", ""},
      {"MZ but no module", false, "1.0.0.0", ""},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    const std::filesystem::path module = file("module" + std::to_string(i));
    test::writeFileBytes(module, cases[i].bytes);
    EXPECT_EQ(files.SetToFileVersion(helper, TalString::FromUtf8(module.string())), cases[i].set);
    EXPECT_EQ(helper.GetVersion().ToUtf8(), cases[i].version);
    EXPECT_EQ(helper.GetLanguage().ToUtf8(), cases[i].language);
  }
  EXPECT_TRUE(helper.IsModified());
}

// A file is added, or the refusal is an error with the table unchanged; a deleted row's key
// is free again.
TEST_F(FileTablesTest, AddRefusalIsAnError) {
  ODLEXTFile& files = openPackage().GetFile();
  files.Delete(files.GetFileWithID(u"Handbuch"));
  const struct {
    const char16_t* key;
    int code;  // -1: added
  } cases[] = {{u"NewFile", -1}, {u"Readme", 9}, {u"", 9}, {u"Handbuch", -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(TalString(c.key).ToUtf8());
    MSIEFile row(c.key);
    row.SetComponent(u"GermanDocs");
    row.SetFileName(u"new.txt");
    files.SetTempEntries(nullptr);
    EXPECT_EQ(thrownCode([&] { files.Add(row); }), c.code);
    EXPECT_EQ(files.GetTempEntries().entries(), c.code == -1 ? 1u : 0u);
    if (c.code == -1) {
      EXPECT_FALSE(files.GetFileWithID(c.key).IsDeleted());
    }
  }
  EXPECT_EQ(files.GetFileWithID(u"Readme").GetComponent().ToUtf8(), "Docs");
  EXPECT_EQ(files.GetLongFileName(files.GetFileWithID(u"Readme")).ToUtf8(), "readme.txt");
}

// A font file's registered name read from the host path; anything else gives an empty name.
TEST_F(FileTablesTest, FontNameFromAFile) {
  const struct {
    const char* name;
    std::string bytes;
    const char* expected;
  } cases[] = {
      {"font.ttf", test::trueTypeFont({{3, 1, 0x409, 4, test::utf16be(u"Odlex Sans")}}),
       "Odlex Sans"},
      {"text.ttf", "no font", ""},
      {"missing.ttf", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::filesystem::path path = file(c.name);
    if (!c.bytes.empty())
      test::writeFileBytes(path, c.bytes);
    const TalString name = ODLEXTFile::GetTTFontName(TalString::FromUtf8(path.string()));
    EXPECT_EQ(name.ToUtf8(), c.expected);
  }
}

TEST_F(FileTablesTest, FilesPathsAndWhatDescribesThem) {
  ODLEXDatabase& db = openPackage();
  ODLEXTFile& files = db.GetFile();
  MSIEFile& main = files.GetFileWithID(u"MainExe");
  MSIEFile& handbuch = files.GetFileWithID(u"Handbuch");
  MSIEFile& helper = files.GetFileWithID(u"HelperDll");
  MSIEFile& orphan = addRow(files, [] {
    MSIEFile row(u"Orphan");
    row.SetComponent(u"NoSuchComponent");
    return row;
  }());
  const Lookup lookups[] = {
      {[&] { return &files.GetFileWithID(u"Readme"); }, [&] { files.GetFileWithID(u"readme"); },
       20},
      {[&] { return &files.GetComponent(main); }, [&] { files.GetComponent(orphan); }, 21,
       db.GetComponent().Lookup(u"MainExe")},
      {[&] { return &files.GetDirectory(helper); }, [&] { files.GetDirectory(orphan); }, 21,
       db.GetDirectory().Lookup(u"BinDir")},
  };
  expectLookups(lookups);
  expectErrorWithEntry([&] { files.GetBindImage(main); }, ODLEXDatabaseError::eBindImageNotFound,
                       ODLEXTObject::eFile, main);

  EXPECT_EQ(files.GetTargetPath(files.GetFileWithID(u"Readme")).ToUtf8(),
            "[ProgramFilesFolder]Idt Product\\Dokumentation\\readme.txt");
  EXPECT_EQ(files.GetSourcePath(handbuch).ToUtf8(),
            "[SourceDir]IDTPROD\\DOKUME~1\\de\\HANDBU~1.TXT");
  EXPECT_EQ(files.GetKeyPath(u"MainExe").ToUtf8(), "idt app.exe");

  EXPECT_TRUE(files.IsFileInComponentKeyPath(main));
  EXPECT_FALSE(files.IsFileInComponentKeyPath(helper));
  files.SetFileAutoRegister(helper, true);
  EXPECT_TRUE(files.IsFileAutoRegister(helper));
  files.SetFileAutoRegister(helper, false);
  EXPECT_FALSE(files.IsFileAutoRegister(helper));

  MSIELockPermissions grant(u"x", u"x", u"", u"Administrators");
  grant.SetPermission(0x10000000);
  RWBTree grants;
  grants.insert(&grant);
  files.SetPermissions(main, grants);
  RWBTree held;
  ASSERT_EQ(files.GetPermissions(held, main).entries(), 1u);
  EXPECT_EQ(static_cast<MSIELockPermissions*>(*held.begin())->GetTable().ToUtf8(), "File");

  EXPECT_EQ(files.GetLastSequence(), 4);
  MSIEFile next(u"Next");
  files.init(next, *db.GetComponent().Lookup(u"Docs"));
  EXPECT_EQ(next.GetSequence(), 5);
  EXPECT_EQ(next.GetComponent().ToUtf8(), "Docs");
  EXPECT_FALSE(files.IsEmpty());
}

}  // namespace
}  // namespace odlex::test
