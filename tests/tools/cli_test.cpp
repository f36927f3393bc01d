// The odlex tool's own behaviour: usage mistakes, failed imports that must not touch the
// package, the text of query and rows output, and the result codes of failures. Table contents
// are checked against msitools in the oracle tests.

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

const char kPropertyIdt[] =
    "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nProductName\tSample\r\n";

TEST(OdlexUsage, MistakesExitWithStatusOneAndSayWhy) {
  struct Case {
    std::vector<std::string> args;
    std::string message;
  };
  for (const Case& c : std::vector<Case>{{{}, "usage"},
                                         {{"frobnicate"}, "unknown command frobnicate"},
                                         {{"tables"}, "tables takes 1 argument"},
                                         {{"export", "a.msi"}, "export takes 2 arguments"},
                                         {{"rewrite", "a.msi"}, "rewrite needs -o OUT"},
                                         {{"tables", "a.msi", "-o"}, "-o needs a file name"},
                                         {{"tables", "--bogus", "a.msi"}, "unknown option --bogus"},
                                         {{"import", "a.msi"}, "import takes a package"}}) {
    ProcessResult result = runOdlex(c.args);
    EXPECT_EQ(result.exitCode, 1) << result.describe();
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
  EXPECT_TRUE(runOdlex({"--help"}).ok());
}

TEST(OdlexImport, AFailedImportLeavesThePackageUntouched) {
  TempDir dir;
  writeFileBytes(dir / "Property.idt", kPropertyIdt);
  ASSERT_TRUE(runOdlex({"import", (dir / "p.msi").string(), (dir / "Property.idt").string()}).ok());
  const std::string before = readFileBytes(dir / "p.msi");
  writeFileBytes(dir / "Broken.idt", "Key\tValue\r\ns16\ti2\r\nBroken\tKey\r\na\tnot-a-number\r\n");
  ProcessResult result = runOdlex({"import", (dir / "p.msi").string(),
                                   (dir / "Property.idt").string(), (dir / "Broken.idt").string()});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("Broken.idt"), std::string::npos) << result.err;
  EXPECT_EQ(readFileBytes(dir / "p.msi"), before);
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
