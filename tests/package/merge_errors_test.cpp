// Each problem a merge can meet produces its merge error; those that end the merge throw the
// code of their step and leave the package as it was.

#include <gtest/gtest.h>

#include <odlex/tables/ODLEXDatabaseError.h>

#include "common/DatabaseTest.h"
#include "common/PackageTest.h"
#include "package/MergeTestSupport.h"

namespace odlex::test {
namespace {

struct MergeCase {
  const char* name;
  IdtFiles changes;  // tables replacing or joining the baseline module's
  std::vector<std::pair<TalString, TalString>> configuration;
  const char16_t* feature;
  const char16_t* directory;
  bool baselineMergedFirst;  // the unchanged baseline module is merged into the package before
  int code;                  // the code thrown; -1 when the merge succeeds
  int errorType;             // the kind of the last merge error
};

// Test output names a case by its name, not by its bytes.
void PrintTo(const MergeCase& c, std::ostream* out) {
  *out << c.name;
}

const std::string kEmptyConfiguration =
    "Name\tFormat\tType\tContextData\tDefaultValue\tAttributes\tDisplayName\tDescription\t"
    "HelpLocation\tHelpKeyword\ns72\ti2\tS72\tS0\tS0\tI4\tL0\tL0\tS0\tS0\nModuleConfiguration\tName"
    "\n";

const MergeCase kCases[] = {
    {"MissingDependency",
     {{"ModuleDependency.idt",
       "ModuleID\tModuleLanguage\tRequiredID\tRequiredLanguage\tRequiredVersion\n"
       "s72\ti2\ts72\ti2\tS32\nModuleDependency\tModuleID\tModuleLanguage\tRequiredID\t"
       "RequiredLanguage\nOdlexMod.G\t1033\tOther.G\t0\t2.0\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     -1,
     ODLEXMergeError::eMissingDependency},
    {"DependencyOnAnOlderVersion",
     {{"ModuleSignature.idt",
       "ModuleID\tLanguage\tVersion\ns72\ti2\ts32\nModuleSignature\tModuleID\tLanguage\n"
       "Second.G\t1033\t1.0\n"},
      {"ModuleDependency.idt",
       "ModuleID\tModuleLanguage\tRequiredID\tRequiredLanguage\tRequiredVersion\n"
       "s72\ti2\ts72\ti2\tS32\nModuleDependency\tModuleID\tModuleLanguage\tRequiredID\t"
       "RequiredLanguage\nSecond.G\t1033\tOdlexMod.G\t1033\t1.0.0.10\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     true,
     -1,
     ODLEXMergeError::eMissingDependency},
    {"ExcludesAMergedModule",
     {{"ModuleSignature.idt",
       "ModuleID\tLanguage\tVersion\ns72\ti2\ts32\nModuleSignature\tModuleID\tLanguage\n"
       "Second.G\t1033\t1.0\n"},
      {"ModuleExclusion.idt",
       "ModuleID\tModuleLanguage\tExcludedID\tExcludedLanguage\tExcludedMinVersion\t"
       "ExcludedMaxVersion\ns72\ti2\ts72\ti2\tS32\tS32\nModuleExclusion\tModuleID\t"
       "ModuleLanguage\tExcludedID\tExcludedLanguage\nSecond.G\t1033\tOdlexMod.G\t0\t1.0\t\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     true,
     50,
     ODLEXMergeError::eExclusion},
    {"NoSignature",
     {{"ModuleSignature.idt",
       "ModuleID\tLanguage\tVersion\ns72\ti2\ts32\nModuleSignature\tModuleID\tLanguage\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     49,
     ODLEXMergeError::eModuleUnreadable},
    {"RequiredItemWithoutValue",
     {{"ModuleConfiguration.idt", kEmptyConfiguration + "Greeting\t0\t\t\t\t2\t\t\t\t\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     51,
     ODLEXMergeError::eBadNullSubstitution},
    {"ValueForAnUnknownItem",
     {},
     {{u"Nope", u"1"}},
     u"Complete",
     u"INSTALLDIR",
     false,
     51,
     ODLEXMergeError::eMissingConfigItem},
    {"TextForAnIntegerItem",
     {{"ModuleConfiguration.idt", kEmptyConfiguration + "Greeting\t2\t\t\t7\t0\t\t\t\t\n"}},
     {{u"Greeting", u"seven"}},
     u"Complete",
     u"INSTALLDIR",
     false,
     51,
     ODLEXMergeError::eBadSubstitutionType},
    {"MissingFeature",
     {},
     {},
     u"NoSuchFeature",
     u"INSTALLDIR",
     false,
     53,
     ODLEXMergeError::eFeatureRequired},
    {"MissingDirectory", {}, {}, u"Complete", u"NoSuchDir", false, 53, ODLEXMergeError::eDirCreate},
    {"TextInAnIntegerColumn",
     {{"Media.idt", "DiskId\tLastSequence\ns72\ti2\nMedia\tDiskId\nfirst\t1\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     54,
     ODLEXMergeError::eTableMerge},
    {"UnknownBaseAction",
     {{"ModuleInstallExecuteSequence.idt",
       "Action\tSequence\tBaseAction\tAfter\tCondition\ns64\tI2\tS64\tI2\tS255\n"
       "ModuleInstallExecuteSequence\tAction\nModAction.G\t\tNoSuchAction\t0\t\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     57,
     ODLEXMergeError::eResequenceMerge},
    {"BaseActionsInACycle",
     {{"ModuleInstallExecuteSequence.idt",
       "Action\tSequence\tBaseAction\tAfter\tCondition\ns64\tI2\tS64\tI2\tS255\n"
       "ModuleInstallExecuteSequence\tAction\nModAction.G\t\tModAction2.G\t1\t\n"
       "ModAction2.G\t\tModAction.G\t1\t\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     57,
     ODLEXMergeError::eResequenceMerge},
    {"ConflictingDirectory",
     {{"Directory.idt",
       "Directory\tDirectory_Parent\tDefaultDir\ns72\tS72\tl255\nDirectory\tDirectory\n"
       "TARGETDIR\t\tSourceDir\nModDir.G\tTARGETDIR\tModFiles\nDataDir\tTARGETDIR\tother\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     53,
     ODLEXMergeError::eDirCreate},
    {"RowConflictsWithThePackage",
     {{"Property.idt", "Property\tValue\ns72\tl0\nProperty\tProperty\nALLUSERS\t2\n"}},
     {},
     u"Complete",
     u"INSTALLDIR",
     false,
     -1,
     ODLEXMergeError::eTableMerge},
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

}  // namespace
}  // namespace odlex::test
