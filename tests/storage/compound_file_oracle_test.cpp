// Our container reader and writer against msitools: a package msibuild wrote must read back
// correctly, and our copy of it, in either container version, must read identically in msiinfo.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "common/Container.h"
#include "common/PackageCompare.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "storage/CompoundFile.h"

namespace odlex::storage {
namespace {

// The msibuild package whose binary streams lie in and above the mini stream.
std::filesystem::path msibuildPackage() {
  const test::BuiltPackage& built = test::testPackage(test::PackageKind::kIdt);
  EXPECT_FALSE(built.file.empty()) << built.error;
  return built.file;
}

TEST(CompoundFileOracle, ReadsAPackageMsibuildWrote) {
  std::string error;
  auto file = FileSystem::real().openRead(msibuildPackage(), error);
  ASSERT_TRUE(file) << error;
  auto reader = CompoundFileReader::open(std::move(file), error);
  ASSERT_TRUE(reader) << error;
  EXPECT_EQ(reader->majorVersion(), 3);
  const auto& entries = reader->entries();
  std::vector<std::u16string> names;
  std::size_t tableStreams = 0;
  bool sawLargeStream = false;
  for (std::uint32_t child : entries[0].children) {
    names.push_back(entries[child].name);
    if (!entries[child].name.empty() && entries[child].name[0] == 0x4840)
      ++tableStreams;
    if (entries[child].isStorage)
      continue;
    std::vector<std::uint8_t> data;
    ASSERT_TRUE(reader->readStream(child, data, error)) << error;
    EXPECT_EQ(data.size(), entries[child].size);
    sawLargeStream |= data.size() >= 4096;
  }
  EXPECT_NE(std::find(names.begin(), names.end(), u"\x0005SummaryInformation"), names.end());
  EXPECT_GE(tableStreams, 4u) << "string pool, string data, _Tables, _Columns, Property";
  EXPECT_TRUE(sawLargeStream) << "a stream should be outside the mini stream";
}

TEST(CompoundFileOracle, OurCopyInEitherVersionReadsTheSameInMsiinfo) {
  const std::filesystem::path original = msibuildPackage();
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
