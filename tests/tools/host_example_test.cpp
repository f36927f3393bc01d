// The example host program on a wixl-built package: its edits are in the saved file.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

bool contains(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(HostExample, EditsASavedPackage) {
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  TempDir dir;
  const std::filesystem::path package = dir / "product.msi";
  std::filesystem::copy_file(built.file, package);
  const auto before = msiinfoRows(package, "Shortcut");
  ASSERT_EQ(before.size(), 1u);
  ASSERT_TRUE(before[0].starts_with("StartMenuShortcut\t"));

  const ProcessResult run = runProcess({ODLEX_HOST_EXAMPLE, package.string(), "ARPHELPLINK",
                                        "https://example.org/support", "25000",
                                        "Could not reach [2].", "StartMenuShortcut"});
  ASSERT_TRUE(run.ok()) << run.describe();

  EXPECT_TRUE(
      contains(msiinfoRows(package, "Property"), "ARPHELPLINK\thttps://example.org/support"));
  EXPECT_TRUE(contains(msiinfoRows(package, "Error"), "25000\tCould not reach [2]."));
  EXPECT_TRUE(msiinfoRows(package, "Shortcut").empty());

  // A second run finds the Error row in place and changes nothing more.
  const ProcessResult again = runProcess({ODLEX_HOST_EXAMPLE, package.string(), "ARPHELPLINK", "x",
                                          "25000", "y", "StartMenuShortcut"});
  EXPECT_FALSE(again.ok());
  EXPECT_TRUE(
      contains(msiinfoRows(package, "Property"), "ARPHELPLINK\thttps://example.org/support"));
}

}  // namespace
}  // namespace odlex::test
