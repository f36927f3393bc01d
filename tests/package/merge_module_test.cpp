// A merge module built by msibuild, merged into a package built by wixl: after saving, the
// independent reader finds the module's rows with their keys resolved against the package.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "common/DatabaseTest.h"
#include "common/PackageTest.h"
#include "package/MergeTestSupport.h"

namespace odlex::test {
namespace {

class MergeModuleTest : public PackageCopyTest {};

// `rows` holds each of `expected`, with the module's GUID in place of ".G".
::testing::AssertionResult holdsRows(const std::vector<std::string>& rows,
                                     const std::vector<std::string>& expected) {
  for (std::string row : expected) {
    row = withGuid(row + "\n");
    row.resize(row.size() - 2);  // the line end withGuid wrote
    if (std::find(rows.begin(), rows.end(), row) == rows.end())
      return ::testing::AssertionFailure() << "no row \"" << row << "\"";
  }
  return ::testing::AssertionSuccess();
}

TEST_F(MergeModuleTest, TheSavedPackageHoldsTheModuleResolvedAgainstIt) {
  copyPackage(PackageKind::kWixl);
  const std::filesystem::path module = buildModule(dir_, baselineModule());
  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package_));
  const ODLEXMergeSummary summary =
      db.MergeModule(text(module), u"Complete", u"INSTALLDIR", {{u"Greeting", u"hi"}});
  EXPECT_EQ(ODLEXDatabase::GetMergeErrors()->GetCount(), 0u);
  EXPECT_EQ(summary.files, 2u);
  EXPECT_EQ(summary.mediaDiskId, 2);
  ASSERT_TRUE(db.SaveChanges());
  ODLEXDatabase::KillDatabaseList();

  EXPECT_TRUE(holdsRows(msiinfoRows(package_, "Directory"), {"ModDir.G\tINSTALLDIR\tModFiles"}));
  EXPECT_TRUE(holdsRows(msiinfoRows(package_, "FeatureComponents"), {"Complete\tModComp.G"}));
  EXPECT_TRUE(
      holdsRows(msiinfoRows(package_, "File"), {"ModFile1.G\tModComp.G\tone.txt\t9\t\t\t0\t6",
                                                "ModFile2.G\tModComp.G\ttwo.txt\t9\t\t\t0\t7"}));
  EXPECT_TRUE(holdsRows(msiinfoRows(package_, "InstallExecuteSequence"),
                        {"ModAction.G\tNOT Installed\t4002", "ModAction2.G\t\t4003"}));
  EXPECT_TRUE(
      holdsRows(msiinfoRows(package_, "CustomAction"), {"ModAction.G\t51\tMODPROP.G\thi\t"}));
  EXPECT_TRUE(holdsRows(msiinfoRows(package_, "ModuleSignature"), {"OdlexMod.G\t1033\t1.0.0.0"}));
  // Only the package's own TARGETDIR, and no module sequence or steering table.
  const std::vector<std::string> directories = msiinfoRows(package_, "Directory");
  EXPECT_EQ(std::count_if(directories.begin(), directories.end(),
                          [](const std::string& row) { return row.rfind("TARGETDIR\t", 0) == 0; }),
            1);
  const std::vector<std::string> tables = msiinfoPersistentTables(package_);
  for (const char* steering :
       {"ModuleInstallExecuteSequence", "ModuleConfiguration", "ModuleSubstitution"})
    EXPECT_EQ(std::count(tables.begin(), tables.end(), steering), 0) << steering;

  // The module's files in a cabinet of their own, in the order of their new numbers.
  EXPECT_TRUE(holdsRows(msiinfoRows(package_, "Media"), {"2\t7\t\t#merged2.cab\t\t"}));
  const ProcessResult cabinet = msiinfoExtract(package_, "merged2.cab");
  ASSERT_TRUE(cabinet.ok()) << cabinet.describe();
  writeFileBytes(dir_ / "merged2.cab", cabinet.out);
  const ProcessResult listed = runProcess({"gcab", "-t", (dir_ / "merged2.cab").string()});
  EXPECT_EQ(splitLines(listed.out),
            (std::vector<std::string>{"ModFile1." + kGuid, "ModFile2." + kGuid}));

  // Every file of the package and of the module comes out where the tables put it.
  const std::filesystem::path extracted = dir_ / "extracted";
  std::filesystem::create_directories(extracted);
  ASSERT_TRUE(runProcess({"msiextract", "-C", extracted.string(), package_.string()}).ok());
  std::map<std::string, std::string> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(extracted)) {
    if (entry.is_regular_file())
      found[entry.path().filename().string()] = readFileBytes(entry.path());
  }
  EXPECT_EQ(found.size(), 7u);
  for (const auto& [name, contents] : kModuleFiles)
    EXPECT_EQ(found[name], contents) << name;
  EXPECT_NE(found["readme.txt"], "");
}

// In a package whose files are not in cabinets unless marked, the module's files are marked.
TEST_F(MergeModuleTest, FilesMarkedCompressedInAnUncompressedPackage) {
  copyPackage(PackageKind::kIdt);
  const std::filesystem::path module = buildModule(dir_, baselineModule());
  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package_));
  db.MergeModule(text(module), u"Complete", u"INSTALLDIR", {});
  ASSERT_TRUE(db.SaveChanges());
  ODLEXDatabase::KillDatabaseList();
  EXPECT_TRUE(holdsRows(msiinfoRows(package_, "File"),
                        {"ModFile1.G\tModComp.G\tone.txt\t9\t\t\t16384\t5",
                         "ModFile2.G\tModComp.G\ttwo.txt\t9\t\t\t16384\t6"}));
}

}  // namespace
}  // namespace odlex::test
