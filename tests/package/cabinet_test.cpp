// The cabinet reader on cabinets that try to escape or are damaged. Members written and read
// back, and cabinets of another writer (gcab, wixl), are checked through whole packages in
// files_test.

#include "package/cabinet/Cabinet.h"

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/TempDir.h"

namespace odlex::package {
namespace {

namespace fs = std::filesystem;
using test::readFileBytes;
using test::TempDir;
using test::writeFileBytes;

// Bytes that compress poorly, so a member spans several of the cabinet's 32 KiB data blocks.
std::string noise(std::size_t length, std::uint32_t seed) {
  std::string bytes(length, '\0');
  for (char& byte : bytes) {
    seed = seed * 1103515245 + 12345;
    byte = static_cast<char>(seed >> 16);
  }
  return bytes;
}

std::shared_ptr<const storage::StreamSource> sourceOf(const fs::path& file) {
  const std::string bytes = readFileBytes(file);
  return storage::memorySource(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

// Members are extracted under their numbers, never under the names the cabinet stores, and
// only the wanted ones are taken.
TEST(Cabinet, OnlyWantedMembersAreTakenAndNeverUnderTheirStoredNames) {
  TempDir dir;
  const std::vector<std::string> names = {"../escape",      "unwanted", "/absolute",
                                          "sub\\dir\\name", "CON",      "a/b"};
  CabinetWriter writer;
  for (std::size_t member = 0; member < names.size(); ++member) {
    const fs::path in = dir / "in" / std::to_string(member);
    writeFileBytes(in, names[member]);
    writer.add(names[member], in);
  }
  std::string error;
  ASSERT_TRUE(writer.write(dir / "hostile.cab", error)) << error;
  const fs::path scratch = dir / "out" / "scratch";
  fs::create_directories(scratch);
  std::unique_ptr<CabinetReader> reader = CabinetReader::open(sourceOf(dir / "hostile.cab"), error);
  ASSERT_TRUE(reader) << error;
  std::vector<std::string> taken;
  ASSERT_TRUE(reader->extract(
      scratch, [](std::size_t member) { return member != 1; },
      [&](std::size_t member, const fs::path& file, std::string&) {
        taken.push_back(reader->members()[member].name + "=" + readFileBytes(file));
        return true;
      },
      error))
      << error;
  // The writer stores '/' as the cabinet's separator, a backslash.
  EXPECT_EQ(taken,
            (std::vector<std::string>{"..\\escape=../escape", "\\absolute=/absolute",
                                      "sub\\dir\\name=sub\\dir\\name", "CON=CON", "a\\b=a/b"}));
  std::vector<std::string> made;
  for (const auto& entry : fs::recursive_directory_iterator(dir / "out"))
    made.push_back(fs::relative(entry.path(), dir / "out").string());
  std::sort(made.begin(), made.end());
  EXPECT_EQ(made, (std::vector<std::string>{"scratch", "scratch/0", "scratch/2", "scratch/3",
                                            "scratch/4", "scratch/5"}));
}

TEST(Cabinet, DamagedCabinetsAreRefusedWithAReason) {
  TempDir dir;
  writeFileBytes(dir / "in", noise(100000, 3));
  CabinetWriter writer;
  writer.add("member", dir / "in");
  std::string error;
  ASSERT_TRUE(writer.write(dir / "good.cab", error)) << error;
  const std::string good = readFileBytes(dir / "good.cab");
  // Header cut short, file entry cut short, data cut short, not a cabinet at all.
  for (const std::string& bytes : {good.substr(0, 20), good.substr(0, 50),
                                   good.substr(0, good.size() - 100), std::string(4096, 'M')}) {
    writeFileBytes(dir / "bad.cab", bytes);
    error.clear();
    std::unique_ptr<CabinetReader> reader = CabinetReader::open(sourceOf(dir / "bad.cab"), error);
    const bool extracted =
        reader && reader->extract(
                      dir.path(), [](std::size_t) { return true; },
                      [](std::size_t, const fs::path&, std::string&) { return true; }, error);
    EXPECT_FALSE(extracted) << bytes.size();
    EXPECT_FALSE(error.empty()) << bytes.size();
  }
}

}  // namespace
}  // namespace odlex::package
