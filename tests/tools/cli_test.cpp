// The odlex tool's own behaviour: usage mistakes, outputs that must not touch the input, and
// import into a new or copied package. Table contents are checked against msitools in the
// oracle tests.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "common/Oracle.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

void writeText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string readBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

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

TEST(OdlexImport, CreatesAMissingPackageAndLeavesTheSourceOfACopyAlone) {
  TempDir dir;
  writeText(dir / "Property.idt", kPropertyIdt);
  ASSERT_TRUE(
      runOdlex({"import", (dir / "new.msi").string(), (dir / "Property.idt").string()}).ok());
  EXPECT_EQ(runOdlex({"tables", (dir / "new.msi").string()}).out, "Property\n");

  const std::string before = readBytes(dir / "new.msi");
  writeText(dir / "Extra.idt", "Key\r\ns16\r\nExtra\tKey\r\na\r\n");
  ProcessResult copy = runOdlex({"import", (dir / "new.msi").string(), (dir / "Extra.idt").string(),
                                 "-o", (dir / "copy.msi").string()});
  ASSERT_TRUE(copy.ok()) << copy.describe();
  EXPECT_EQ(readBytes(dir / "new.msi"), before);
  EXPECT_EQ(runOdlex({"tables", (dir / "copy.msi").string()}).out, "Property\nExtra\n");
}

TEST(OdlexImport, AFailedImportLeavesThePackageUntouched) {
  TempDir dir;
  writeText(dir / "Property.idt", kPropertyIdt);
  ASSERT_TRUE(runOdlex({"import", (dir / "p.msi").string(), (dir / "Property.idt").string()}).ok());
  const std::string before = readBytes(dir / "p.msi");
  writeText(dir / "Broken.idt", "Key\tValue\r\ns16\ti2\r\nBroken\tKey\r\na\tnot-a-number\r\n");
  ProcessResult result = runOdlex({"import", (dir / "p.msi").string(),
                                   (dir / "Property.idt").string(), (dir / "Broken.idt").string()});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("Broken.idt"), std::string::npos) << result.err;
  EXPECT_EQ(readBytes(dir / "p.msi"), before);
}

TEST(OdlexQuery, PrintsRowsTabSeparatedWithNullsEmpty) {
  TempDir dir;
  writeText(dir / "T.idt", "K\tN\tS\r\ni2\tI4\tS10\r\nT\tK\r\n1\t-5\tx\r\n2\t\t\r\n");
  ASSERT_TRUE(runOdlex({"import", (dir / "t.msi").string(), (dir / "T.idt").string()}).ok());
  ProcessResult result =
      runOdlex({"query", (dir / "t.msi").string(), "SELECT * FROM T ORDER BY K"});
  ASSERT_TRUE(result.ok()) << result.describe();
  EXPECT_EQ(result.out, "1\t-5\tx\n2\t\t\n");
  ProcessResult bad = runOdlex({"query", (dir / "t.msi").string(), "SELECT * FORM T"});
  EXPECT_EQ(bad.exitCode, 1);
  EXPECT_NE(bad.err.find("(error 1615)"), std::string::npos) << bad.err;
  ProcessResult unknown = runOdlex({"query", (dir / "t.msi").string(), "SELECT * FROM Nope"});
  EXPECT_NE(unknown.err.find("(error 1628)"), std::string::npos) << unknown.err;
}

TEST(OdlexRows, PrintsTheLiveRowsOfATableObjectInKeyOrder) {
  TempDir dir;
  writeText(dir / "Property.idt",
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

  ProcessResult unknown = runOdlex({"rows", (dir / "p.msi").string(), "property"});
  EXPECT_EQ(unknown.exitCode, 1);
  EXPECT_NE(unknown.err.find("(error 1628)"), std::string::npos) << unknown.err;
  ProcessResult missing = runOdlex({"rows", (dir / "none.msi").string(), "Property"});
  EXPECT_NE(missing.err.find("(error 110)"), std::string::npos) << missing.err;
}

}  // namespace
}  // namespace odlex::test
