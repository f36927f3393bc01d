// Damaged containers: each must be refused with a message saying what is wrong, and never
// allocate more than the file's size (that random damage never crashes or hangs the reader is
// for fuzz/package_fuzzer). Among them, containers whose directory entries point into sectors
// another owner holds: each sector may belong to one stream (or to the directory or a sector
// table), else a small file could make the reader hand out the same bytes thousands of times.

#include <gtest/gtest.h>

#include <cstring>

#include "common/FaultyFileSystem.h"
#include "common/PeakMemory.h"
#include "storage/CompoundFile.h"
#include "storage/CompoundFileFormat.h"
#include "storage/MemoryFileSystem.h"

namespace odlex::storage {
namespace {

using namespace cfb;

CompoundNode node(std::u16string name, std::size_t size) {
  CompoundNode result;
  result.name = std::move(name);
  result.data.assign(size, 0x5A);
  return result;
}

// A small valid version 3 file whose parts the tests find through its header, then damage; with
// `copies`, also empty streams "c0", "c1", ... whose entries can be pointed anywhere.
class Image {
 public:
  explicit Image(std::size_t bigStreamSize = 5000, std::size_t copies = 0) {
    CompoundNode root;
    root.isStorage = true;
    CompoundNode sub = node(u"sub", 0);
    sub.isStorage = true;
    root.children = {node(u"big", bigStreamSize), node(u"small", 100), sub};
    for (std::size_t i = 0; i < copies; ++i) {
      const std::string name = "c" + std::to_string(i);
      root.children.push_back(node(std::u16string(name.begin(), name.end()), 0));
    }
    std::string error;
    EXPECT_TRUE(writeCompoundFile(root, bytes, error)) << error;
  }

  std::size_t sectorOffset(std::uint32_t sector) const { return (sector + 1) * 512u; }
  std::uint32_t headerField(std::size_t offset) const { return load32(&bytes[offset]); }
  void setHeaderField(std::size_t offset, std::uint32_t value) { store32(&bytes[offset], value); }

  std::uint32_t fatEntry(std::uint32_t sector) const {
    const std::uint32_t fatSector = headerField(header::kDifat + 4 * (sector / 128));
    return load32(&bytes[sectorOffset(fatSector) + 4 * (sector % 128)]);
  }
  void setFatEntry(std::uint32_t sector, std::uint32_t value) {
    store32(&bytes[sectorOffset(headerField(header::kDifat)) + 4 * sector], value);
  }
  void setMiniFatEntry(std::uint32_t miniSector, std::uint32_t value) {
    store32(&bytes[sectorOffset(headerField(header::kFirstMiniFatSector)) + 4 * miniSector], value);
  }

