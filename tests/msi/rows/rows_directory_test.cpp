// Directory rows made from folder paths and read back as paths, in memory and through a
// package that msiinfo then reads.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

const TalString kBinPath(u"[ProgramFilesFolder]Vendor Name\\Application\\bin");

std::string utf8(const TalString& text) {
  return text.ToUtf8();
}

TEST(DirectoryPaths, AddingAPathAgainFindsTheSameChain) {
  MSITDirectory table;
  MSIEDirectory* leaf = table.Add(kBinPath);
  ASSERT_NE(leaf, nullptr) << utf8(table.GetLastError());
  // TARGETDIR, ProgramFilesFolder and one row per folder.
  EXPECT_EQ(table.GetTable().entries(), 5u);
  EXPECT_TRUE(table.IsDirty());
  EXPECT_TRUE(leaf->IsModified());

  EXPECT_EQ(table.Add(kBinPath), leaf);
  // Either separator, and folder names in any case, name the same folders.
  EXPECT_EQ(table.Add(u"[ProgramFilesFolder]vendor name/APPLICATION/bin/"), leaf);
  EXPECT_EQ(table.GetTable().entries(), 5u);

  ASSERT_NE(table.Find(u"TARGETDIR"), nullptr);
  EXPECT_EQ(utf8(table.Find(u"TARGETDIR")->GetDefaultDir()), "SourceDir");
  EXPECT_EQ(utf8(table.Find(u"ProgramFilesFolder")->GetDirectoryParent()), "TARGETDIR");
  EXPECT_EQ(utf8(leaf->GetDefaultDir()), "bin");
}

TEST(DirectoryPaths, APropertyNamingAFolderPathStartsThePath) {
  MSITDirectory table;
  EXPECT_EQ(table.GetRoot(), nullptr);
  MSIEDirectory* vendor = table.Add(u"[ProgramFilesFolder]Vendor Name");
  ASSERT_NE(vendor, nullptr);
  ASSERT_NE(table.GetRoot(), nullptr);
  EXPECT_EQ(table.GetRoot()->GetDirectory(), u"TARGETDIR");

  MSITProperty properties;
  properties.Add(u"VENDORDIR")->SetValue(u"[ProgramFilesFolder]Vendor Name\\");
  properties.Add(u"LOOP")->SetValue(u"[LOOP]x");
  EXPECT_EQ(table.Add(u"[VENDORDIR]Application"), nullptr) << "unknown without the Property table";
  table.SetRelatedTables(&properties);
  MSIEDirectory* application = table.Add(u"[VENDORDIR]Application");
  ASSERT_NE(application, nullptr) << utf8(table.GetLastError());
  EXPECT_EQ(application->GetDirectoryParent(), vendor->GetDirectory());
  EXPECT_EQ(table.Add(u"[LOOP]App"), nullptr) << "a property naming itself ends";
}

TEST(DirectoryPaths, DeletedRowsAreNotReused) {
  MSITDirectory table;
  MSIEDirectory* deleted = table.Add(kBinPath);
  ASSERT_NE(deleted, nullptr);
  deleted->Delete();
  EXPECT_TRUE(deleted->GetTargetPath(true, false, false).isNull());
  MSIEDirectory* added = table.Add(kBinPath);
  ASSERT_NE(added, nullptr);
  EXPECT_NE(added, deleted);
  EXPECT_FALSE(added->IsDeleted());
  EXPECT_EQ(table.Find(added->GetDirectory()), added);
}

TEST(DirectoryPaths, PathsReadBackInLongAndShortForm) {
  MSITDirectory table;
  const MSIEDirectory* leaf = table.Add(kBinPath);
  ASSERT_NE(leaf, nullptr);
  EXPECT_EQ(leaf->GetTargetPath(true, false, false), kBinPath + TalString(u"\\"));
  EXPECT_EQ(utf8(leaf->GetTargetPath(true, false, true)),
            "[ProgramFilesFolder]VENDOR~1\\APPLIC~1\\bin\\");
  EXPECT_EQ(utf8(leaf->GetTargetPath(true, true, false)),
            "[TARGETDIR]Vendor Name\\Application\\bin\\");
  EXPECT_EQ(utf8(leaf->GetSourcePath(true, false, false)),
            "[SourceDir]Vendor Name\\Application\\bin\\");
  // The comparing form folds folder names, not the property.
  EXPECT_EQ(utf8(leaf->GetTargetPath(false, false, false)),
            "[ProgramFilesFolder]vendor name\\application\\bin\\");
}

