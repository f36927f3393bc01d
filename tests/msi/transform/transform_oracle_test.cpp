// A transform written by odlex between two wixl-built packages, applied by odlex to a copy of
// the base, gives the target's tables exactly, as msiinfo (an independent reader) exports them.
// libmsi 0.101 cannot serve as a second applier: it does not find the table of any table stream
// of a transform (it looks the name up with the stream's table mark half removed).

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/transform/Transform.h"
#include "storage/FileSystem.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// The wixl fixture with edits of every kind a transform carries: changed, added and removed
// rows in several tables, a table the base does not have (Upgrade), and a file whose new
// contents change the embedded cabinet, a stream outside the tables.
fs::path buildTarget(const TempDir& dir) {
  std::ifstream in(fixturePath("wixl/product.wxs"));
  std::stringstream text;
  text << in.rdbuf();
  std::string wxs = text.str();
  const std::vector<std::pair<std::string, std::string>> edits = {
      {"Version=\"1.2.3\"", "Version=\"1.3.0\""},
      {"<Property Id=\"ARPHELPLINK\" Value=\"https://example.com/help\" />",
       "<Property Id=\"NEWPROPERTY\" Value=\"added\" />"},
      {"Value=\"Grüße aus Zürich\" />", "Value=\"Grüße aus Bern\" />"},
      {"Title=\"Daten\"", "Title=\"Data files\""},
      {"<Media Id=\"1\"",
       "<Upgrade Id=\"4A7F2C91-0B3E-4D6A-8C55-1E9F3A2B6D47\"><UpgradeVersion Minimum=\"1.0.0\" "
       "Maximum=\"1.3.0\" Property=\"OLDERFOUND\" /></Upgrade>\n    <Media Id=\"1\""},
  };
  for (const auto& [from, to] : edits) {
    const std::size_t at = wxs.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos)
      wxs.replace(at, from.size(), to);
  }
  writeFileBytes(dir / "target.wxs", wxs);
  writeWixlPayload(dir.path());
  writeFileBytes(dir / "readme.txt", "a longer readme, so that the cabinet changes\r\n");
  const fs::path target = dir / "target.msi";
  ProcessResult run = runProcess({"wixl", "-o", target.string(), "target.wxs"}, dir.path());
  EXPECT_TRUE(run.ok()) << run.describe();
  return target;
}

void applyWithOdlex(const fs::path& base, const fs::path& transform, const fs::path& out) {
  storage::FileSystem& files = storage::FileSystem::real();
  engine::Error error;
  auto db = engine::Database::openInto(files, base, out, error);
  ASSERT_NE(db, nullptr) << error.text;
  storage::CompoundNode tree;
  transform::DecodedTransform decoded;
  std::vector<transform::Conflict> conflicts;
  ASSERT_TRUE(transform::readTransformFile(files, transform, tree, error)) << error.text;
  ASSERT_TRUE(transform::decodeTransform(tree, *db, decoded, error)) << error.text;
  ASSERT_EQ(transform::applyTransform(*db, decoded, 0, conflicts, error), engine::kSuccess)
      << error.text;
  ASSERT_EQ(db->commit(error), engine::kSuccess) << error.text;
}

::testing::AssertionResult sameTablesAs(const fs::path& expected, const fs::path& actual) {
  std::vector<std::string> tables = msiinfoPersistentTables(expected);
  std::vector<std::string> found = msiinfoPersistentTables(actual);
  std::sort(tables.begin(), tables.end());
  std::sort(found.begin(), found.end());
  if (auto same = linesEqual(tables, found, "tables"); !same)
    return same;
  for (const std::string& table : tables) {
    std::vector<std::string> want = msiinfoRows(expected, table);
    std::vector<std::string> got = msiinfoRows(actual, table);
    std::sort(want.begin(), want.end());
    std::sort(got.begin(), got.end());
    if (auto same = linesEqual(want, got, "table " + table); !same)
      return same;
  }
  return ::testing::AssertionSuccess();
}

TEST(TransformOracle, AppliedToTheBaseItGivesTheTarget) {
  TempDir dir;
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  const fs::path target = buildTarget(dir);

  engine::Error error;
  storage::FileSystem& files = storage::FileSystem::real();
  auto base =
      engine::Database::open(files, built.file, engine::Database::OpenMode::kReadOnly, error);
  auto wanted = engine::Database::open(files, target, engine::Database::OpenMode::kReadOnly, error);
  ASSERT_TRUE(base && wanted) << error.text;
  storage::CompoundNode tree;
  bool differs = false;
  ASSERT_TRUE(transform::generateTransform(*base, *wanted, {}, tree, differs, error)) << error.text;
  ASSERT_TRUE(differs);
  const fs::path mst = dir / "base-to-target.mst";
  ASSERT_TRUE(transform::writeTransformFile(files, mst, tree, error)) << error.text;

  applyWithOdlex(built.file, mst, dir / "by-odlex.msi");
  EXPECT_TRUE(sameTablesAs(target, dir / "by-odlex.msi"));
  const std::string cabinet = msiinfoExtract(target, "product.cab").out;
  EXPECT_NE(cabinet, msiinfoExtract(built.file, "product.cab").out);
  EXPECT_EQ(cabinet, msiinfoExtract(dir / "by-odlex.msi", "product.cab").out);
}

}  // namespace
}  // namespace odlex::test
