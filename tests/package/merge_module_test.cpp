// A merge module built by msibuild, merged into a package built by wixl: after saving, the
// independent reader finds the module's rows with their keys resolved against the package.

#include <gtest/gtest.h>

#include <algorithm>

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
}

}  // namespace
}  // namespace odlex::test
