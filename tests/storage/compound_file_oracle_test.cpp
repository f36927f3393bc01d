// Our container reader and writer against msitools: a package msibuild wrote must read back
// correctly, and our copy of it, in either container version, must read identically in msiinfo.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "common/Container.h"
#include "common/Oracle.h"
#include "common/TempDir.h"
#include "storage/CompoundFile.h"

namespace odlex::storage {
namespace {

class CompoundFileOracle : public ::testing::Test {
 protected:
  void SetUp() override {
    // Enough rows that the string pool outgrows the mini stream and uses regular sectors.
    std::string idt = "Property\tValue\ns72\tl0\nProperty\tProperty\n";
    for (int i = 0; i < 300; ++i) {
      idt += "Prop" + std::to_string(i) + "\tA value long enough to fill sectors " +
             std::to_string(i * 31) + "\n";
    }
    test::writeFileBytes(dir_ / "Property.idt", idt);
    const auto imported =
        test::runProcess({"msibuild", "pkg.msi", "-i", "Property.idt"}, dir_.path());
    ASSERT_TRUE(imported.ok()) << imported.describe();
    const auto summary = test::runProcess({"msibuild", "pkg.msi", "-s", "Demo", "Someone",
                                           "Intel;1033", "{12345678-1234-1234-1234-123456789012}"},
                                          dir_.path());
    ASSERT_TRUE(summary.ok()) << summary.describe();
  }

  std::unique_ptr<CompoundFileReader> openPackage(const std::filesystem::path& path) {
    std::string error;
    auto file = FileSystem::real().openRead(path, error);
    EXPECT_TRUE(file) << error;
    if (!file)
      return nullptr;
    auto reader = CompoundFileReader::open(std::move(file), error);
    EXPECT_TRUE(reader) << error;
    return reader;
  }

  void expectSameInMsiinfo(const std::filesystem::path& copy) {
    const auto original = dir_ / "pkg.msi";
    for (const auto& [expected, actual, what] :
         {std::tuple{test::msiinfoTables(original), test::msiinfoTables(copy), "tables"},
          std::tuple{test::msiinfoExport(original, "Property"),
                     test::msiinfoExport(copy, "Property"), "Property"},
          std::tuple{test::msiinfoSuminfo(original), test::msiinfoSuminfo(copy), "suminfo"}}) {
      ASSERT_TRUE(expected.ok()) << expected.describe();
      ASSERT_TRUE(actual.ok()) << what << ": " << actual.describe();
      EXPECT_TRUE(
          test::linesEqual(test::splitLines(expected.out), test::splitLines(actual.out), what));
    }
  }

  test::TempDir dir_;
};

TEST_F(CompoundFileOracle, ReadsAPackageMsibuildWrote) {
  auto reader = openPackage(dir_ / "pkg.msi");
  ASSERT_TRUE(reader);
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
    std::string error;
    ASSERT_TRUE(reader->readStream(child, data, error)) << error;
    EXPECT_EQ(data.size(), entries[child].size);
    sawLargeStream |= data.size() >= 4096;
  }
  EXPECT_NE(std::find(names.begin(), names.end(), u"\x0005SummaryInformation"), names.end());
  EXPECT_GE(tableStreams, 4u) << "string pool, string data, _Tables, _Columns, Property";
  EXPECT_TRUE(sawLargeStream) << "the string data should be outside the mini stream";
}

TEST_F(CompoundFileOracle, OurCopyInEitherVersionReadsTheSameInMsiinfo) {
  for (const std::uint16_t version : {3, 4}) {
    SCOPED_TRACE(version);
    const auto copy = dir_ / ("copy" + std::to_string(version) + ".msi");
    std::string error;
    ASSERT_TRUE(test::copyContainer(dir_ / "pkg.msi", copy, version, error)) << error;
    EXPECT_EQ(test::containerVersion(copy), std::optional<std::uint16_t>(version));
    expectSameInMsiinfo(copy);
  }
}

}  // namespace
}  // namespace odlex::storage
