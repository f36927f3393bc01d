// The odlex tool's own behaviour: the manual and completion, the text of query and rows output,
// the progress bar, where query writes, and the example host program. Table contents are checked
// against msitools in the oracle tests; failures are the command walk's.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "common/PackageTest.h"

namespace odlex::test {
namespace {

using nlohmann::json;

// The manual, the man page and the shell completion are made from the commands themselves.
TEST(OdlexSurface, TheManualAndTheCompletionFollowTheCommands) {
  // docs/tool.md is the manual as the tool prints it; after changing a command, run
  // `odlex manual > docs/tool.md`.
  EXPECT_EQ(runOdlex({"manual"}).out, readFileBytes(ODLEX_SOURCE_DIR "/docs/tool.md"));
  const std::string man = runOdlex({"manual", "--format", "man"}).out;
  EXPECT_TRUE(man.starts_with(".TH ODLEX 1\n")) << man.substr(0, 80);
  for (const std::string command : {"tables", "sequence list", "action add-product"})
    EXPECT_NE(man.find(".SS odlex " + command + "\n"), std::string::npos) << command;

  TempDir dir;
  writeFileBytes(dir / "odlex.bash", runOdlex({"completion", "bash"}).out);
  const auto complete = [&](const std::string& words, int current) {
    return runProcess({"bash", "-c",
                       "source " + (dir / "odlex.bash").string() + "; COMP_WORDS=(" + words +
                           "); COMP_CWORD=" + std::to_string(current) +
                           "; _odlex; echo \"${COMPREPLY[*]}\""})
        .out;
  };
  EXPECT_EQ(complete("odlex seq", 1), "sequence\n");
  EXPECT_TRUE(complete("odlex sequence ''", 2).starts_with("list free"))
      << complete("odlex sequence ''", 2);
  EXPECT_EQ(complete("odlex sequence free p.msi --a", 4), "--after\n");
}

// A package made by import: T with numbers and nulls, Property with a tab inside a value.
class OdlexOutput : public ::testing::Test {
 protected:
  void SetUp() override {
    writeFileBytes(dir_ / "T.idt", "K\tN\tS\r\ni2\tI4\tS10\r\nT\tK\r\n1\t-5\tx\r\n2\t\t\r\n");
    writeFileBytes(dir_ / "Property.idt",
                   "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nZeta\tlast\r\n"
                   "Alpha\tA\x10tab\r\n");
    ASSERT_TRUE(
        runOdlex({"import", package_, (dir_ / "T.idt").string(), (dir_ / "Property.idt").string()})
            .ok());
  }

  TempDir dir_;
  std::string package_ = (dir_ / "p.msi").string();
  std::string out_ = (dir_ / "out.msi").string();
};

// query prints the selected rows tab-separated, nulls empty; rows prints a table object's live
// rows in key order under its column names, a tab inside a value written as in table text files.
TEST_F(OdlexOutput, QueryAndRowsPrintTabSeparatedText) {
  EXPECT_EQ(odlexOutput({"query", package_, "SELECT * FROM T ORDER BY K"}), "1\t-5\tx\n2\t\t\n");
  EXPECT_EQ(odlexOutput({"rows", package_, "Property"}),
            "Property\tValue\nAlpha\tA\x10tab\nZeta\tlast\n");
  EXPECT_TRUE(
      odlexOutput({"rows", package_, "Shortcut"}).starts_with("Shortcut\tDirectory_\tName\t"));
}

// Long work draws a bar on stderr when asked (a terminal asks after a second); scripts see none.
TEST_F(OdlexOutput, TheProgressBarIsDrawnOnlyWhenAsked) {
  for (const auto& [setting, drawn] : {std::pair{"always", true}, {"never", false}, {"", false}}) {
    const ProcessResult result = runProcess({"env", std::string("ODLEX_PROGRESS=") + setting,
                                             ODLEX_TOOL_PATH, "rewrite", package_, "-o", out_});
    ASSERT_TRUE(result.ok()) << result.describe();
    EXPECT_EQ(result.err.starts_with("\rrewrite ["), drawn) << setting << ": " << result.err;
    EXPECT_EQ(result.err.ends_with(" MiB\n"), drawn) << setting;
  }
}

// A statement that changes the package writes to -o OUT, leaving the package, and --json says
// where; writing in place, a dry run, or a failing statement writing nothing are tested with the
// other commands (package_commands_test, the command walk).
TEST_F(OdlexOutput, QueryWritesToTheOutputFileAndSaysWhere) {
  const std::string original = readFileBytes(package_);
  EXPECT_EQ(
      json::parse(odlexOutput({"query", package_, "DELETE FROM Property WHERE Property = 'Alpha'",
                               "-o", out_, "--json"})),
      (json{{"written", true}, {"package", out_}}));
  EXPECT_EQ(readFileBytes(package_), original);
  EXPECT_EQ(odlexOutput({"rows", out_, "Property"}), "Property\tValue\nZeta\tlast\n");
}

// The example host program edits a copy of the wixl-built package in place; a second run finds
// the Error row it adds in place, fails and changes nothing more.
using HostExample = PackageCopyTest;

TEST_F(HostExample, EditsASavedPackage) {
  copyPackage(PackageKind::kWixl);
  const std::string package = package_.string();
  ASSERT_TRUE(odlexOutput({"rows", package, "Shortcut"}).find("\nStartMenuShortcut\t") !=
              std::string::npos);
  const ProcessResult run =
      runProcess({ODLEX_HOST_EXAMPLE, package, "ARPHELPLINK", "https://example.org/support",
                  "25000", "Could not reach [2].", "StartMenuShortcut"});
  ASSERT_TRUE(run.ok()) << run.describe();
  const std::string edited = readFileBytes(package_);
  EXPECT_NE(odlexOutput({"rows", package, "Property"})
                .find("\nARPHELPLINK\thttps://example.org/support\n"),
            std::string::npos);
  EXPECT_NE(odlexOutput({"rows", package, "Error"}).find("\n25000\tCould not reach [2].\n"),
            std::string::npos);
  EXPECT_EQ(splitLines(odlexOutput({"rows", package, "Shortcut"})).size(), 1u) << "the header";
  EXPECT_FALSE(runProcess({ODLEX_HOST_EXAMPLE, package, "ARPHELPLINK", "x", "25000", "y",
                           "StartMenuShortcut"})
                   .ok());
  EXPECT_EQ(readFileBytes(package_), edited);
}

}  // namespace
}  // namespace odlex::test
