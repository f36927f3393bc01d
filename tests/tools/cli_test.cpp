// The odlex tool's own behaviour: the manual and completion, failed imports that must not touch
// the package, the text of query and rows output, and the result codes of failures. Table contents
// are checked against msitools in the oracle tests.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

const char kPropertyIdt[] =
    "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nProductName\tSample\r\n";

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

TEST(OdlexImport, AFailedImportLeavesThePackageUntouched) {
  TempDir dir;
  writeFileBytes(dir / "Property.idt", kPropertyIdt);
  ASSERT_TRUE(runOdlex({"import", (dir / "p.msi").string(), (dir / "Property.idt").string()}).ok());
  const std::string before = readFileBytes(dir / "p.msi");
  writeFileBytes(dir / "Broken.idt", "Key\tValue\r\ns16\ti2\r\nBroken\tKey\r\na\tnot-a-number\r\n");
  const ProcessResult result =
      runOdlex({"import", (dir / "p.msi").string(), (dir / "Property.idt").string(),
                (dir / "Broken.idt").string()});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("Broken.idt"), std::string::npos) << result.err;
  EXPECT_EQ(readFileBytes(dir / "p.msi"), before);
}

// Long work draws a bar on stderr when asked (a terminal asks after a second); scripts see none.
TEST(OdlexProgress, TheBarIsDrawnOnlyWhenAsked) {
  TempDir dir;
  writeFileBytes(dir / "Property.idt", kPropertyIdt);
  const std::string package = (dir / "p.msi").string();
  ASSERT_TRUE(runOdlex({"import", package, (dir / "Property.idt").string()}).ok());
  for (const auto& [setting, drawn] : {std::pair{"always", true}, {"never", false}, {"", false}}) {
    const ProcessResult result =
        runProcess({"env", std::string("ODLEX_PROGRESS=") + setting, ODLEX_TOOL_PATH, "rewrite",
                    package, "-o", (dir / "out.msi").string()});
    ASSERT_TRUE(result.ok()) << result.describe();
    EXPECT_EQ(result.err.starts_with("\rrewrite ["), drawn) << setting << ": " << result.err;
    EXPECT_EQ(result.err.ends_with(" MiB\n"), drawn) << setting;
  }
}

TEST(OdlexQuery, PrintsRowsTabSeparatedWithNullsEmpty) {
  TempDir dir;
  writeFileBytes(dir / "T.idt", "K\tN\tS\r\ni2\tI4\tS10\r\nT\tK\r\n1\t-5\tx\r\n2\t\t\r\n");
  ASSERT_TRUE(runOdlex({"import", (dir / "t.msi").string(), (dir / "T.idt").string()}).ok());
  ProcessResult result =
      runOdlex({"query", (dir / "t.msi").string(), "SELECT * FROM T ORDER BY K"});
  ASSERT_TRUE(result.ok()) << result.describe();
  EXPECT_EQ(result.out, "1\t-5\tx\n2\t\t\n");
}

TEST(OdlexRows, PrintsTheLiveRowsOfATableObjectInKeyOrder) {
  TempDir dir;
  writeFileBytes(dir / "Property.idt",
                 "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nZeta\tlast\r\n"
                 "Alpha\tA\x10tab\r\n");
  ASSERT_TRUE(runOdlex({"import", (dir / "p.msi").string(), (dir / "Property.idt").string()}).ok());
  ProcessResult rows = runOdlex({"rows", (dir / "p.msi").string(), "Property"});
  ASSERT_TRUE(rows.ok()) << rows.describe();
  EXPECT_EQ(rows.out, "Property\tValue\nAlpha\tA\x10tab\nZeta\tlast\n")
      << "a tab inside a value is written as in table text files";

  ProcessResult empty = runOdlex({"rows", (dir / "p.msi").string(), "Shortcut"});
  ASSERT_TRUE(empty.ok()) << empty.describe();
  EXPECT_TRUE(empty.out.starts_with("Shortcut\tDirectory_\tName\t")) << empty.out;
}

// Failures on a package that opens name the installer result code; those on files that are not
// packages are the damaged-package tests'.
TEST(OdlexErrors, FailuresExitWithStatusOneAndNameTheResultCode) {
  TempDir dir;
  writeFileBytes(dir / "Property.idt", kPropertyIdt);
  const std::string package = (dir / "p.msi").string();
  ASSERT_TRUE(runOdlex({"import", package, (dir / "Property.idt").string()}).ok());
  struct Case {
    std::vector<std::string> args;
    const char* code;
  };
  for (const Case& c : std::vector<Case>{{{"query", package, "SELECT * FORM Property"}, "1615"},
                                         {{"query", package, "SELECT * FROM Nope"}, "1628"},
                                         {{"rows", package, "property"}, "1628"}}) {
    ProcessResult result = runOdlex(c.args);
    EXPECT_EQ(result.exitCode, 1) << c.args[2];
    EXPECT_NE(result.err.find("(error " + std::string(c.code) + ")"), std::string::npos)
        << c.args[2] << ": " << result.err;
  }
}

}  // namespace
}  // namespace odlex::test
