// Files that are not packages, or packages cut short, make every command fail cleanly: exit
// status 1 and a message on stderr naming result code 1620 (not a valid package), or 110 (open
// failed) for a file that does not exist, never a crash.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// The command lines to try on `package`; `out` is a free path for outputs.
std::vector<std::vector<std::string>> commandsOn(const fs::path& package, const fs::path& out) {
  std::string p = package.string();
  return {{"tables", p},
          {"export", p, "Property"},
          {"export-all", p, out.string()},
          {"rewrite", p, "-o", (out / "rewritten.msi").string()},
          {"query", p, "SELECT `Value` FROM `Property`"},
          {"rows", p, "Property"}};
}

void expectUnopenable(const fs::path& package, const TempDir& dir, bool includeImport,
                      const std::string& code) {
  fs::path out = dir / "out";
  fs::create_directories(out);
  auto commands = commandsOn(package, out);
  if (includeImport) {
    fs::path idt = dir / "Extra.idt";
    writeFileBytes(idt, "Key\r\ns16\r\nExtra\tKey\r\na\r\n");
    commands.push_back({"import", package.string(), idt.string()});
  }
  for (const auto& args : commands) {
    ProcessResult odlex = runOdlex(args);
    EXPECT_EQ(odlex.exitCode, 1) << ::testing::PrintToString(args) << ": " << odlex.describe();
    EXPECT_NE(odlex.err.find(code), std::string::npos)
        << ::testing::PrintToString(args) << ": " << odlex.err;
  }
}

TEST(UnopenablePackage, FailsEveryCommandAndLeavesTheFileAlone) {
  TempDir dir;
  // import creates a missing package, so it is not an error there.
  expectUnopenable(dir / "missing.msi", dir, false, "(error 110)");
  const BuiltPackage& built = testPackage(PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  // Nothing (which import must not take for a missing package), and a package cut short after
  // its first sectors. Which damage the container reader refuses is its own tests' (storage).
  for (const std::string& bytes : {std::string(), readFileBytes(built.file).substr(0, 1024)}) {
    writeFileBytes(dir / "bad.msi", bytes);
    expectUnopenable(dir / "bad.msi", dir, true, "(error 1620)");
    EXPECT_EQ(readFileBytes(dir / "bad.msi"), bytes);
  }
}

}  // namespace
}  // namespace odlex::test
