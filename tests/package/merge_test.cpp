// Merging a module into a package. A module built by msibuild, merged into a package built by
// wixl: after saving, the independent reader finds the module's rows with their keys resolved
// against the package. Each problem a merge can meet produces its merge error; those that end
// the merge throw the code of their step and leave the package as it was. A module's binary
// cell of tens of megabytes goes from the module file to the saved package in pieces, never held
// whole.

#include <gtest/gtest.h>

#include <odlex/tables/ODLEXDatabaseError.h>

#include <algorithm>
#include <map>

#include "common/DatabaseTest.h"
#include "common/PackageTest.h"
#include "common/PeakMemory.h"
#include "common/SmallModule.h"
#include "common/SmallPackage.h"
#include "common/SparseStream.h"
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

struct MergeCase {
  const char* name;
  int code;               // the code thrown; -1 when the merge succeeds
  int errorType;          // the kind of the last merge error
  IdtFiles changes = {};  // tables replacing or joining the baseline module's
  std::vector<std::pair<TalString, TalString>> configuration = {};
  const char16_t* feature = u"Complete";
  const char16_t* directory = u"INSTALLDIR";
  bool baselineMergedFirst = false;  // the unchanged baseline module is merged into the package
};

// Test output names a case by its name, not by its bytes.
void PrintTo(const MergeCase& c, std::ostream* out) {
  *out << c.name;
}

// The header lines of the module tables the cases replace.
const std::string kConfiguration =
    "Name\tFormat\tType\tContextData\tDefaultValue\tAttributes\tDisplayName\tDescription\t"
    "HelpLocation\tHelpKeyword\ns72\ti2\tS72\tS0\tS0\tI4\tL0\tL0\tS0\tS0\nModuleConfiguration\tName"
    "\n";
const std::string kSignature =
    "ModuleID\tLanguage\tVersion\ns72\ti2\ts32\nModuleSignature\tModuleID\tLanguage\n";
const std::string kDependency =
    "ModuleID\tModuleLanguage\tRequiredID\tRequiredLanguage\tRequiredVersion\n"
    "s72\ti2\ts72\ti2\tS32\nModuleDependency\tModuleID\tModuleLanguage\tRequiredID\t"
    "RequiredLanguage\n";
const std::string kSequence =
    "Action\tSequence\tBaseAction\tAfter\tCondition\ns64\tI2\tS64\tI2\tS255\n"
    "ModuleInstallExecuteSequence\tAction\n";

using Error = ODLEXMergeError;

