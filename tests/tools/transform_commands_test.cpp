// The transform and diff commands on a wixl-built package and a copy edited here: diff lists
// exactly the edits; the transform commands' plumbing (exit status, files written or not, the
// JSON keys). What a transform carries and how it applies is the library's, tested there.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

class TransformCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    const BuiltPackage& built = testPackage(PackageKind::kWixl);
    ASSERT_FALSE(built.file.empty()) << built.error;
    fs::copy_file(built.file, base_);
    fs::copy_file(built.file, edited_);
    // Three edits of the Property table: a value changed, a row deleted, a row added.
    for (const char* statement :
         {"UPDATE `Property` SET `Value` = 'Hallo' WHERE `Property` = 'GREETING'",
          "DELETE FROM `Property` WHERE `Property` = 'ARPHELPLINK'",
          "INSERT INTO `Property` (`Property`, `Value`) VALUES ('NEWPROP', 'new')"})
      odlexOutput({"query", edited_.string(), statement});
  }

  TempDir dir_;
  fs::path base_ = dir_ / "base.msi";
  fs::path edited_ = dir_ / "edited.msi";
};

TEST_F(TransformCommands, DiffListsExactlyTheEdits) {
  EXPECT_TRUE(linesEqual(sortedLines("cell\tProperty\tGREETING\tValue\tGrüße aus Zürich\tHallo\n"
                                     "row\tProperty\tNEWPROP\tadded\n"
                                     "cell\tProperty\tNEWPROP\tValue\t\tnew\n"
                                     "row\tProperty\tARPHELPLINK\tdeleted\n"),
                         sortedLines(odlexOutput({"diff", base_.string(), edited_.string()})),
                         "odlex diff"));
  const auto json =
      nlohmann::json::parse(odlexOutput({"diff", base_.string(), edited_.string(), "--json"}));
  ASSERT_EQ(json["tables"].size(), 1u);
  EXPECT_EQ(json["tables"][0]["rows"].size(), 3u);
  EXPECT_TRUE(splitLines(odlexOutput({"diff", base_.string(), base_.string()})).empty());
}

// Each command's exit status and what it leaves on disk.
TEST_F(TransformCommands, ExitStatusAndFilesWritten) {
  const std::string base = base_.string();
  const auto at = [&](const char* name) { return (dir_ / name).string(); };
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    const char* file;  // a file in the test's folder that must exist afterwards, or not
    bool written;
  };
  const std::vector<Case> cases = {
      {{"transform", "generate", base, edited_.string(), "-o", at("edit.mst"), "--suppress",
        "add-existing-row,update-missing-row", "--validate", "product"},
       0,
       "edit.mst",
       true},
      {{"transform", "generate", base, base, "-o", at("same.mst")}, 0, "same.mst", false},
      {{"transform", "generate", base, edited_.string(), "-o", at("edit.mst"), "--suppress",
        "bogus"},
       2,
       "edit.mst",
       true},
      {{"transform", "apply", base, at("edit.mst"), "-o", at("out.msi")}, 0, "out.msi", true},
      // Applied again, the deleted row is missing: nothing is written.
      {{"transform", "apply", at("out.msi"), at("edit.mst"), "-o", at("again.msi")},
       1,
       "again.msi",
       false},
      {{"transform", "embed", base, at("edit.mst"), "edit", "-o", at("embedded.msi")},
       0,
       "embedded.msi",
       true},
      {{"transform", "apply", at("embedded.msi"), ":edit", "-o", at("from-embedded.msi")},
       0,
       "from-embedded.msi",
       true},
      {{"transform", "show", at("edit.mst")}, 2, "edit.mst", true},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.args[1] + " " + test.args.back());
    const ProcessResult run = runOdlex(test.args);
    EXPECT_EQ(run.exitCode, test.exitCode) << run.describe();
    EXPECT_EQ(fs::exists(dir_ / test.file), test.written);
  }
  EXPECT_TRUE(splitLines(odlexOutput({"diff", edited_.string(), at("out.msi")})).empty());
}

}  // namespace
}  // namespace odlex::test
