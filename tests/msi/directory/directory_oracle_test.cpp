// Oracle check against wixl: a package with nested folders of long names
// (tests/oracle/fixtures/wixl/folders.wxs) is built by wixl, its Directory table read back with
// msiinfo, and the paths this module computes must follow the nesting of the .wxs; adding those
// paths again must find wixl's rows instead of making new ones.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "msi/directory/AddPath.h"
#include "msi/directory/DirectoryPath.h"
#include "odlex/support/TalString.h"

namespace odlex::directory {
namespace {

using test::runProcess;

struct Expected {
  std::u16string key;
  std::u16string target;  // long target path for display
  std::u16string source;  // long source path for display
};

const std::vector<Expected> kExpected = {
    {u"TARGETDIR", u"[TARGETDIR]", u"[SourceDir]"},
    {u"ProgramFilesFolder", u"[ProgramFilesFolder]", u"[SourceDir]"},
    {u"VendorDir", u"[ProgramFilesFolder]Vendor Name\\", u"[SourceDir]Vendor Name\\"},
    {u"AppDir", u"[ProgramFilesFolder]Vendor Name\\Application Files\\",
     u"[SourceDir]Vendor Name\\Application Files\\"},
    {u"BinDir", u"[ProgramFilesFolder]Vendor Name\\Application Files\\bin\\",
     u"[SourceDir]Vendor Name\\Application Files\\bin\\"},
    {u"DeepDir",
     u"[ProgramFilesFolder]Vendor Name\\Application Files\\Documentation.long.ext\\Very Long "
     u"Nested Folder Name\\",
     u"[SourceDir]Vendor Name\\Application Files\\Documentation.long.ext\\Very Long Nested "
     u"Folder Name\\"},
    {u"DataDir", u"[TARGETDIR]Shared Data\\", u"[SourceDir]Shared Data\\"},
};

std::string utf8(const std::u16string& text) {
  return TalString(text).ToUtf8();
}

// The rows of an exported table: after the three header lines, tab-separated columns.
MemoryDirectoryModel loadExport(const std::string& text) {
  MemoryDirectoryModel model;
  const auto lines = test::splitLines(text);
  for (std::size_t i = 3; i < lines.size(); ++i) {
    const std::vector<std::string> cells = test::splitCells(lines[i]);
    EXPECT_EQ(cells.size(), 3u) << lines[i];
    if (cells.size() == 3) {
      const auto u16 = [](const std::string& cell) { return TalString::FromUtf8(cell).u16(); };
      model.add({u16(cells[0]), u16(cells[1]), u16(cells[2])});
    }
  }
  return model;
}

TEST(DirectoryOracleTest, PathsFollowTheNestingWixlWrote) {
  test::TempDir dir;
  for (const char* name : {"one.txt", "two.txt", "three.txt"}) {
    test::writeFileBytes(dir / name, name);
  }
  const auto build = runProcess({"wixl", "-o", (dir / "folders.msi").string(),
                                 test::fixturePath("wixl/folders.wxs").string()},
                                dir.path());
  ASSERT_TRUE(build.ok()) << build.describe();
  const auto exported = test::msiinfoExport(dir / "folders.msi", "Directory");
  ASSERT_TRUE(exported.ok()) << exported.describe();

  MemoryDirectoryModel model = loadExport(exported.out);
  ASSERT_EQ(model.size(), 8u);
  const auto text = [](const Result<std::u16string>& result) {
    return utf8(result ? result.value() : u"error: " + result.error());
  };
  for (const Expected& e : kExpected) {
    SCOPED_TRACE(utf8(e.key));
    EXPECT_EQ(text(targetPath(model, e.key, true, false, false)), utf8(e.target));
    EXPECT_EQ(text(sourcePath(model, e.key, true, false, false)), utf8(e.source));
  }
  for (const Expected& e : kExpected)
    EXPECT_EQ(text(addTargetPath(model, e.target)), utf8(e.key));
  EXPECT_EQ(model.size(), 8u);
}

}  // namespace
}  // namespace odlex::directory
