// A module's binary cell of tens of megabytes, merged into a package and saved: its bytes go from
// the module file to the saved package in pieces, never held whole.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "common/DatabaseTest.h"
#include "common/PeakMemory.h"
#include "common/SmallModule.h"
#include "common/SmallPackage.h"

namespace odlex::test {
namespace {

TEST(MergeMemory, ALargeBinaryCellIsCopiedWithoutBeingHeld) {
  constexpr std::uint64_t kCellSize = 64ull << 20;
  TempDir dir;
  const auto package = dir / "package.msi";
  writeSmallPackage(package, "Product", "payload");
  addMergePlace(package);
  // Sparse: the cell's zeros take no room on disk; its last byte is 0x5A.
  { std::ofstream data(dir / "data", std::ios::binary); }
  std::filesystem::resize_file(dir / "data", kCellSize - 1);
  { std::ofstream(dir / "data", std::ios::binary | std::ios::app).put(0x5A); }
  writeSmallModule(dir / "module.msm", dir / "data");

  ODLEXDatabase::INIT();
  const long before = peakResidentBytes();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
  db.MergeModule(text(dir / "module.msm"), u"Complete", u"TARGETDIR", {});
  ASSERT_TRUE(db.SaveChanges());
  ODLEXDatabase::KillDatabaseList();
  const long grown = peakResidentBytes() - before;
  EXPECT_LT(grown, 16L << 20) << "peak memory grew by " << (grown >> 20) << " MiB";

  engine::Error error;
  auto saved = engine::Database::open(storage::FileSystem::real(), package,
                                      engine::Database::OpenMode::kReadOnly, error);
  ASSERT_TRUE(saved) << error.text;
  const auto cell = saved->streamSource(u"Binary.Data", error);
  ASSERT_TRUE(cell) << error.text;
  ASSERT_EQ(cell->size(), kCellSize);
  std::string reason;
  auto reader = cell->open(reason);
  ASSERT_TRUE(reader) << reason;
  std::vector<std::uint8_t> piece(1 << 20);
  std::uint64_t nonZero = 0;
  for (std::uint64_t left = kCellSize; left > 0; left -= piece.size()) {
    ASSERT_TRUE(reader->read(piece.data(), piece.size(), reason)) << reason;
    nonZero += piece.size() - std::count(piece.begin(), piece.end(), 0);
  }
  EXPECT_EQ(nonZero, 1u);
  EXPECT_EQ(piece.back(), 0x5A);
}

}  // namespace
}  // namespace odlex::test
