// Services on package files: administrative installs through a stand-in installer program, and
// table text files written from and read into packages.

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// Puts a stand-in "msiexec" first on PATH that appends each argument it gets as one line to
// a log file, then a "--" line, and fails.
class AdministrativeInstallTest : public ::testing::Test {
 protected:
  void SetUp() override {
    writeFileBytes(dir_ / "bin" / "msiexec",
                   "#!/bin/sh\n"
                   "for a in \"$@\"; do printf '%s\\n' \"$a\" >> \"$ODLEX_TEST_ARGS\"; done\n"
                   "echo -- >> \"$ODLEX_TEST_ARGS\"\n"
                   "exit 3\n");
    fs::permissions(dir_ / "bin" / "msiexec", fs::perms::owner_all);
    const char* path = getenv("PATH");
    oldPath_ = path ? path : "";
    setenv("PATH", ((dir_ / "bin").string() + ":" + oldPath_).c_str(), 1);
    setenv("ODLEX_TEST_ARGS", (dir_ / "args.log").c_str(), 1);
  }
  void TearDown() override {
    setenv("PATH", oldPath_.c_str(), 1);
    unsetenv("ODLEX_TEST_ARGS");
    ODLEXDatabase::SetInstallerProgram(u"");
  }
  std::vector<std::string> arguments() const {
    return splitLines(readFileBytes(dir_ / "args.log"));
  }

  TempDir dir_;
  std::string oldPath_;
};

TEST_F(AdministrativeInstallTest, EveryPackageArrivesAsOneArgumentAndFailedRunsCount) {
  const std::string odd = "dir with space/it's \"quoted\".msi";
  EXPECT_TRUE(ODLEXDatabase::DoAdministrativeInstall(TalString::FromUtf8("a.msi;;" + odd + ";")));
  EXPECT_EQ(arguments(),
            (std::vector<std::string>{"/qn", "/a", "a.msi", "--", "/qn", "/a", odd, "--"}));
  EXPECT_TRUE(ODLEXDatabase::DoAdministrativeInstall(TalString(u"")));

  ODLEXDatabase::SetInstallerProgram(u"odlex-no-such-installer");
  EXPECT_FALSE(ODLEXDatabase::DoAdministrativeInstall(u"a.msi"));
  EXPECT_FALSE(ODLEXDatabase::DoAdministrativeInstall(TalString(u"a.msi;b.msi")));
}

class TableFilesTest : public DatabaseTest {};

TEST_F(TableFilesTest, ExportedTablesImportIntoAnotherPackage) {
  const fs::path out = file("out");
  fs::create_directory(out);
  ASSERT_TRUE(ODLEXDatabase::ExportMSI(text(package()), text(out) + u"/"));
  EXPECT_TRUE(fs::exists(out / "_SummaryInformation.idt"));
  EXPECT_TRUE(fs::exists(out / "Property.idt"));
  // Without a trailing separator the names are glued to the folder's name.
  ASSERT_TRUE(ODLEXDatabase::ExportMSI(text(package()), text(out)));
  EXPECT_TRUE(fs::exists(file("outProperty.idt")));

  EXPECT_FALSE(ODLEXDatabase::ExportMSI(text(file("missing.msi")), text(file("none")) + u"/"));
  EXPECT_FALSE(fs::exists(file("none_SummaryInformation.idt")));

  // What the files hold is the table-text layer's (idt tests, msibuild's re-import in export_test).
  MSIDatabase copy(text(file("copy.msi")), MSIDatabase::ePersistCreate);
  EXPECT_TRUE(ODLEXDatabase::ImportTableFromFile(copy, text(out / "Property.idt")));
  EXPECT_FALSE(ODLEXDatabase::ImportTableFromFile(copy, text(out / "Nothing.idt")));
}

}  // namespace
}  // namespace odlex::test
