#include "storage/FileSystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include "common/FaultyFileSystem.h"
#include "common/TempDir.h"
#include "storage/ForwardingFileSystem.h"
#include "storage/MemoryFileSystem.h"

namespace odlex::storage {
namespace {

std::vector<std::uint8_t> bytesOf(std::string_view text) {
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

std::vector<std::filesystem::path> listFolder(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> names;
  for (const auto& item : std::filesystem::directory_iterator(folder)) {
    names.push_back(item.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Reading, writing, renaming and making folders are what every save and export does; what only
// shows here is how each refusal names its file.
TEST(RealFileSystem, ErrorsNameThePath) {
  test::TempDir dir;
  FileSystem& fs = FileSystem::real();
  std::string error;
  const auto path = dir / "data.bin";
  ASSERT_TRUE(fs.writeFile(path, bytesOf("hello world"), error)) << error;
  auto file = fs.openRead(path, error);
  ASSERT_TRUE(file) << error;
  char part[5];
  EXPECT_FALSE(file->readAt(7, part, 5, error)) << "past the end";
  EXPECT_NE(error.find("data.bin"), std::string::npos) << error;

  EXPECT_FALSE(fs.openRead(dir / "missing.bin", error));
  EXPECT_NE(error.find("missing.bin"), std::string::npos) << error;
  EXPECT_NE(error.find("No such file"), std::string::npos) << error;
  EXPECT_FALSE(fs.openRead(dir.path(), error)) << "a folder is not a readable file";
  ASSERT_TRUE(fs.remove(path, error)) << error;
  EXPECT_FALSE(fs.remove(path, error));
  EXPECT_FALSE(replaceFileAtomically(fs, dir / "no" / "such.msi", bytesOf("x"), error));
  EXPECT_NE(error.find("such.msi"), std::string::npos) << error;
}

// The real file system, noting the permission bits and owner of each file as it is created.
class CreationWatcher final : public ForwardingFileSystem {
 public:
  CreationWatcher() : ForwardingFileSystem(FileSystem::real()) {}
  std::unique_ptr<WritableFile> createFile(const std::filesystem::path& path,
                                           const NewFileOptions& options,
                                           std::string& error) override {
    auto file = inner().createFile(path, options, error);
    if (file)
      ::stat(path.c_str(), &created);
    return file;
  }

  struct stat created {};
};

TEST(RealFileSystem, ReplaceWritesThroughLinksPrivatelyAndWithinNameLimits) {
  test::TempDir dir;
  std::string error;
  CreationWatcher fs;
  const auto contents = [&error](const std::filesystem::path& path) {
    std::vector<std::uint8_t> read;
    EXPECT_TRUE(readWholeFile(FileSystem::real(), path, read, error)) << error;
    return std::string(read.begin(), read.end());
  };

  // A private package stays private while its replacement is written, and keeps its owner.
  const auto secret = dir / "secret.msi";
  ASSERT_TRUE(fs.writeFile(secret, bytesOf("old"), error)) << error;
  ASSERT_EQ(::chmod(secret.c_str(), 0600), 0);
  const bool mayGiveAway = ::geteuid() == 0 && ::chown(secret.c_str(), 4321, 4321) == 0;
  ASSERT_TRUE(replaceFileAtomically(fs, secret, bytesOf("new"), error)) << error;
  EXPECT_EQ(fs.created.st_mode & 07777, 0600u) << "as created, before any byte was written";
  struct stat after {};
  ASSERT_EQ(::stat(secret.c_str(), &after), 0);
  EXPECT_EQ(after.st_mode & 07777, 0600u);
  if (mayGiveAway) {
    EXPECT_EQ(fs.created.st_uid, 4321u);
    EXPECT_EQ(after.st_uid, 4321u);
    EXPECT_EQ(after.st_gid, 4321u);
  }

  // Saving through a link replaces the file it leads to; the link stays a link.
  std::filesystem::create_directory(dir / "real");
  ASSERT_TRUE(fs.writeFile(dir / "real" / "package.msi", bytesOf("old"), error)) << error;
  std::filesystem::create_symlink("real/package.msi", dir / "link.msi");
  ASSERT_TRUE(replaceFileAtomically(fs, dir / "link.msi", bytesOf("through"), error)) << error;
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.msi"));
  EXPECT_EQ(contents(dir / "real" / "package.msi"), "through");
  EXPECT_EQ(listFolder(dir / "real"), std::vector<std::filesystem::path>{"package.msi"});
  std::filesystem::create_symlink("loop.msi", dir / "loop.msi");
  EXPECT_FALSE(replaceFileAtomically(fs, dir / "loop.msi", bytesOf("x"), error));
  EXPECT_NE(error.find("symbolic links"), std::string::npos) << error;

  // A name as long as a folder entry may be still leaves room for the temporary file.
  const auto longest = dir / (std::string(251, 'p') + ".msi");
  ASSERT_TRUE(replaceFileAtomically(fs, longest, bytesOf("first"), error)) << error;
  ASSERT_TRUE(replaceFileAtomically(fs, longest, bytesOf("second"), error)) << error;
  EXPECT_EQ(contents(longest), "second");
}

TEST(RealFileSystem, ReplaceRemovesWhatKilledSavesLeftButNotWhatLiveOnesWrite) {
  test::TempDir dir;
  std::string error;
  FileSystem& fs = FileSystem::real();
  const auto write = [&](const std::string& name, std::string_view text) {
    ASSERT_TRUE(fs.writeFile(dir / name, bytesOf(text), error)) << error;
  };
  write("p.msi", "old");
  write("p.msi.odlex-0123456789ab.tmp", "killed while writing");
  write("p.msi.odlex-cccccccccccc.tmp", "");  // killed as soon as it was made
  write("q.msi.odlex-0123456789ab.tmp", "another package's");
  write("p.msi.odlex-0123456789ab.tmp.bak", "not ours");
  NewFileOptions held;
  held.exclusive = true;
  auto live = fs.createFile(dir / "p.msi.odlex-aaaaaaaaaaaa.tmp", held, error);
  ASSERT_TRUE(live && live->append(bytesOf("still writing"), error)) << error;

  ASSERT_TRUE(replaceFileAtomically(fs, dir / "p.msi", bytesOf("new"), error)) << error;
  EXPECT_EQ(listFolder(dir.path()),
            (std::vector<std::filesystem::path>{"p.msi", "p.msi.odlex-0123456789ab.tmp.bak",
                                                "p.msi.odlex-aaaaaaaaaaaa.tmp",
                                                "q.msi.odlex-0123456789ab.tmp"}));
}

TEST(MemoryFileSystem, BehavesLikeAFolderTree) {
  MemoryFileSystem fs;
  std::string error;
  EXPECT_FALSE(fs.writeFile("/x/a.bin", bytesOf("a"), error)) << "parent folder missing";
  ASSERT_TRUE(fs.createDirectories("/x", error));
  ASSERT_TRUE(fs.writeFile("/x/a.bin", bytesOf("abc"), error));
  auto file = fs.openRead("/x/a.bin", error);
  ASSERT_TRUE(file);
  // An open file keeps the bytes it was opened on, as an open descriptor would.
  ASSERT_TRUE(fs.writeFile("/x/a.bin", bytesOf("xyz!"), error));
  char buffer[3];
  ASSERT_TRUE(file->readAt(0, buffer, 3, error));
  EXPECT_EQ(std::string(buffer, 3), "abc");
  EXPECT_FALSE(file->readAt(1, buffer, 3, error));

  ASSERT_TRUE(fs.rename("/x/a.bin", "/x/b.bin", error));
  EXPECT_FALSE(fs.exists("/x/a.bin"));
  std::vector<std::uint8_t> read;
  ASSERT_TRUE(readWholeFile(fs, "/x/b.bin", read, error));
  EXPECT_EQ(read, bytesOf("xyz!"));
  EXPECT_FALSE(fs.createDirectories("/x/b.bin/c", error)) << "a file is in the way";
}

// Makes every call of a replacement fail in turn and checks the target is never damaged and no
// temporary file is left behind, until the replacement goes through.
void checkReplaceSurvivesEveryFault(FileSystem& inner, const std::filesystem::path& target,
                                    const std::function<std::size_t()>& countFiles) {
  std::string error;
  const auto original = bytesOf("original package bytes");
  const auto replacement = bytesOf("the replacement, longer than the original");
  ASSERT_TRUE(inner.writeFile(target, original, error)) << error;
  test::FaultyFileSystem faulty(inner);
  for (std::uint64_t failAt = 1;; ++failAt) {
    ASSERT_LT(failAt, 20u) << "replacement never succeeded";
    faulty.failAtCall(failAt);
    const bool replaced = replaceFileAtomically(faulty, target, replacement, error);
    std::vector<std::uint8_t> now;
    ASSERT_TRUE(readWholeFile(inner, target, now, error)) << error;
    EXPECT_EQ(countFiles(), 1u) << "temporary file left after failing call " << failAt;
    if (replaced) {
      EXPECT_FALSE(faulty.failed());
      EXPECT_EQ(now, replacement);
      break;
    }
    EXPECT_NE(error.find("injected failure"), std::string::npos) << error;
    EXPECT_EQ(now, original) << "target damaged by failing call " << failAt;
  }
}

TEST(ReplaceFileAtomically, TargetIntactWhenAnyCallFailsInMemory) {
  MemoryFileSystem fs;
  std::string error;
  ASSERT_TRUE(fs.createDirectories("/pkg", error));
  checkReplaceSurvivesEveryFault(fs, "/pkg/product.msi", [&] { return fs.files().size(); });
}

TEST(ReadWholeFile, ReportsAFailedRead) {
  MemoryFileSystem fs;
  std::string error;
  ASSERT_TRUE(fs.writeFile("a.idt", bytesOf("Property\tValue"), error));
  test::FaultyFileSystem faulty(fs);
  faulty.failAtCall(2);  // openRead, then the read
  std::vector<std::uint8_t> read;
  EXPECT_FALSE(readWholeFile(faulty, "a.idt", read, error));
  EXPECT_TRUE(read.empty());
  EXPECT_NE(error.find("readAt"), std::string::npos) << error;
}

}  // namespace
}  // namespace odlex::storage