TEST(DirectoryPaths, SourceAndTargetNamesDiffer) {
  MSITDirectory table;
  const MSIEDirectory* leaf =
      table.Add(u"[SourceDir]src\\Application", u"[ProgramFilesFolder]Vendor\\Application");
  ASSERT_NE(leaf, nullptr) << utf8(table.GetLastError());
  EXPECT_EQ(utf8(leaf->GetTargetPath(true, false, false)),
            "[ProgramFilesFolder]Vendor\\Application\\");
  EXPECT_EQ(utf8(leaf->GetSourcePath(true, false, false)), "[SourceDir]src\\Application\\");
  EXPECT_EQ(utf8(leaf->GetDefaultDir()), "APPLIC~1|Application");
  // The target path alone names another folder: its source side differs.
  const MSIEDirectory* vendor = table.Find(leaf->GetDirectoryParent());
  ASSERT_NE(vendor, nullptr);
  EXPECT_EQ(utf8(vendor->GetDefaultDir()), "Vendor:src");
}

TEST(DirectoryPaths, RefusedPathsLeaveTheTableUnchanged) {
  MSITDirectory table;
  ASSERT_NE(table.Add(u"[ProgramFilesFolder]Vendor"), nullptr);
  ASSERT_TRUE(table.Find(u"Vendor")->IsModified());
  const std::size_t rows = table.GetTable().entries();
  for (const char16_t* path : {u"[ProgramFilesFolder]Vendor\\..\\Other", u"[NoSuchFolder]App",
                               u"[ProgramFilesFolder]Bad|Name", u"[ProgramFilesFolder"}) {
    EXPECT_EQ(table.Add(path), nullptr) << utf8(TalString(path));
    EXPECT_FALSE(table.GetLastError().isNull()) << utf8(TalString(path));
    EXPECT_EQ(table.GetTable().entries(), rows) << utf8(TalString(path));
  }
  EXPECT_EQ(table.Add(u"[OtherFolder]x", u"[ProgramFilesFolder]Vendor"), nullptr);
  EXPECT_EQ(table.GetTable().entries(), rows);
  EXPECT_NE(table.Add(u"[ProgramFilesFolder]Vendor"), nullptr);
}

TEST(DirectoryPaths, RowsOutsideATableOrAChainHaveNoPath) {
  const MSIEDirectory loose(u"Loose");
  EXPECT_TRUE(loose.GetTargetPath(true, false, false).isNull());

  MSITDirectory table;
  MSIEDirectory* orphan = table.AddKey(u"Orphan");
  orphan->SetDirectoryParent(u"Missing");
  orphan->SetDefaultDir(u"Orphan");
  EXPECT_TRUE(orphan->GetTargetPath(true, false, false).isNull());
  EXPECT_TRUE(orphan->GetSourcePath(true, false, false).isNull());
  // A path starting below a broken chain is refused.
  EXPECT_EQ(table.Add(u"[Orphan]child"), nullptr);
  EXPECT_EQ(table.GetTable().entries(), 1u);
}

