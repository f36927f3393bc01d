// Databases and the files under them: one object per file however its path is spelled, output
// files that would overwrite an open file, packages changed on disk by another program, and
// read-only packages that are never written; and services on package files: administrative
// installs through a stand-in installer program, and table text files written from and read into
// packages.

#include <stdlib.h>

#include "common/DatabaseTest.h"
#include "common/SmallPackage.h"

namespace odlex::test {
namespace {

using Error = ODLEXDatabaseError;

std::string payloadOf(ODLEXDatabase& db) {
  const MSIBinary data = db.GetBinary().GetBinaryWithID(u"Payload").GetData();
  return std::string(data.GetData(), data.GetData() + data.GetSize());
}

class DatabaseFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ODLEXDatabase::INIT();
    writeSmallPackage(path_, "First", "first payload");
  }
  void TearDown() override { ODLEXDatabase::KillDatabaseList(); }

  TempDir dir_;
  std::filesystem::path path_ = dir_ / "p5.msi";
};

TEST_F(DatabaseFilesTest, EverySpellingOfOneFileFindsOneDatabase) {
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(path_));
  EXPECT_EQ(db.GetFilePath(), text(path_));
  EXPECT_EQ(db.GetDatabasePath(), text(path_));
  std::filesystem::create_symlink(path_, dir_ / "link.msi");
  std::filesystem::create_hard_link(path_, dir_ / "hard.msi");
  for (const std::filesystem::path& spelling :
       {path_, std::filesystem::relative(path_), dir_ / "." / "p5.msi", dir_ / "link.msi",
        dir_ / "hard.msi"}) {
    SCOPED_TRACE(spelling.string());
    ODLEXOpenType onlyLooking;
    EXPECT_EQ(&ODLEXDatabase::GetDatabaseWithFilePath(text(spelling), onlyLooking), &db);
    EXPECT_EQ(&ODLEXDatabase::AddDatabaseToList(text(spelling)), &db);
  }
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 1u);

  // A name that differs only in case is another file, with a database of its own.
  const std::filesystem::path upper = dir_ / "P5.msi";
  EXPECT_FALSE(ODLEXDatabase::IsDatabaseFilePathLoaded(text(upper)));
  ODLEXOpenType onlyLooking;
  EXPECT_EQ(thrownCode([&] { ODLEXDatabase::GetDatabaseWithFilePath(text(upper), onlyLooking); }),
            Error::eDatabaseNotOpen);
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 1u) << "looking opens nothing";
  writeSmallPackage(upper, "Upper", "upper payload");
  ODLEXDatabase& other = ODLEXDatabase::AddDatabaseToList(text(upper));
  ASSERT_NE(&other, &db);
  other.GetProperty().SetValue(u"ProductName", u"Edited");
  ASSERT_TRUE(other.SaveChanges());
  ODLEXDatabase::RemoveDatabaseFromList(text(upper), false);
  EXPECT_EQ(db.GetProperty().GetValue(u"ProductName"), u"First");
  EXPECT_EQ(ODLEXDatabase::AddDatabaseToList(text(upper)).GetProperty().GetValue(u"ProductName"),
            u"Edited");
}

TEST_F(DatabaseFilesTest, RemovingADatabaseRemovesThatOne) {
  ODLEXOpenType intoFirst(text(dir_ / "out1.msi").data());
  ODLEXOpenType intoSecond(text(dir_ / "out2.msi").data());
  ODLEXDatabase& first = ODLEXDatabase::AddDatabaseToList(text(path_), intoFirst);
  ODLEXDatabase& second = ODLEXDatabase::AddDatabaseToList(text(path_), intoSecond);
  ASSERT_NE(&first, &second);
  ODLEXDatabase::RemoveDatabaseFromList(text(dir_ / "unknown.msi"), true);
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 2u);
  second.GetProperty().SetValue(u"ProductName", u"Unsaved");
  second.RemoveFromList(false);
  ASSERT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 1u);
  EXPECT_EQ(*ODLEXDatabase::GetDatabaseList().begin(), &first);
  EXPECT_EQ(payloadOf(first), "first payload");
  EXPECT_FALSE(std::filesystem::exists(dir_ / "out2.msi")) << "its working copy";
  EXPECT_TRUE(std::filesystem::exists(dir_ / "out1.msi"));
}

