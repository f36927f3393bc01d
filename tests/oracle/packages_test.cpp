// What the other oracle tests rely on in the oracle packages: the fixtures are written the way
// msiinfo prints them back (so a fixture file can serve as the expected export), and the
// many-strings package needs 3-byte string references. That the version-4 copy reads like its
// source is the container tests' (our copy in either version against msiinfo).

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/Container.h"
#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/PackageCompare.h"
#include "common/Packages.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

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

TEST(OracleFixtures, IdtFixturesAreCanonical) {
  expectFixturesRoundTrip(PackageKind::kIdt, fixturePath("idt"));
}

TEST(OracleFixtures, SampleSourcesAreCanonical) {
  expectFixturesRoundTrip(PackageKind::kSample, sampleSourceDir());
}

TEST(OracleFixtures, ManyStringsPackageUsesThreeByteStringReferences) {
  const BuiltPackage& built = testPackage(PackageKind::kManyStrings);
  ASSERT_FALSE(built.file.empty()) << built.error;
  EXPECT_EQ(splitLines(msiinfoExport(built.file, "ManyStrings").out).size(), 3u + 72000u);
  std::optional<std::uint32_t> header = stringPoolHeader(built.file);
  ASSERT_TRUE(header.has_value());
  EXPECT_EQ(*header & 0x80000000u, 0x80000000u);
}

}  // namespace
}  // namespace odlex::test