const MergeCase kCases[] = {
    {"MissingDependency",
     -1,
     Error::eMissingDependency,
     {{"ModuleDependency.idt", kDependency + "OdlexMod.G\t1033\tOther.G\t0\t2.0\n"}}},
    {"DependencyOnAnOlderVersion",
     -1,
     Error::eMissingDependency,
     {{"ModuleSignature.idt", kSignature + "Second.G\t1033\t1.0\n"},
      {"ModuleDependency.idt", kDependency + "Second.G\t1033\tOdlexMod.G\t1033\t1.0.0.10\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     true},
    {"ExcludesAMergedModule",
     50,
     Error::eExclusion,
     {{"ModuleSignature.idt", kSignature + "Second.G\t1033\t1.0\n"},
      {"ModuleExclusion.idt",
       "ModuleID\tModuleLanguage\tExcludedID\tExcludedLanguage\tExcludedMinVersion\t"
       "ExcludedMaxVersion\ns72\ti2\ts72\ti2\tS32\tS32\nModuleExclusion\tModuleID\t"
       "ModuleLanguage\tExcludedID\tExcludedLanguage\nSecond.G\t1033\tOdlexMod.G\t0\t1.0\t\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     true},
    {"NoSignature", 49, Error::eModuleUnreadable, {{"ModuleSignature.idt", kSignature}}},
    {"RequiredItemWithoutValue",
     51,
     Error::eBadNullSubstitution,
     {{"ModuleConfiguration.idt", kConfiguration + "Greeting\t0\t\t\t\t2\t\t\t\t\n"}}},
    {"ValueForAnUnknownItem", 51, Error::eMissingConfigItem, {}, {{u"Nope", u"1"}}},
    {"TextForAnIntegerItem",
     51,
     Error::eBadSubstitutionType,
     {{"ModuleConfiguration.idt", kConfiguration + "Greeting\t2\t\t\t7\t0\t\t\t\t\n"}},
     {{u"Greeting", u"seven"}}},
    {"MissingFeature", 53, Error::eFeatureRequired, {}, {}, u"NoSuchFeature"},
    {"MissingDirectory", 53, Error::eDirCreate, {}, {}, u"Complete", u"NoSuchDir"},
    {"TextInAnIntegerColumn",
     54,
     Error::eTableMerge,
     {{"Media.idt", "DiskId\tLastSequence\ns72\ti2\nMedia\tDiskId\nfirst\t1\n"}}},
    {"UnknownBaseAction",
     57,
     Error::eResequenceMerge,
     {{"ModuleInstallExecuteSequence.idt", kSequence + "ModAction.G\t\tNoSuchAction\t0\t\n"}}},
    {"BaseActionsInACycle",
     57,
     Error::eResequenceMerge,
     {{"ModuleInstallExecuteSequence.idt",
       kSequence + "ModAction.G\t\tModAction2.G\t1\t\nModAction2.G\t\tModAction.G\t1\t\n"}}},
    {"ConflictingDirectory",
     53,
     Error::eDirCreate,
     {{"Directory.idt",
       "Directory\tDirectory_Parent\tDefaultDir\ns72\tS72\tl255\nDirectory\tDirectory\n"
       "TARGETDIR\t\tSourceDir\nModDir.G\tTARGETDIR\tModFiles\nDataDir\tTARGETDIR\tother\n"}}},
    {"RowConflictsWithThePackage",
     -1,
     Error::eTableMerge,
     {{"Property.idt", "Property\tValue\ns72\tl0\nProperty\tProperty\nALLUSERS\t2\n"}}},
};

class MergeErrorsTest : public PackageCopyTest, public ::testing::WithParamInterface<MergeCase> {};

TEST_P(MergeErrorsTest, RecordsTheErrorAndStopsWhereTheMergeToolWould) {
  const MergeCase& c = GetParam();
  copyPackage(PackageKind::kWixl);
  TempDir baselineDir;
  const std::filesystem::path baseline = buildModule(baselineDir, baselineModule());
  IdtFiles files = baselineModule();
  for (const auto& [name, text] : c.changes)
    files[name] = text;
  const std::filesystem::path module = buildModule(dir_, files);

  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package_));
  if (c.baselineMergedFirst)
    db.MergeModule(text(baseline), u"Complete", u"INSTALLDIR", {});
  const std::string before = contentsOf(db);
  const bool modifiedBefore = db.IsModified();

  EXPECT_EQ(
      thrownCode([&] { db.MergeModule(text(module), c.feature, c.directory, c.configuration); }),
      c.code);
  const ODLEXMergeErrors* errors = ODLEXDatabase::GetMergeErrors();
  ASSERT_NE(errors, nullptr);
  ASSERT_GT(errors->GetCount(), 0u);
  EXPECT_EQ(errors->GetError(errors->GetCount() - 1).GetType(), c.errorType)
      << errors->GetError(errors->GetCount() - 1).GetText().ToUtf8();
  if (c.code != -1) {
    EXPECT_EQ(contentsOf(db), before);
    EXPECT_EQ(db.IsModified(), modifiedBefore);
  }
  ODLEXDatabase::KillDatabaseList();
}

INSTANTIATE_TEST_SUITE_P(Cases, MergeErrorsTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MergeMemory, ALargeBinaryCellIsCopiedWithoutBeingHeld) {
  constexpr std::uint64_t kCellSize = 64ull << 20;
  TempDir dir;
  const auto package = dir / "package.msi";
  writeSmallPackage(package, "Product", "payload");
  addMergePlace(package);
  writeSparseFile(dir / "data", kCellSize);
  writeSmallModule(dir / "module.msm", dir / "data");

  ODLEXDatabase::INIT();
  const long before = peakResidentBytes();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
  db.MergeModule(text(dir / "module.msm"), u"Complete", u"TARGETDIR", {});
  ASSERT_TRUE(db.SaveChanges());
  ODLEXDatabase::KillDatabaseList();
  const long grown = peakResidentBytes() - before;
  EXPECT_LT(grown, 16L << 20) << "peak memory grew by " << (grown >> 20) << " MiB";

  engine::Error error;
  auto saved = engine::Database::open(storage::FileSystem::real(), package,
                                      engine::Database::OpenMode::kReadOnly, error);
  ASSERT_TRUE(saved) << error.text;
  const auto cell = saved->streamSource(u"Binary.Data", error);
  ASSERT_TRUE(cell) << error.text;
  expectSparseStream(*cell, kCellSize);
}

}  // namespace
}  // namespace odlex::test
