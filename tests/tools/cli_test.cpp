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

// query prints the selected rows tab-separated, nulls empty; rows prints a table object's live
// rows in key order under its column names, a tab inside a value written as in table text files.
TEST(OdlexRows, QueryAndRowsPrintTabSeparatedText) {
  TempDir dir;
  writeFileBytes(dir / "T.idt", "K\tN\tS\r\ni2\tI4\tS10\r\nT\tK\r\n1\t-5\tx\r\n2\t\t\r\n");
  writeFileBytes(dir / "Property.idt",
                 "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nZeta\tlast\r\n"
                 "Alpha\tA\x10tab\r\n");
  const std::string package = (dir / "p.msi").string();
  ASSERT_TRUE(
      runOdlex({"import", package, (dir / "T.idt").string(), (dir / "Property.idt").string()})
          .ok());
  EXPECT_EQ(odlexOutput({"query", package, "SELECT * FROM T ORDER BY K"}), "1\t-5\tx\n2\t\t\n");
  EXPECT_EQ(odlexOutput({"rows", package, "Property"}),
            "Property\tValue\nAlpha\tA\x10tab\nZeta\tlast\n");
  EXPECT_TRUE(
      odlexOutput({"rows", package, "Shortcut"}).starts_with("Shortcut\tDirectory_\tName\t"));
}

// Failures on a package that opens exit with status 1 and name the installer result code or
// the key that was asked for; those on files that are not packages are the damaged-package
// tests'.
TEST(OdlexErrors, FailuresExitWithStatusOneAndNameTheCodeOrTheKey) {
  TempDir dir;
  writeFileBytes(dir / "Property.idt", kPropertyIdt);
  const std::string package = (dir / "p.msi").string();
  ASSERT_TRUE(runOdlex({"import", package, (dir / "Property.idt").string()}).ok());
  const std::string before = readFileBytes(package);
  struct Case {
    std::vector<std::string> args;
    std::string named;  // a part of stderr
  };
  for (const Case& c : std::vector<Case>{
           {{"query", package, "SELECT * FORM Property"}, "(error 1615)"},
           {{"query", package, "SELECT * FROM Nope"}, "(error 1628)"},
           {{"rows", package, "property"}, "(error 1628)"},
           {{"component", "show", package, "NoSuchComponent"}, "NoSuchComponent"},
           {{"component", "add", package, "NoSuchFolder"}, "NoSuchFolder"},
           {{"component", "delete", package, "NoSuchComponent"}, "NoSuchComponent"}}) {
    ProcessResult result = runOdlex(c.args);
    EXPECT_EQ(result.exitCode, 1) << c.args[1];
    EXPECT_NE(result.err.find(c.named), std::string::npos) << c.args[1] << ": " << result.err;
  }
  EXPECT_EQ(readFileBytes(package), before);
}

}  // namespace
}  // namespace odlex::test
