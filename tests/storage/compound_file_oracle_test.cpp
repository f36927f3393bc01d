// Our container reader and writer against msitools: our copy of a package msibuild wrote (read
// with our reader, written with our writer), in either container version, reads identically in
// msiinfo, every stream byte for byte.

#include <gtest/gtest.h>

#include <optional>

#include "common/Container.h"
#include "common/PackageCompare.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::storage {
namespace {

TEST(CompoundFileOracle, OurCopyInEitherVersionReadsTheSameInMsiinfo) {
  // The msibuild package whose binary streams lie in and above the mini stream.
  const test::BuiltPackage& built = test::testPackage(test::PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  const std::filesystem::path original = built.file;
  test::TempDir dir;
  for (const std::uint16_t version : {3, 4}) {
    SCOPED_TRACE(version);
    const auto copy = dir / ("copy" + std::to_string(version) + ".msi");
    std::string error;
    ASSERT_TRUE(test::copyContainer(original, copy, version, error)) << error;
    EXPECT_EQ(test::containerVersion(copy), std::optional<std::uint16_t>(version));
    EXPECT_TRUE(test::sameTables(original, copy));
    EXPECT_TRUE(test::sameStreams(original, copy));
    EXPECT_TRUE(test::sameSummary(original, copy));
  }
}

}  // namespace
}  // namespace odlex::storage