// A package that cannot be opened, an output file that is open or is the source, and one that
// cannot be written are refused, each with its debug line, and nothing is listed or written.
TEST_F(DatabaseFilesTest, PackagesThatCannotBeOpenedAndOutputFilesThatAreRefused) {
  EXPECT_EQ(thrownCode([&] { ODLEXDatabase::AddDatabaseToList(text(dir_ / "missing.msi")); }),
            Error::eDatabaseOpenFailed);
  const std::filesystem::path open = dir_ / "open.msi";
  writeSmallPackage(open, "Open", "open payload");
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(open));
  const std::string before = readFileBytes(open);
  const std::string refused =
      "ODLEX: Unable to copy file: the output file is open or is the file opened.\r\n";
  const std::pair<std::filesystem::path, std::string> outputs[] = {
      {open, refused},
      {path_, refused},
      {dir_ / "." / "p5.msi", refused},
      {dir_ / "no/such/folder/out.msi", "ODLEX: Unable to copy file.\r\n"},
  };
  for (const auto& [output, line] : outputs) {
    SCOPED_TRACE(output.string());
    ODLEXOpenType into(text(output).data());
    DebugCapture debug;
    EXPECT_EQ(thrownCode([&] { ODLEXDatabase::AddDatabaseToList(text(path_), into); }),
              Error::eDatabaseOpenFailed);
    EXPECT_EQ(debug.lines, std::vector<std::string>{line});
  }
  EXPECT_EQ(readFileBytes(open), before);
  EXPECT_EQ(payloadOf(db), "open payload");
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 1u);
}

TEST_F(DatabaseFilesTest, AFileChangedOnDiskIsNeverOverwrittenAndReloadReadsIt) {
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(path_));
  db.GetProperty().SetValue(u"ProductName", u"Edited");
  // Another program rewrites the package in place while it is open.
  const std::filesystem::path theirs = dir_ / "theirs.msi";
  writeSmallPackage(theirs, "Theirs", "their payload, longer than ours");
  writeFileBytes(path_, readFileBytes(theirs));
  const std::string rewritten = readFileBytes(path_);

  EXPECT_FALSE(db.SaveChanges());
  EXPECT_EQ(readFileBytes(path_), rewritten);
  const TalError& refused = db.GetTalError();
  EXPECT_EQ(refused.GetCode(), 1627u);
  EXPECT_TRUE(refused.GetText().contains(u"changed on disk")) << refused.GetText().ToUtf8();

  db.Reload();
  EXPECT_EQ(db.GetProperty().GetValue(u"ProductName"), u"Theirs");
  EXPECT_EQ(payloadOf(db), "their payload, longer than ours");
  db.GetProperty().SetValue(u"ProductName", u"Edited");
  ASSERT_TRUE(db.SaveChanges());
  db.RemoveFromList(false);
  ODLEXDatabase& saved = ODLEXDatabase::AddDatabaseToList(text(path_));
  EXPECT_EQ(saved.GetProperty().GetValue(u"ProductName"), u"Edited");
  EXPECT_EQ(payloadOf(saved), "their payload, longer than ours");
}

TEST_F(DatabaseFilesTest, AReadOnlyDatabaseIsNeverWrittenNorAFileNotMadeDeleted) {
  // A package named like the installer's temporary copy, and a file beside another package
  // with the temporary copy's name: neither was made by the library.
  const std::filesystem::path mri = dir_ / "pkg.mri";
  std::filesystem::copy_file(path_, mri);
  writeFileBytes(dir_ / "p5.mri", "not ours");
  for (const std::filesystem::path& package : {path_, mri}) {
    SCOPED_TRACE(package.string());
    const std::string before = readFileBytes(package);
    ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package), readOnly);
    db.Rollback();
    EXPECT_TRUE(db.IsReadOnly());
    EXPECT_EQ(thrownCode([&] { db.SetCreatingTransform(true); }), Error::eCannotCreateTransform);
    db.SetModified(true);
    db.GetProperty().SetValue(u"ProductName", u"Edited");
    EXPECT_FALSE(db.IsModified());
    EXPECT_FALSE(db.GetInteriorModify());
    EXPECT_FALSE(db.SaveChanges());
    db.Close(true);
    db.RemoveFromList(true);
    EXPECT_EQ(readFileBytes(package), before);
  }
  EXPECT_EQ(readFileBytes(dir_ / "p5.mri"), "not ours");
}

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

  TempDir dir_;
  std::string oldPath_;
};

TEST_F(AdministrativeInstallTest, EveryPackageArrivesAsOneArgumentAndFailedRunsCount) {
  const std::string odd = "dir with space/it's \"quoted\".msi";
  EXPECT_TRUE(ODLEXDatabase::DoAdministrativeInstall(TalString::FromUtf8("a.msi;;" + odd + ";")));
  EXPECT_EQ(splitLines(readFileBytes(dir_ / "args.log")),
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

  // What the files hold is the table-text layer's (idt tests, msibuild's re-import in
  // package_commands_test).
  MSIDatabase copy(text(file("copy.msi")), MSIDatabase::ePersistCreate);
  EXPECT_TRUE(ODLEXDatabase::ImportTableFromFile(copy, text(out / "Property.idt")));
  EXPECT_FALSE(ODLEXDatabase::ImportTableFromFile(copy, text(out / "Nothing.idt")));
}

}  // namespace
}  // namespace odlex::test
