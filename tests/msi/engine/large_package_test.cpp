// A package carrying a stream of hundreds of megabytes (a cabinet, say) is opened, edited and
// saved in memory proportional to its tables: the stream is copied from the old file to the new
// one in pieces and never held whole. A save killed at any point, by the library or by the tool,
// leaves the old file or the new one, whole.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "common/Oracle.h"
#include "common/PeakMemory.h"
#include "common/SparseStream.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "storage/StreamName.h"

namespace odlex::engine {
namespace {

// A package with table Kept and a stream "Binary.Big" of `streamSize` bytes (a sparse stream).
std::filesystem::path writeLargePackage(const test::TempDir& dir, std::uint64_t streamSize) {
  Error error;
  auto small = Database::open(storage::FileSystem::real(), dir / "small.msi",
                              Database::OpenMode::kCreate, error);
  EXPECT_TRUE(small->createTable(
      u"Kept", {Column{u"Key", column_type::kText | column_type::kKey | 72}}, error));
  EXPECT_EQ(small->commit(error), kSuccess) << error.text;

  test::writeSparseFile(dir / "blob", streamSize);
  std::string reason;
  auto reader = storage::CompoundFileReader::open(
      storage::FileSystem::real().openRead(dir / "small.msi", reason), reason);
  storage::CompoundNode root;
  EXPECT_TRUE(storage::readCompoundTree(*reader, 0, root, reason)) << reason;
  storage::CompoundNode big;
  big.name = *storage::encodeStreamName(u"Binary.Big", false);
  big.source = storage::fileSource(storage::FileSystem::real(), dir / "blob", reason);
  root.children.push_back(std::move(big));
  storage::CompoundFileWriter writer;
  EXPECT_TRUE(writer.plan(root, reason)) << reason;
  const auto path = dir / "large.msi";
  EXPECT_TRUE(storage::replaceFileAtomically(
      storage::FileSystem::real(), path,
      [&writer](storage::WritableFile& file, std::string& why) { return writer.write(file, why); },
      reason))
      << reason;
  return path;
}

// Adds a row to Kept and saves the package in place.
bool addRowAndSave(const std::filesystem::path& path, std::string& failure) {
  Error error;
  auto db = Database::open(storage::FileSystem::real(), path, Database::OpenMode::kUpdate, error);
  Table* kept = db ? db->findTable(u"Kept") : nullptr;
  if (kept) {
    kept->setCell(kept->addRow(), 0, db->strings().intern(u"edited"));
    if (db->commit(error) == kSuccess)
      return true;
  }
  failure = error.text.empty() ? "no table Kept" : error.text;
  return false;
}

TEST(LargePackage, AnEditSavesAHugeStreamWithoutHoldingIt) {
  constexpr std::uint64_t kStreamSize = 512ull << 20;
  test::TempDir dir;
  const auto path = writeLargePackage(dir, kStreamSize);
  const long before = test::peakResidentBytes();
  std::string failure;
  ASSERT_TRUE(addRowAndSave(path, failure)) << failure;
  const long grown = test::peakResidentBytes() - before;
  EXPECT_LT(grown, 64L << 20) << "peak memory grew by " << (grown >> 20) << " MiB";

  Error error;
  const auto source =
      openOrFail(path, Database::OpenMode::kReadOnly)->streamSource(u"Binary.Big", error);
  ASSERT_TRUE(source) << error.text;
  test::expectSparseStream(*source, kStreamSize);
}

std::vector<std::string> temporariesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".tmp")
      names.push_back(entry.path().filename().string());
  return names;
}

// A way of saving the large package, run in a child process: the library editing it in place,
// or the tool writing a fresh copy of it over an older file.
struct Save {
  const char* name;
  const char* target;     // the file written, in the package's folder
  const char* oldTarget;  // the file whose bytes the target holds before each save
  // Saves and ends the child process, its exit status 0 when the save succeeded.
  void (*inChild)(const std::filesystem::path& package, const std::filesystem::path& target);
  std::vector<std::string> keptAfter;  // the rows of Kept in the file written
};

const Save kSaves[] = {
    {"library edit in place",
     "large.msi",
     "large.msi",
     [](const auto& package, const auto&) {
       std::string failure;
       _exit(addRowAndSave(package, failure) ? 0 : 1);
     },
     {"edited"}},
    {"odlex rewrite over an older file",
     "fresh.msi",
     "small.msi",
     [](const auto& package, const auto& target) {
       execl(ODLEX_TOOL_PATH, ODLEX_TOOL_PATH, "rewrite", package.c_str(), "-o", target.c_str(),
             static_cast<char*>(nullptr));
       _exit(127);
     },
     {}},
};

pid_t startSave(const Save& save, const std::filesystem::path& package,
                const std::filesystem::path& target) {
  const pid_t child = fork();
  if (child == 0)
    save.inChild(package, target);
  return child;
}

// Whether a save run to its end succeeded.
bool saveToTheEnd(const Save& save, const std::filesystem::path& package,
                  const std::filesystem::path& target) {
  int status = 0;
  const pid_t child = startSave(save, package, target);
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

// A process saving the package is killed at points spread over its save, again and again: the
// file written is always the old one or the new one, whole. Each killed save leaves its temporary
// file; the next save removes them.
TEST(LargePackage, ASaveKilledAtAnyPointLeavesTheOldOrTheNewFile) {
  for (const Save& save : kSaves) {
    SCOPED_TRACE(save.name);
    test::TempDir dir;
    const auto package = writeLargePackage(dir, 64ull << 20);
    const auto target = dir / save.target;
    const std::string before = test::readFileBytes(dir / save.oldTarget);
    test::writeFileBytes(target, before);
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(saveToTheEnd(save, package, target));
    const auto saveTime = std::chrono::steady_clock::now() - started;
    const std::string after = test::readFileBytes(target);
    ASSERT_NE(before, after);
    EXPECT_EQ(tableLines(*openOrFail(target, Database::OpenMode::kReadOnly), u"Kept"),
              save.keptAfter);

    std::mt19937 random(20261126);
    std::uniform_int_distribution<std::int64_t> point(0, saveTime.count());
    int killedWhileWriting = 0;
    for (int round = 0; round < 12; ++round) {
      test::writeFileBytes(target, before);
      const pid_t child = startSave(save, package, target);
      ASSERT_GT(child, 0);
      std::this_thread::sleep_for(std::chrono::steady_clock::duration(point(random)));
      kill(child, SIGKILL);
      int status = 0;
      waitpid(child, &status, 0);
      const std::string now = test::readFileBytes(target);
      EXPECT_TRUE(now == before || now == after) << "round " << round << ": a damaged file";
      killedWhileWriting += WIFSIGNALED(status) && !temporariesIn(dir.path()).empty();
    }
    EXPECT_GT(killedWhileWriting, 0) << "no save was killed while it wrote";
    ASSERT_TRUE(saveToTheEnd(save, package, target));
    EXPECT_EQ(temporariesIn(dir.path()), std::vector<std::string>{});
  }
}

}  // namespace
}  // namespace odlex::engine
