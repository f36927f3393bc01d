// The Directory row classes over the directory model (whose own tests cover the paths and names
// themselves): folder properties, deleted rows, refusals, and a package wixl wrote, whose paths
// are read through the row classes and which takes added rows that msiinfo then reads.

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

TEST(DirectoryPaths, ARowOutsideATableHasNoPath) {
  const MSIEDirectory loose(u"Loose");
  EXPECT_TRUE(loose.GetTargetPath(true, false, false).isNull());
  EXPECT_TRUE(loose.GetSourcePath(true, false, false).isNull());
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

// The short target name of a DefaultDir value, read and set; a name that is not a valid short
// name, or a folder that names its parent, leaves the value as it was.
TEST(DirectoryNames, ShortTargetNameOfTheDefaultDir) {
  const struct {
    const char16_t* defaultDir;
    const char16_t* shortBefore;
    const char16_t* newShort;
    const char16_t* defaultDirAfter;
  } cases[] = {
      {u"PROGRA~1|Program Files", u"PROGRA~1", u"PFILES~1", u"PFILES~1|Program Files"},
      {u"App:Source", u"App", u"APP~1", u"APP~1|App:Source"},
      {u"Long Name", u"Long Name", u"not a short name", u"Long Name"},
      {u".", u".", u"X", u"."},
  };
  for (const auto& c : cases) {
    MSIEDirectory row(u"Dir");
    row.SetDefaultDir(c.defaultDir);
    EXPECT_EQ(row.GetShortDefaultDir(), c.shortBefore) << utf8(TalString(c.defaultDir));
    row.SetShortDefaultDir(c.newShort);
    EXPECT_EQ(row.GetDefaultDir(), c.defaultDirAfter) << utf8(TalString(c.defaultDir));
  }
}

// The package wixl writes from tests/oracle/fixtures/wixl/folders.wxs, nested folders of long
// names: the paths of its rows follow the nesting of the .wxs, adding those paths again finds
// wixl's rows, and new folders join the chain and persist as msiinfo then reads them.
TEST(DirectoryPackage, PathsFollowTheNestingWixlWroteAndAddedFoldersPersist) {
  struct Expected {
    const char16_t* key;
    const char16_t* target;  // long target path for display
    const char* source;      // long source path for display
  };
  const Expected expected[] = {
      {u"TARGETDIR", u"[TARGETDIR]", "[SourceDir]"},
      {u"ProgramFilesFolder", u"[ProgramFilesFolder]", "[SourceDir]"},
      {u"VendorDir", u"[ProgramFilesFolder]Vendor Name\\", "[SourceDir]Vendor Name\\"},
      {u"AppDir", u"[ProgramFilesFolder]Vendor Name\\Application Files\\",
       "[SourceDir]Vendor Name\\Application Files\\"},
      {u"BinDir", u"[ProgramFilesFolder]Vendor Name\\Application Files\\bin\\",
       "[SourceDir]Vendor Name\\Application Files\\bin\\"},
      {u"DeepDir",
       u"[ProgramFilesFolder]Vendor Name\\Application Files\\Documentation.long.ext\\Very Long "
       u"Nested Folder Name\\",
       "[SourceDir]Vendor Name\\Application Files\\Documentation.long.ext\\Very Long Nested "
       "Folder Name\\"},
      {u"DataDir", u"[TARGETDIR]Shared Data\\", "[SourceDir]Shared Data\\"},
  };
  TempDir dir;
  for (const char* name : {"one.txt", "two.txt", "three.txt"})
    writeFileBytes(dir / name, name);
  const fs::path package = dir / "folders.msi";
  const ProcessResult built = runProcess(
      {"wixl", "-o", package.string(), fixturePath("wixl/folders.wxs").string()}, dir.path());
  ASSERT_TRUE(built.ok()) << built.describe();
  {
    MSIDatabase db(TalString::FromUtf8(package.string()), MSIDatabase::ePersistDirect);
    ASSERT_TRUE(db.isValid());
    MSITDirectory table;
    table.SetDatabase(db);
    ASSERT_TRUE(table.Populate()) << utf8(table.GetLastError());
    ASSERT_EQ(table.GetTable().entries(), 8u);
    for (const Expected& e : expected) {
      SCOPED_TRACE(utf8(TalString(e.key)));
      MSIEDirectory* row = table.Find(e.key);
      ASSERT_NE(row, nullptr);
      EXPECT_EQ(row->GetTargetPath(true, false, false), e.target);
      EXPECT_EQ(utf8(row->GetSourcePath(true, false, false)), e.source);
      EXPECT_EQ(table.Add(e.target), row);
    }
    EXPECT_EQ(table.GetTable().entries(), 8u);

    // The package's own rows carry the chain; only the last folder is new.
    MSIEDirectory* plugins =
        table.Add(u"[ProgramFilesFolder]vendor name\\Application Files\\bin\\Plug Ins");
    ASSERT_NE(plugins, nullptr) << utf8(table.GetLastError());
    EXPECT_EQ(utf8(plugins->GetDirectoryParent()), "BinDir");
    ASSERT_NE(table.Add(u"[DataDir]Extra Tools"), nullptr);

    // Which paths are refused is the directory model's; the row class reports it and adds
    // nothing.
    EXPECT_EQ(table.Add(u"[DataDir]..\\x"), nullptr);
    const TalError* error = db.GetError();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->GetCode(), 87u);
    EXPECT_EQ(error->GetText(), table.GetLastError());
    EXPECT_EQ(table.Add(u"[OtherFolder]x", u"[DataDir]Extra Tools"), nullptr);
    EXPECT_EQ(table.GetTable().entries(), 10u);

    ASSERT_TRUE(table.Persist()) << utf8(table.GetLastError());
    ASSERT_EQ(db.commit(), 0u);
  }
  const std::vector<std::string> rows = msiinfoRows(package, "Directory");
  for (const std::string row :
       {"Plug_Ins\tBinDir\tPLUGIN~1|Plug Ins", "Extra_Tools\tDataDir\tEXTRAT~1|Extra Tools",
        "BinDir\tAppDir\tbin"})
    EXPECT_NE(std::find(rows.begin(), rows.end(), row), rows.end()) << row;
  EXPECT_EQ(rows.size(), 10u);
}

}  // namespace
}  // namespace odlex::test
