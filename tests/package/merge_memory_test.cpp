// A module's binary cell of tens of megabytes, merged into a package and saved: its bytes go from
// the module file to the saved package in pieces, never held whole.

#include <gtest/gtest.h>

#include "common/DatabaseTest.h"
#include "common/PeakMemory.h"
#include "common/SmallModule.h"
#include "common/SmallPackage.h"
#include "common/SparseStream.h"

namespace odlex::test {
namespace {

TEST(MergeMemory, ALargeBinaryCellIsCopiedWithoutBeingHeld) {
  constexpr std::uint64_t kCellSize = 64ull << 20;
  TempDir dir;
  const auto package = dir / "package.msi";
  writeSmallPackage(package, "Product", "payload");
  addMergePlace(package);
  writeSparseFile(dir / "data", kCellSize);
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
  expectSparseStream(*cell, kCellSize);
}

}  // namespace
}  // namespace odlex::test