TEST(DirectoryNames, ShortDefaultDirKeepsLongNameAndSourceSide) {
  MSIEDirectory row(u"App");
  row.SetDefaultDir(u"APPLIC~1|Application:src");
  EXPECT_EQ(utf8(row.GetShortDefaultDir()), "APPLIC~1");
  row.SetShortDefaultDir(u"APP");
  EXPECT_EQ(utf8(row.GetDefaultDir()), "APP|Application:src");
  row.SetShortDefaultDir(u"not short");
  EXPECT_EQ(utf8(row.GetDefaultDir()), "APP|Application:src");
  row.SetShortDefaultDir(u"");
  EXPECT_EQ(utf8(row.GetDefaultDir()), "Application:src");
  EXPECT_EQ(utf8(row.GetShortDefaultDir()), "Application");

  row.SetDefaultDir(u"bin");
  row.SetShortDefaultDir(u"BINARIES");
  EXPECT_EQ(utf8(row.GetDefaultDir()), "BINARIES|bin");
  for (const char16_t* unchanged : {u".", u"a:b:c"}) {
    row.SetDefaultDir(unchanged);
    row.SetShortDefaultDir(u"X");
    EXPECT_EQ(row.GetDefaultDir(), TalString(unchanged));
  }
  EXPECT_TRUE(row.GetShortDefaultDir().isNull());
}

TEST(DirectoryNames, SplitStringAtTheFirstSeparator) {
  TalString before;
  TalString after;
  MSIEDirectory::SplitString(u"short|long|more", u'|', before, after);
  EXPECT_EQ(utf8(before), "short");
  EXPECT_EQ(utf8(after), "long|more");
  MSIEDirectory::SplitString(u"single", u'|', before, after);
  EXPECT_EQ(utf8(before), "single");
  EXPECT_TRUE(after.isNull());
  TalString text(u"target:source");
  MSIEDirectory::SplitString(text, u':', text, after);
  EXPECT_EQ(utf8(text), "target");
  EXPECT_EQ(utf8(after), "source");
}

TEST(DirectoryPackage, AddedPathsReuseThePackageRowsAndPersist) {
  if (!haveMsitools())
    GTEST_SKIP() << "msitools are not installed";
  const BuiltPackage& built = testPackage(PackageKind::kSample);
  ASSERT_FALSE(built.file.empty()) << built.error;
  TempDir dir;
  const fs::path package = dir / "directory.msi";
  fs::copy_file(built.file, package);
  {
    MSIDatabase db(TalString::FromUtf8(package.string()), MSIDatabase::ePersistDirect);
    ASSERT_TRUE(db.isValid());
    MSITDirectory table;
    table.SetDatabase(db);
    ASSERT_TRUE(table.Populate()) << utf8(table.GetLastError());
    const std::size_t before = table.GetTable().entries();

    // The package's own rows carry the chain; only the last folder is new.
    MSIEDirectory* plugins =
        table.Add(u"[ProgramFilesFolder]odlex sample software\\Notepad\\Plugins");
    ASSERT_NE(plugins, nullptr) << utf8(table.GetLastError());
    EXPECT_EQ(utf8(plugins->GetDirectoryParent()), "INSTALLDIR");
    EXPECT_EQ(utf8(plugins->GetTargetPath(true, false, true)),
              "[ProgramFilesFolder]ODLEXS~1\\NOTEPAD\\Plugins\\");
    ASSERT_NE(table.Add(u"[INSTALLDIR]Extra Tools"), nullptr);
    EXPECT_EQ(table.GetTable().entries(), before + 2);

    EXPECT_EQ(table.Add(u"[INSTALLDIR]..\\x"), nullptr);
    const TalError* error = db.GetError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->GetCode(), 87u);
    EXPECT_EQ(error->GetText(), table.GetLastError());

    ASSERT_TRUE(table.Persist()) << utf8(table.GetLastError());
    ASSERT_EQ(db.commit(), 0u);
  }
  const ProcessResult exported = msiinfoExport(package, "Directory");
  ASSERT_TRUE(exported.ok()) << exported.describe();
  const std::vector<std::string> rows = splitLines(exported.out);
  for (const std::string row :
       {"Plugins\tINSTALLDIR\tPlugins", "Extra_Tools\tINSTALLDIR\tEXTRAT~1|Extra Tools",
        "INSTALLDIR\tManufacturerFolder\tNOTEPAD|Notepad"}) {
    EXPECT_NE(std::find(rows.begin(), rows.end(), row), rows.end()) << row;
  }
  EXPECT_EQ(rows.size(), 3u + 9u);
}

}  // namespace
}  // namespace odlex::test
