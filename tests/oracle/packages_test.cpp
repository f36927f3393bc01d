// What the other oracle tests rely on in the oracle packages: the many-strings package needs
// 3-byte string references. That the fixtures are written the way msiinfo prints them back is
// shown by the import tests, which compare msiinfo's export of our import with the fixture
// files; that the version-4 copy reads like its source is the container tests'.

#include <gtest/gtest.h>

#include "common/Container.h"
#include "common/Oracle.h"
#include "common/Packages.h"

namespace odlex::test {
namespace {

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