  // The raw directory entry with this name (the root is "Root Entry").
  std::uint8_t* entry(std::u16string_view name) {
    for (std::uint8_t* raw : directory()) {
      std::u16string found;
      for (std::size_t unit = 0; unit + 1 < load16(raw + entry::kNameLength) / 2u; ++unit) {
        found += static_cast<char16_t>(load16(raw + 2 * unit));
      }
      if (found == name)
        return raw;
    }
    ADD_FAILURE() << "no such entry";
    return bytes.data();
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
  // Every directory entry, along the directory's chain.
  std::vector<std::uint8_t*> directory() {
    std::vector<std::uint8_t*> entries;
    for (std::uint32_t sector = headerField(header::kFirstDirectorySector); sector != kEndOfChain;
         sector = fatEntry(sector)) {
      for (std::size_t j = 0; j < 4; ++j)
        entries.push_back(&bytes[sectorOffset(sector) + j * kDirectoryEntrySize]);
    }
    return entries;
  }
};

std::string openError(const std::vector<std::uint8_t>& bytes) {
  std::string error;
  auto reader = CompoundFileReader::openBytes(bytes, error);
  EXPECT_FALSE(reader) << "damaged file was accepted";
  EXPECT_FALSE(error.empty());
  return error;
}

// Opens fine but reading the named stream fails; returns the message.
std::string streamError(const std::vector<std::uint8_t>& bytes, std::u16string_view name) {
  std::string error;
  auto reader = CompoundFileReader::openBytes(bytes, error);
  if (!reader)
    return "open failed: " + error;
  const auto& entries = reader->entries();
  for (std::uint32_t i = 0; i < entries.size(); ++i) {
    if (entries[i].name != name)
      continue;
    std::vector<std::uint8_t> data;
    EXPECT_FALSE(reader->readStream(i, data, error)) << "damaged stream was read";
    EXPECT_TRUE(data.empty());
    return error;
  }
  return "no such stream";
}

#define EXPECT_CONTAINS(text, part) \
  EXPECT_NE(std::string(text).find(part), std::string::npos) << "message: " << (text)

TEST(CompoundFileBadInput, HeaderProblems) {
  EXPECT_CONTAINS(openError(std::vector<std::uint8_t>(511, 0)), "too small");

  Image signature;
  signature.bytes[3] ^= 0xFF;
  EXPECT_CONTAINS(openError(signature.bytes), "signature");

  Image byteOrder;
  store16(&byteOrder.bytes[header::kByteOrder], 0xFEFF);
  EXPECT_CONTAINS(openError(byteOrder.bytes), "byte order mark is not 0xFFFE");

  Image version5;
  store16(&version5.bytes[header::kMajorVersion], 5);
  EXPECT_CONTAINS(openError(version5.bytes), "unsupported major version 5");

  Image shift;
  store16(&shift.bytes[header::kSectorShift], 12);
  EXPECT_CONTAINS(openError(shift.bytes), "sector shift 12 does not match version 3");

  Image version4;
  store16(&version4.bytes[header::kMajorVersion], 4);
  store16(&version4.bytes[header::kSectorShift], 12);
  version4.bytes.resize(4000);
  EXPECT_CONTAINS(openError(version4.bytes), "too small for a version 4 header");

  Image miniShift;
  store16(&miniShift.bytes[header::kMiniSectorShift], 7);
  EXPECT_CONTAINS(openError(miniShift.bytes), "mini sector shift 7 is not 6");

  Image cutoff;
  cutoff.setHeaderField(header::kMiniStreamCutoff, 512);
  EXPECT_CONTAINS(openError(cutoff.bytes), "mini stream cutoff 512");

  Image fatCount;
  fatCount.setHeaderField(header::kFatSectorCount, 0x40000000);
  EXPECT_CONTAINS(openError(fatCount.bytes), "FAT sectors declared");
}

TEST(CompoundFileBadInput, SectorTablesPointingAstray) {
  Image fatPastEnd;
  fatPastEnd.setHeaderField(header::kDifat, 99999);
  EXPECT_CONTAINS(openError(fatPastEnd.bytes), "FAT sector index 99999 out of range");

  Image directoryCycle;
  const std::uint32_t directory = directoryCycle.headerField(header::kFirstDirectorySector);
  directoryCycle.setFatEntry(directory, directory);
  EXPECT_CONTAINS(openError(directoryCycle.bytes), "directory: sector chain loops back");

  Image miniFatCycle;
  const std::uint32_t miniFat = miniFatCycle.headerField(header::kFirstMiniFatSector);
  miniFatCycle.setFatEntry(miniFat, miniFat);
  EXPECT_CONTAINS(openError(miniFatCycle.bytes), "mini FAT: sector chain loops back");

  Image miniStreamInDirectory;
  store32(miniStreamInDirectory.entry(u"Root Entry") + entry::kStartSector,
          miniStreamInDirectory.headerField(header::kFirstDirectorySector));
  EXPECT_CONTAINS(openError(miniStreamInDirectory.bytes), "mini stream: sector");

  Image streamCycle;
  const std::uint32_t start = load32(streamCycle.entry(u"big") + entry::kStartSector);
  streamCycle.setFatEntry(start + 2, start + 1);
  EXPECT_CONTAINS(streamError(streamCycle.bytes, u"big"), "loops back to sector");

  Image freeInChain;
  freeInChain.setFatEntry(start + 3, kFreeSector);
  EXPECT_CONTAINS(streamError(freeInChain.bytes, u"big"), "out of range");

  Image miniBeyond;
  const std::uint32_t miniStart = load32(miniBeyond.entry(u"small") + entry::kStartSector);
  miniBeyond.setMiniFatEntry(miniStart, 500);
  EXPECT_CONTAINS(streamError(miniBeyond.bytes, u"small"), "mini sector index 500 out of range");
}

TEST(CompoundFileBadInput, DifatChainPastTheEnd) {
  Image large(8u << 20);
  ASSERT_GT(large.headerField(header::kFatSectorCount), kHeaderDifatEntries);
  large.setHeaderField(header::kFirstDifatSector, 0x7FFFFFF0);
  EXPECT_CONTAINS(openError(large.bytes), "DIFAT sector index 2147483632 out of range");
}

TEST(CompoundFileBadInput, DirectoryProblems) {
  Image childRange;
  store32(childRange.entry(u"Root Entry") + entry::kChild, 4096);
  EXPECT_CONTAINS(openError(childRange.bytes), "directory entry 0: child index 4096 out of range");

  Image selfChild;  // a storage that contains itself
  const std::uint32_t top = load32(selfChild.entry(u"Root Entry") + entry::kChild);
  store32(selfChild.entry(u"sub") + entry::kChild, top);
  EXPECT_CONTAINS(openError(selfChild.bytes), "already reached");

  Image tooLarge;
  store32(tooLarge.entry(u"big") + entry::kSize, 1u << 30);
  EXPECT_CONTAINS(openError(tooLarge.bytes), "stream size 1073741824 larger than the file");

  Image beyondChain;
  store32(beyondChain.entry(u"big") + entry::kSize, 5000 + 3 * 512);
  EXPECT_CONTAINS(streamError(beyondChain.bytes, u"big"),
                  "needs 13 sectors but its chain has only 10");

  Image miniTooLarge;
  store32(miniTooLarge.entry(u"Root Entry") + entry::kSize, 1u << 30);
  EXPECT_CONTAINS(openError(miniTooLarge.bytes),
                  "mini stream size 1073741824 larger than the file");

  Image beyondMini;
  store32(beyondMini.entry(u"small") + entry::kSize, 4000);
  EXPECT_CONTAINS(openError(beyondMini.bytes), "larger than the mini stream");

  Image nameLength;
  store16(nameLength.entry(u"small") + entry::kNameLength, 40);
  EXPECT_CONTAINS(openError(nameLength.bytes), "name ends before its stated length");

  Image oddLength;
  store16(oddLength.entry(u"small") + entry::kNameLength, 66);
  EXPECT_CONTAINS(openError(oddLength.bytes), "name length 66");

  Image unterminated;
  store16(unterminated.entry(u"small") + entry::kNameLength, 10);
  EXPECT_CONTAINS(openError(unterminated.bytes), "name is not NUL-terminated");

  Image rootName;
  store16(rootName.entry(u"Root Entry") + entry::kNameLength, 13);
  EXPECT_CONTAINS(openError(rootName.bytes), "directory entry 0: name length 13");

  Image rootType;
  rootType.entry(u"Root Entry")[entry::kType] = kTypeStorage;
  EXPECT_CONTAINS(openError(rootType.bytes), "not the root storage");

  Image unusedChild;
  unusedChild.entry(u"big")[entry::kType] = kTypeUnused;
  EXPECT_CONTAINS(openError(unusedChild.bytes), "is not a storage or a stream");
}

TEST(CompoundFileBadInput, ReadFailuresAreReported) {
  MemoryFileSystem fs;
  std::string error;
  ASSERT_TRUE(fs.writeFile("pkg.msi", Image().bytes, error));
  test::FaultyFileSystem faulty(fs);
  for (std::uint64_t failAt = 1;; ++failAt) {
    ASSERT_LT(failAt, 50u);
    faulty.failAtCall(failAt);
    auto file = faulty.openRead("pkg.msi", error);
    std::unique_ptr<CompoundFileReader> reader;
    if (file)
      reader = CompoundFileReader::open(std::move(file), error);
    CompoundNode tree;
    if (reader && readCompoundTree(*reader, 0, tree, error)) {
      EXPECT_FALSE(faulty.failed());
      EXPECT_EQ(tree.children.size(), 3u);
      break;
    }
    EXPECT_CONTAINS(error, "injected failure");
  }
}

TEST(CompoundFileBadInput, StreamsThatShareSectorsAreRefusedNamingBothOwners) {
  struct Case {
    const char* what;
    std::size_t bigSize;
    bool intoDirectory;  // point "big" at the directory instead of sharing it with "c0"
    const char* message;
  };
  const Case cases[] = {
      {"regular sectors", 8192, false, ": sector "},
      {"mini sectors", 300, false, ": mini sector "},
      {"the directory", 8192, true, "is used by both the directory and directory entry"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Image file(c.bigSize, 1);
    std::uint8_t* big = file.entry(u"big");
    if (c.intoDirectory)
      store32(big + entry::kStartSector, file.headerField(header::kFirstDirectorySector));
    else
      file.shareWithCopies(big);
    const std::string error = openError(file.bytes);
    EXPECT_CONTAINS(error, c.message);
    if (!c.intoDirectory) {
      EXPECT_CONTAINS(error, "is used by both directory entry");
      EXPECT_CONTAINS(error, "(\"c0\")");
    }
  }
}

TEST(CompoundFileBadInput, ThousandsOfEntriesOverOneChainCostLittleMemory) {
  Image file(256 * 1024, 3000);
  file.shareWithCopies(file.entry(u"big"));
  const long before = test::peakResidentBytes();
  // What a rewrite does: open, then load the whole tree.
  std::string error;
  if (auto reader = CompoundFileReader::openBytes(file.bytes, error)) {
    CompoundNode root;
    readCompoundTree(*reader, 0, root, error);
    ADD_FAILURE() << "a file sharing sectors opened";
  }
  const long grown = test::peakResidentBytes() - before;
  // Reading every copy would take 3000 x 256 KiB; a few times the file is what opening may cost.
  EXPECT_LT(grown, static_cast<long>(8 * file.bytes.size()))
      << "file of " << file.bytes.size() << " bytes";
}

}  // namespace
}  // namespace odlex::storage
