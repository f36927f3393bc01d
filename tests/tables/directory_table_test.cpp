// The Directory table object on the wixl package (TARGETDIR > ProgramFilesFolder > INSTALLDIR
// "Odlex Test" > DataDir "data" > LocaleDir "de", and ProgramMenuFolder > ProgramMenuDir):
// paths, folder properties, walks of the tree and short names.

#include <odlex/support/TalCollectableString.h>

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

using DirectoryTableTest = DatabaseTest;

std::string utf8(const TalString& text) {
  return text.ToUtf8();
}

TEST_F(DirectoryTableTest, SourcePathWithoutTheSourceRootProperty) {
  ODLEXDatabase& db = openWixl();
  ODLEXTDirectory& folders = db.GetDirectory();
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"\\\\server\\share\\", "\\\\server\\share\\Odlex Test\\data"},
      {u"C:\\image\\\\", "C:\\image\\Odlex Test\\data"},
  };
  for (const auto& [source, expected] : cases) {
    db.SetSourceRoot(source);
    EXPECT_EQ(utf8(folders.GetLongSourceNoProperty(folders.GetDirectoryWithID(u"DataDir"))),
              expected);
  }
  EXPECT_EQ(thrownCode([&] { folders.GetDirectoryWithID(u"NoSuchDir"); }),
            ODLEXDatabaseError::eDirectoryNotFound);
}

TEST_F(DirectoryTableTest, PropertyAtTheHeadOfAPath) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"[ProgramFilesFolder]Vendor\\", "[ProgramFilesFolder]"},
      {u"[INSTALLDIR]", "[INSTALLDIR]"},
      {u"C:\\Program Files\\", ""},
      {u"]", "]"},
      {u"]Vendor", ""},
  };
  for (const auto& [path, property] : cases)
    EXPECT_EQ(utf8(ODLEXTDirectory::GetPropertyFromPath(path)), property) << utf8(path);
}

TEST_F(DirectoryTableTest, FolderPropertiesOfferedToAnEditor) {
  ODLEXTDirectory& folders = openWixl().GetDirectory();
  RWBTree source = folders.GetDirectoryProperties(false);
  ASSERT_EQ(source.entries(), 1u);
  EXPECT_EQ(utf8(*static_cast<TalCollectableString*>(*source.begin())), "[SourceDir]");
  RWBTree target = folders.GetDirectoryProperties(true);
  // The 25 predefined ones, which include the two the package's target paths start with.
  EXPECT_EQ(target.entries(), 25u);
  target.clearAndDestroy();
  source.clearAndDestroy();
}

TEST_F(DirectoryTableTest, AddedPathsWalksAndShortNames) {
  ODLEXTDirectory& folders = openWixl().GetDirectory();
  folders.Add(u"[INSTALLDIR]Application Files\\Plug In Modules\\");
  ASSERT_EQ(folders.GetTempEntries().entries(), 1u);
  auto& leaf = static_cast<MSIEDirectory&>(**folders.GetTempEntries().begin());
  EXPECT_EQ(utf8(folders.GetDefaultDirectoryID(u"[ProgramFilesFolder]odlex test\\application "
                                               u"files\\plug in modules")),
            utf8(leaf.GetDirectory()));
  RWBTree below;
  EXPECT_EQ(folders.GetDirectoriesDeep(folders.GetDirectoryWithID(u"INSTALLDIR"), below).entries(),
            5u);  // INSTALLDIR, DataDir, LocaleDir and the two new folders
  RWBTree all;
  EXPECT_EQ(folders.GetDirectoriesDeep(all).entries(), 9u);

  folders.SetShortPath(leaf, u"[ProgramFilesFolder]ODLEX\\APPFILES\\PLUGINS\\", true);
  EXPECT_EQ(utf8(folders.GetShortTarget(leaf)), "[ProgramFilesFolder]ODLEX\\APPFILES\\PLUGINS\\");
  folders.SetShortPath(leaf, u"MODULES", false);
  EXPECT_EQ(utf8(folders.GetShortTarget(leaf)), "[ProgramFilesFolder]ODLEX\\APPFILES\\MODULES\\");
  EXPECT_EQ(utf8(folders.GetLongTarget(leaf)),
            "[ProgramFilesFolder]Odlex Test\\Application Files\\Plug In Modules\\");

  EXPECT_FALSE(folders.Change(leaf, leaf));
  EXPECT_EQ(folders.GetTempEntries().entries(), 1u);
  EXPECT_TRUE(folders.Change(leaf, folders.GetDirectoryWithID(u"DataDir")));
  EXPECT_EQ(folders.GetTempEntries().entries(), 0u);
}

// The idt package (INSTALLDIR "IDTPROD|Idt Product" > BinDir "bin", DocDir
// "DOKUME~1|Dokumentation") against a copy of itself as a module, changed so that one key and
// one path conflict, beside changes that must not.
TEST_F(DirectoryTableTest, ConflictsWithAModule) {
  ODLEXTDirectory& ours = openPackage().GetDirectory();
  ODLEXDatabase& module = ODLEXDatabase::AddDatabaseToList(text(copyPackage("module.msm")));
  EXPECT_EQ(utf8(ours.CheckDirectoryPaths(module, u"{DIR}")), "") << "the same folders";

  ODLEXTDirectory& theirs = module.GetDirectory();
  theirs.GetDirectoryWithID(u"BinDir").SetDefaultDir(u"binaries");
  theirs.GetDirectoryWithID(u"ProgramFilesFolder").SetDefaultDir(u"PFiles");
  theirs.Add(folder(u"ModDocs", u"INSTALLDIR", u"DOCUME~1|dokumentation"));
  theirs.Add(folder(u"SameDocs", u"INSTALLDIR", u"dokume~1|DOKUMENTATION"));
  std::vector<TalString> packageKeys, moduleKeys;
  EXPECT_TRUE(ours.CheckForConflictingPaths(module, packageKeys, moduleKeys));
  EXPECT_EQ(packageKeys, (std::vector<TalString>{u"BinDir", u"DocDir"}));
  EXPECT_EQ(moduleKeys, (std::vector<TalString>{u"BinDir", u"ModDocs"}));
  EXPECT_EQ(
      utf8(ours.CheckDirectoryPaths(module, u"{DIR} ({DEFAULT}) / {MOD_DIR} ({MOD_DEFAULT})")),
      "BinDir (bin) / BinDir (binaries)\n"
      "DocDir (DOKUME~1|Dokumentation) / ModDocs (DOCUME~1|dokumentation)");
}

}  // namespace
}  // namespace odlex::test
