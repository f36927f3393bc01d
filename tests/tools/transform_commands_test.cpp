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
  const std::string mst = (dir_ / "edit.mst").string();
  const std::string out = (dir_ / "out.msi").string();
  const std::string embedded = (dir_ / "embedded.msi").string();
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string written;  // a file that must exist afterwards, or "" for none checked
    std::string absent;   // a file that must not exist afterwards
  };
  const std::vector<Case> cases = {
      {{"transform", "generate", base_.string(), edited_.string(), "-o", mst, "--suppress",
        "add-existing-row,update-missing-row", "--validate", "product"},
       0,
       mst,
       ""},
      {{"transform", "generate", base_.string(), base_.string(), "-o",
        (dir_ / "same.mst").string()},
       0,
       "",
       (dir_ / "same.mst").string()},
      {{"transform", "generate", base_.string(), edited_.string(), "-o", mst, "--suppress",
        "bogus"},
       2,
       "",
       ""},
      {{"transform", "apply", base_.string(), mst, "-o", out}, 0, out, ""},
      // Applied again, the deleted row is missing: nothing is written.
      {{"transform", "apply", out, mst, "-o", (dir_ / "again.msi").string()},
       1,
       "",
       (dir_ / "again.msi").string()},
      {{"transform", "embed", base_.string(), mst, "edit", "-o", embedded}, 0, embedded, ""},
      {{"transform", "apply", embedded, ":edit", "-o", (dir_ / "from-embedded.msi").string()},
       0,
       (dir_ / "from-embedded.msi").string(),
       ""},
      {{"transform", "show", mst}, 2, "", ""},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.args[1] + " " + test.args.back());
    const ProcessResult run = runOdlex(test.args);
    EXPECT_EQ(run.exitCode, test.exitCode) << run.describe();
    if (!test.written.empty()) {
      EXPECT_TRUE(fs::exists(test.written));
    }
    if (!test.absent.empty()) {
      EXPECT_FALSE(fs::exists(test.absent));
    }
  }
  EXPECT_TRUE(splitLines(odlexOutput({"diff", edited_.string(), out})).empty());
}

}  // namespace
}  // namespace odlex::test
