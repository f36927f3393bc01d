// Containers whose directory entries point into sectors another owner holds. Each sector may
// belong to one stream (or to the directory or a sector table), else a small file could make
// the reader hand out the same bytes thousands of times.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>

#include "storage/CompoundFile.h"
#include "storage/CompoundFileFormat.h"

namespace odlex::storage {
namespace {

using namespace cfb;

CompoundNode stream(std::u16string name, std::size_t size) {
  CompoundNode node;
  node.name = std::move(name);
  node.data.assign(size, 0x5A);
  return node;
}

// A version 3 container with "data" (of `dataSize` bytes) and `copies` empty streams
// "c0", "c1", ... whose directory entries can then be pointed anywhere.
class Container {
 public:
  Container(std::size_t dataSize, std::size_t copies) {
    CompoundNode root;
    root.isStorage = true;
    root.children.push_back(stream(u"data", dataSize));
    for (std::size_t i = 0; i < copies; ++i)
      root.children.push_back(stream(u"c" + Utf16(std::to_string(i)), 0));
    std::string error;
    EXPECT_TRUE(writeCompoundFile(root, bytes, error)) << error;
  }

  std::uint8_t* entry(std::u16string_view name) {
    for (std::uint8_t* raw : directory()) {
      const std::size_t units = load16(raw + entry::kNameLength) / 2;
      if (units > 0 &&
          std::u16string_view(reinterpret_cast<const char16_t*>(raw), units - 1) == name)
        return raw;
    }
    ADD_FAILURE() << "no such entry";
    return bytes.data();
  }
  std::uint32_t firstDirectorySector() const {
    return load32(&bytes[header::kFirstDirectorySector]);
  }
  // Points every copy ("c...") at the sectors of `owner` (start and size).
  void shareWithCopies(const std::uint8_t* owner) {
    for (std::uint8_t* raw : directory()) {
      if (load16(raw + entry::kNameLength) < 4 || raw[0] != 'c')
        continue;
      std::memcpy(raw + entry::kStartSector, owner + entry::kStartSector, 4);
      std::memcpy(raw + entry::kSize, owner + entry::kSize, 8);
    }
  }

  std::vector<std::uint8_t> bytes;

 private:
  static std::u16string Utf16(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

  // Every directory entry, following the directory's chain through the FAT.
  std::vector<std::uint8_t*> directory() {
    const auto offset = [](std::uint32_t sector) { return (sector + 1) * std::size_t{512}; };
    std::vector<std::uint32_t> fat;
    for (std::uint32_t i = 0; i < load32(&bytes[header::kFatSectorCount]); ++i) {
      const std::uint32_t sector = load32(&bytes[header::kDifat + 4 * i]);
      for (std::size_t j = 0; j < 128; ++j)
        fat.push_back(load32(&bytes[offset(sector) + 4 * j]));
    }
    std::vector<std::uint8_t*> entries;
    for (std::uint32_t sector = firstDirectorySector(); sector != kEndOfChain;
         sector = fat.at(sector)) {
      for (std::size_t j = 0; j < 4; ++j)
        entries.push_back(&bytes[offset(sector) + j * kDirectoryEntrySize]);
    }
    return entries;
  }
};

std::string openError(const std::vector<std::uint8_t>& bytes) {
  std::string error;
  EXPECT_FALSE(CompoundFileReader::openBytes(bytes, error)) << "a file sharing sectors opened";
  return error;
}

long peakResidentKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST(CompoundFileSharing, StreamsThatShareSectorsAreRefusedNamingBothOwners) {
  struct Case {
    const char* what;
    std::size_t dataSize;
    bool intoDirectory;  // point the copy at the directory instead of "data"
    const char* message;
  };
  const Case cases[] = {
      {"regular sectors", 8192, false, ": sector "},
      {"mini sectors", 300, false, ": mini sector "},
      {"the directory", 8192, true, "is used by both the directory and directory entry"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Container file(c.dataSize, 1);
    std::uint8_t* data = file.entry(u"data");
    if (c.intoDirectory)
      store32(data + entry::kStartSector, file.firstDirectorySector());
    else
      file.shareWithCopies(data);
    const std::string error = openError(file.bytes);
    EXPECT_NE(error.find(c.message), std::string::npos) << error;
    if (!c.intoDirectory) {
      EXPECT_NE(error.find("is used by both directory entry"), std::string::npos) << error;
      EXPECT_NE(error.find("(\"c0\")"), std::string::npos) << error;
    }
  }
}

TEST(CompoundFileSharing, ThousandsOfEntriesOverOneChainCostLittleMemory) {
  constexpr std::size_t kCopies = 3000;
  Container file(256 * 1024, kCopies);
  file.shareWithCopies(file.entry(u"data"));
  const long before = peakResidentKilobytes();
  // What a rewrite does: open, then load the whole tree.
  std::string error;
  if (auto reader = CompoundFileReader::openBytes(file.bytes, error)) {
    CompoundNode root;
    readCompoundTree(*reader, 0, root, error);
    ADD_FAILURE() << "a file sharing sectors opened";
  }
  const long grownKilobytes = peakResidentKilobytes() - before;
  // Reading every copy would take 3000 x 256 KiB; a few times the file is what opening may cost.
  EXPECT_LT(grownKilobytes * 1024, static_cast<long>(8 * file.bytes.size()))
      << "file of " << file.bytes.size() << " bytes";
}

}  // namespace
}  // namespace odlex::storage
