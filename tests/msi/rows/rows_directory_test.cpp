// The Directory row classes over the directory model (whose own tests cover the paths and names
// themselves): folder properties, source and target paths, deleted rows, refusals. Paths of a
// package wixl wrote, read through the table objects, are the Directory table tests'.

#include <gtest/gtest.h>

#include <odlex/msi/MSIRows.h>

#include <string>

namespace odlex::test {
namespace {

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

  // A source path beside the target path; which pairs are refused is the directory model's.
  MSIEDirectory* tools = table.Add(u"Src", u"[ProgramFilesFolder]Vendor Name\\Tools");
  ASSERT_NE(tools, nullptr) << utf8(table.GetLastError());
  EXPECT_EQ(tools->GetTargetPath(true, false, false), u"[ProgramFilesFolder]Vendor Name\\Tools\\");
  EXPECT_EQ(table.Add(u"[OtherFolder]x", u"[ProgramFilesFolder]Vendor Name"), nullptr);
  EXPECT_FALSE(table.GetLastError().u16().empty());
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

}  // namespace
}  // namespace odlex::test
