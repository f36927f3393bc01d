// Oracle check against wixl: a package with nested folders of long names is built by wixl, its
// Directory table read back with msiinfo, and the paths this module computes must follow the
// nesting of the .wxs; adding those paths again must find wixl's rows instead of making new
// ones.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/directory/AddPath.h"
#include "msi/directory/DirectoryPath.h"
#include "odlex/support/TalString.h"

namespace odlex::directory {
namespace {

using test::runProcess;

constexpr std::string_view kProduct = R"(<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="*" Name="Folders" Language="1033" Version="1.0.0" Manufacturer="Test"
           UpgradeCode="12345678-1234-1234-1234-123456789012">
    <Package InstallerVersion="200" Compressed="yes"/>
    <Media Id="1" Cabinet="a.cab" EmbedCab="yes"/>
    <Directory Id="TARGETDIR" Name="SourceDir">
      <Directory Id="ProgramFilesFolder">
        <Directory Id="VendorDir" Name="Vendor Name">
          <Directory Id="AppDir" Name="Application Files">
            <Directory Id="BinDir" Name="bin">
              <Component Id="C1" Guid="11111111-1111-1111-1111-111111111111">
                <File Id="F1" Source="one.txt"/>
              </Component>
            </Directory>
            <Directory Id="DocDir" Name="Documentation.long.ext">
              <Directory Id="DeepDir" Name="Very Long Nested Folder Name">
                <Component Id="C2" Guid="22222222-2222-2222-2222-222222222222">
                  <File Id="F2" Source="two.txt"/>
                </Component>
              </Directory>
            </Directory>
          </Directory>
        </Directory>
      </Directory>
      <Directory Id="DataDir" Name="Shared Data">
        <Component Id="C3" Guid="33333333-3333-3333-3333-333333333333">
          <File Id="F3" Source="three.txt"/>
        </Component>
      </Directory>
    </Directory>
    <Feature Id="Main" Level="1">
      <ComponentRef Id="C1"/><ComponentRef Id="C2"/><ComponentRef Id="C3"/>
    </Feature>
  </Product>
</Wix>
)";

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
  test::writeFileBytes(dir / "product.wxs", kProduct);
  for (const char* name : {"one.txt", "two.txt", "three.txt"}) {
    test::writeFileBytes(dir / name, name);
  }
  const auto build =
      runProcess({"wixl", "-o", (dir / "folders.msi").string(), "product.wxs"}, dir.path());
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
