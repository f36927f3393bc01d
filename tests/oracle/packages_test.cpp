// The oracle packages themselves, checked with msitools alone: they build, hold what the
// other oracle tests rely on, and the fixtures are written the way msiinfo prints them back
// (so a fixture file can serve as the expected export).

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/Container.h"
#include "common/IdtText.h"
#include "common/PackageCompare.h"
#include "common/PackageTest.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

class OraclePackage : public PackageTest {};

TEST_P(OraclePackage, IsReadByMsiinfo) {
  std::vector<std::string> tables = msiinfoPersistentTables(package());
  EXPECT_FALSE(tables.empty());
  for (const std::string& table : tables) {
    ProcessResult run = msiinfoExport(package(), table);
    EXPECT_TRUE(run.ok()) << table << ": " << run.describe();
  }
  EXPECT_TRUE(msiinfoSuminfo(package()).ok());
}

ODLEX_FOR_EVERY_PACKAGE(OraclePackage);

// Every fixture table, imported by msibuild, exports back as the fixture file.
void expectFixturesRoundTrip(PackageKind kind, const fs::path& sources) {
  const BuiltPackage& built = testPackage(kind);
  ASSERT_FALSE(built.file.empty()) << built.error;
  std::uint32_t codePage = packageCodePage(built.file);
  EXPECT_EQ(codePage, 1252u);
  for (const fs::path& idt : idtFilesIn(sources)) {
    std::string table = idt.stem().string();
    // libmsi adds a character count of 0 to the summary information it writes.
    if (table == "_SummaryInformation")
      continue;
    EXPECT_TRUE(sameIdt(readFileBytes(idt), msiinfoExport(built.file, table).out, codePage, table));
  }
}

class OracleFixtures : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!haveMsitools())
      GTEST_SKIP() << "msitools are not installed";
  }
};

TEST_F(OracleFixtures, IdtFixturesAreCanonical) {
  expectFixturesRoundTrip(PackageKind::kIdt, fixturePath("idt"));
}

TEST_F(OracleFixtures, SampleSourcesAreCanonical) {
  expectFixturesRoundTrip(PackageKind::kSample, sampleSourceDir());
}

TEST_F(OracleFixtures, BinaryFixtureFilesBecomeStreams) {
  const BuiltPackage& built = testPackage(PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  for (auto [stream, file] :
       {std::pair{"Binary.SmallData", "small.ibd"}, std::pair{"Binary.LargeData", "large.ibd"}}) {
    EXPECT_EQ(msiinfoExtract(built.file, stream).out,
              readFileBytes(fixturePath("idt/Binary") / file))
        << stream;
  }
}

TEST_F(OracleFixtures, WixlPackageHasTheModelledTables) {
  if (!haveWixl())
    GTEST_SKIP() << "wixl is not installed";
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  std::vector<std::string> tables = msiinfoPersistentTables(built.file);
  for (const char* table :
       {"Property", "Directory", "Component", "File", "Feature", "FeatureComponents", "Registry",
        "Shortcut", "Binary", "CustomAction", "Media", "InstallExecuteSequence"}) {
    EXPECT_NE(std::find(tables.begin(), tables.end(), table), tables.end()) << table;
  }
  std::vector<std::string> streams = splitLines(msiinfoStreams(built.file).out);
  EXPECT_NE(std::find(streams.begin(), streams.end(), "Binary.HelperBinary"), streams.end());
}

TEST_F(OracleFixtures, ManyStringsPackageUsesThreeByteStringReferences) {
  const BuiltPackage& built = testPackage(PackageKind::kManyStrings);
  ASSERT_FALSE(built.file.empty()) << built.error;
  EXPECT_EQ(splitLines(msiinfoExport(built.file, "ManyStrings").out).size(), 3u + 72000u);
  std::optional<std::uint32_t> header = stringPoolHeader(built.file);
  ASSERT_TRUE(header.has_value());
  EXPECT_EQ(*header & 0x80000000u, 0x80000000u);
}

TEST_F(OracleFixtures, Version4PackageReadsLikeItsSource) {
  const BuiltPackage& source = testPackage(PackageKind::kIdt);
  const BuiltPackage& version4 = testPackage(PackageKind::kVersion4);
  ASSERT_FALSE(version4.file.empty()) << version4.error;
  EXPECT_EQ(containerVersion(version4.file), std::optional<std::uint16_t>(4));
  EXPECT_TRUE(sameTables(source.file, version4.file));
  EXPECT_TRUE(sameStreams(source.file, version4.file));
  EXPECT_TRUE(sameSummary(source.file, version4.file));
}

}  // namespace
}  // namespace odlex::test
