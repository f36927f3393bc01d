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

}  // namespace
}  // namespace odlex::test
