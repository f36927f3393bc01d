// The sequence and action commands: the tool's own ordering and naming of what it prints, and the
// failures that must leave every file untouched. The rules behind the numbers are the library's
// and are tested there.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/PackageTest.h"

namespace odlex::test {
namespace {

using nlohmann::json;

class OdlexActions : public PackageCopyTest {
 protected:
  void SetUp() override {
    copyPackage(PackageKind::kWixl);
    writeFileBytes(dll_, "MZ product actions");
  }

  std::filesystem::path dll_ = dir_ / "zrca.dll";
};

// The type fields by name, as action list prints them; where add-product places the actions and
// what rows it makes is the library's (product_actions_test).
TEST_F(OdlexActions, AddProductTextFilesListsTheTypeFieldsByName) {
  const std::filesystem::path out = dir_ / "out.msi";
  odlexOutput({"action", "add-product", package_.string(), "--dll", dll_.string(), "--text-files",
               "-o", out.string()});
  const json listed = json::parse(odlexOutput({"action", "list", out.string(), "--json"}));
  const json expected = {{"action", "ZrTextFileInstallChanges"},
                         {"type", 1025},
                         {"executable", "dll"},
                         {"sourceType", "binary"},
                         {"returnProcessing", "wait"},
                         {"scheduling", "deferred"},
                         {"impersonation", "impersonate"},
                         {"source", "zrca.dll"},
                         {"target", "TextFileInstallChanges"}};
  EXPECT_NE(std::find(listed["actions"].begin(), listed["actions"].end(), expected),
            listed["actions"].end())
      << listed.dump(1);
}

// A merge module's actions placed by base action are listed where they run.
TEST_F(OdlexActions, SequenceListPlacesModuleActionsByTheirBaseAction) {
  const std::filesystem::path idts = dir_ / "idt";
  std::filesystem::create_directories(idts);
  writeFileBytes(idts / "ModuleInstallExecuteSequence.idt",
                 "Action\tSequence\tBaseAction\tAfter\tCondition\r\n"
                 "s72\tI2\tS72\tI2\tS255\r\nModuleInstallExecuteSequence\tAction\r\n"
                 "CostFinalize\t1000\t\t\t\r\nInstallInitialize\t1400\t\t\tNOT Installed\r\n");
  const std::filesystem::path module = dir_ / "module.msm";
  ASSERT_TRUE(msibuildImport(module, idtFilesIn(idts)));
  odlexOutput({"action", "add-product", module.string(), "--dll", dll_.string(), "--report"});
  // A noun alone means its list.
  EXPECT_EQ(odlexOutput({"sequence", module.string(), "ModuleInstallExecuteSequence"}),
            "CostFinalize\t1000\t\t\t\n"
            "InstallInitialize\t1400\t\t\tNOT Installed\n"
            "ZrInstallInitialize\t\tInstallInitialize\tafter\t\n"
            // their base action is not in the module: last, in key order
            "ZrReportInstallFailure\t\tInstallFinalize\tbefore\t\n"
            "ZrReportInstallSuccess\t\tInstallFinalize\tbefore\t\n");
}

// Failures exit with status 1 and write nothing: not a sequence table, an action the table does
// not hold, a DLL that cannot be read.
TEST_F(OdlexActions, FailuresWriteNothing) {
  const std::string before = readFileBytes(package_);
  const std::filesystem::path out = dir_ / "out.msi";
  const std::string p = package_.string();
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"sequence", "list", p, "Property"},
           {"sequence", "free", p, "InstallExecuteSequence", "--after", "NoSuchAction"},
           {"action", "add-product", p, "--dll", (dir_ / "missing.dll").string(), "--report"},
           {"action", "add-product", p, "--dll", dir_.path().string(), "--report", "-o",
            out.string()},
       }) {
    const ProcessResult result = runOdlex(args);
    EXPECT_EQ(result.exitCode, 1) << args[1] << " " << args.back() << ": " << result.describe();
    EXPECT_TRUE(result.err.starts_with("odlex: ")) << result.err;
  }
  EXPECT_EQ(readFileBytes(package_), before);
  EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
}  // namespace odlex::test
