// Writes a tree of storages and streams as one compound file. The layout is fixed by the tree
// alone (same tree, same bytes): FAT sectors, DIFAT sectors, directory, mini FAT, mini stream,
// then the large streams in directory order. The file is written from start to end through a
// buffer, each stream copied from its source a piece at a time.

#include <algorithm>
#include <cstring>
#include <limits>
#include <span>

#include "storage/CompoundFile.h"
#include "storage/CompoundFileFormat.h"
#include "storage/CompoundFileNames.h"
#include "storage/CompoundFileTree.h"
#include "storage/StreamName.h"

namespace odlex::storage {
namespace {

using namespace cfb;

std::uint64_t ceilDiv(std::uint64_t value, std::uint64_t unit) {
  return (value + unit - 1) / unit;
}

struct DirectoryEntry {
  const CompoundNode* node;
  std::uint32_t left = kNoStream;
  std::uint32_t right = kNoStream;
  std::uint32_t child = kNoStream;
  std::uint8_t color = kBlack;
  std::uint32_t start = kEndOfChain;  // first sector or mini sector of a stream
};

// Flattens the tree into directory order: the root, then each storage's children in name
// order, storage by storage, with the sibling links of every storage's tree filled in.
bool flatten(const CompoundNode& root, std::vector<DirectoryEntry>& entries, std::string& error) {
  entries.push_back(DirectoryEntry{&root});
  std::vector<const CompoundNode*> sorted;
  std::vector<SiblingNode> tree;
  for (std::size_t next = 0; next < entries.size(); ++next) {
    const CompoundNode& parent = *entries[next].node;
    if (!parent.isStorage) {
      if (!parent.children.empty()) {
        error = "stream " + describeEntryName(parent.name) + " cannot have children";
        return false;
      }
      continue;
    }
    sorted.clear();
    for (const CompoundNode& child : parent.children) {
      if (child.name.empty() || child.name.size() > kMaxNameUnits ||
          child.name.find(u'\0') != std::u16string::npos) {
        error = "entry name " + describeEntryName(child.name) + " in storage " +
                describeEntryName(parent.name) + " must have 1 to 31 units and no NUL";
        return false;
      }
      sorted.push_back(&child);
    }
    std::sort(sorted.begin(), sorted.end(), [](const CompoundNode* a, const CompoundNode* b) {
      return compareEntryNames(a->name, b->name) < 0;
    });
    for (std::size_t i = 1; i < sorted.size(); ++i) {
      if (compareEntryNames(sorted[i - 1]->name, sorted[i]->name) == 0) {
        error = "storage " + describeEntryName(parent.name) + " holds " +
                describeEntryName(sorted[i - 1]->name) + " and " +
                describeEntryName(sorted[i]->name) +
                ", whose names are the same or differ only in case";
        return false;
      }
    }
    if (entries.size() + sorted.size() > kMaxRegularSector) {
      error = "too many entries for one compound file";
      return false;
    }
    const auto first = static_cast<std::uint32_t>(entries.size());
    const auto count = static_cast<std::uint32_t>(sorted.size());
    const auto toIndex = [first](std::uint32_t position) {
      return position == kNoStream ? kNoStream : first + position;
    };
    entries[next].child = toIndex(arrangeSiblings(count, tree));
    for (std::uint32_t i = 0; i < count; ++i) {
      DirectoryEntry added{sorted[i]};
      added.left = toIndex(tree[i].left);
      added.right = toIndex(tree[i].right);
      added.color = tree[i].color;
      entries.push_back(added);
    }
  }
  return true;
}

// Where each region of the file starts, in sectors.
struct Layout {
  std::uint32_t sectorSize = 0;
  std::uint32_t fatSectors = 0;
  std::uint32_t difatSectors = 0;
  std::uint32_t directoryStart = 0, directorySectors = 0;
  std::uint32_t miniFatStart = 0, miniFatSectors = 0;
  std::uint32_t miniStreamStart = 0, miniStreamSectors = 0;
  std::uint32_t dataStart = 0, dataSectors = 0;
  std::uint32_t miniSectors = 0;
  std::uint64_t totalSectors = 0;
};

// Appends to a file through a buffer, so that many small pieces make few writes.
class Emitter {
 public:
  explicit Emitter(WritableFile& out) : out_(out) { buffer_.reserve(kBufferSize); }

  bool append(std::span<const std::uint8_t> bytes, std::string& error) {
    written_ += bytes.size();
    if (buffer_.size() + bytes.size() > kBufferSize && !flush(error))
      return false;
    if (bytes.size() >= kBufferSize)
      return out_.append(bytes, error);
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    return true;
  }
  // Zeros up to the next multiple of `unit` bytes.
  bool pad(std::uint64_t unit, std::string& error) {
    static const std::uint8_t zeros[kMaxSectorSize] = {};
    const std::uint64_t rest = written_ % unit;
    return rest == 0 || append(std::span(zeros, static_cast<std::size_t>(unit - rest)), error);
  }
  bool flush(std::string& error) {
    if (!buffer_.empty() && !out_.append(buffer_, error))
      return false;
    buffer_.clear();
    return true;
  }

  static constexpr std::size_t kBufferSize = 1 << 20;
  static constexpr std::size_t kMaxSectorSize = 4096;

 private:
  WritableFile& out_;
  std::vector<std::uint8_t> buffer_;
  std::uint64_t written_ = 0;
};

// Collects appended bytes in memory.
class MemoryFile final : public WritableFile {
 public:
  explicit MemoryFile(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}
  bool append(std::span<const std::uint8_t> bytes, std::string&) override {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return true;
  }
  bool finish(std::string&) override { return true; }

 private:
  std::vector<std::uint8_t>& bytes_;
};

class Writer {
 public:
  Writer(std::uint16_t major, std::vector<DirectoryEntry> entries)
      : major_(major), entries_(std::move(entries)) {
    layout_.sectorSize = major == 3 ? 512 : 4096;
  }

  bool plan(std::string& error) { return planStreams(error) && planLayout(error); }

  bool write(WritableFile& file, std::string& error) const {
    Emitter out(file);
    return writeHeader(out, error) && writeFat(out, error) && writeDifat(out, error) &&
           writeDirectory(out, error) && writeMiniFat(out, error) &&
           writeStreams(out, true, error) && out.pad(layout_.sectorSize, error) &&
           writeStreams(out, false, error) && out.flush(error);
  }

 private:
  bool planStreams(std::string& error) {
    std::uint64_t miniSectors = 0;
    std::uint64_t dataSectors = 0;
    for (DirectoryEntry& entry : entries_) {
      const CompoundNode& node = *entry.node;
      if (node.isStorage && (!node.data.empty() || node.source)) {
        error = "storage " + describeEntryName(node.name) + " cannot hold data";
        return false;
      }
      const std::uint64_t size = node.isStorage ? 0 : node.streamSize();
      if (major_ == 3 && size > std::numeric_limits<std::uint32_t>::max()) {
        error = "stream " + describeEntryName(node.name) + " is too large for version 3";
        return false;
      }
      if (size == 0)
        continue;
      if (size < kMiniStreamCutoff) {
        entry.start = static_cast<std::uint32_t>(miniSectors);
        miniSectors += ceilDiv(size, kMiniSectorSize);
      } else {
        entry.start = static_cast<std::uint32_t>(dataSectors);  // relative until laid out
        dataSectors += ceilDiv(size, layout_.sectorSize);
      }
      if (dataSectors > kMaxRegularSector || miniSectors > kMaxRegularSector) {
        error = "streams too large for one compound file";
        return false;
      }
    }
    layout_.miniSectors = static_cast<std::uint32_t>(miniSectors);
    layout_.dataSectors = static_cast<std::uint32_t>(dataSectors);
    return true;
  }

  bool planLayout(std::string& error) {
    Layout& l = layout_;
    const std::uint64_t ss = l.sectorSize;
    l.directorySectors =
        static_cast<std::uint32_t>(ceilDiv(entries_.size() * kDirectoryEntrySize, ss));
    l.miniFatSectors = static_cast<std::uint32_t>(ceilDiv(l.miniSectors * 4ull, ss));
    l.miniStreamSectors =
        static_cast<std::uint32_t>(ceilDiv(l.miniSectors * std::uint64_t{kMiniSectorSize}, ss));
    const std::uint64_t contents =
        std::uint64_t{l.directorySectors} + l.miniFatSectors + l.miniStreamSectors + l.dataSectors;
    // The FAT must also describe its own sectors and the DIFAT sectors: grow both until stable.
    std::uint64_t fat = 0;
    std::uint64_t difat = 0;
    for (;;) {
      const std::uint64_t neededFat = ceilDiv(contents + fat + difat, ss / 4);
      const std::uint64_t neededDifat = neededFat > kHeaderDifatEntries
                                            ? ceilDiv(neededFat - kHeaderDifatEntries, ss / 4 - 1)
                                            : 0;
      if (neededFat == fat && neededDifat == difat)
        break;
      fat = neededFat;
      difat = neededDifat;
    }
    l.totalSectors = contents + fat + difat;
    if (l.totalSectors > kMaxRegularSector) {
      error = "streams too large for one compound file";
      return false;
    }
    l.fatSectors = static_cast<std::uint32_t>(fat);
    l.difatSectors = static_cast<std::uint32_t>(difat);
    l.directoryStart = l.fatSectors + l.difatSectors;
    l.miniFatStart = l.directoryStart + l.directorySectors;
    l.miniStreamStart = l.miniFatStart + l.miniFatSectors;
    l.dataStart = l.miniStreamStart + l.miniStreamSectors;
    return true;
  }

  // The header takes one whole sector (4096 bytes in version 4).
  bool writeHeader(Emitter& out, std::string& error) const {
    std::vector<std::uint8_t> sector(layout_.sectorSize, 0);
    std::uint8_t* h = sector.data();
    std::memcpy(h, kSignature, sizeof kSignature);
    store16(h + header::kMinorVersion, cfb::kMinorVersion);
    store16(h + header::kMajorVersion, major_);
    store16(h + header::kByteOrder, kByteOrderMark);
    store16(h + header::kSectorShift, major_ == 3 ? 9 : 12);
    store16(h + header::kMiniSectorShift, cfb::kMiniSectorShift);
    store32(h + header::kDirectorySectorCount, major_ == 3 ? 0 : layout_.directorySectors);
    store32(h + header::kFatSectorCount, layout_.fatSectors);
    store32(h + header::kFirstDirectorySector, layout_.directoryStart);
    store32(h + header::kMiniStreamCutoff, kMiniStreamCutoff);
    store32(h + header::kFirstMiniFatSector,
            layout_.miniFatSectors ? layout_.miniFatStart : kEndOfChain);
    store32(h + header::kMiniFatSectorCount, layout_.miniFatSectors);
    store32(h + header::kFirstDifatSector, layout_.difatSectors ? layout_.fatSectors : kEndOfChain);
    store32(h + header::kDifatSectorCount, layout_.difatSectors);
    for (std::uint32_t i = 0; i < kHeaderDifatEntries; ++i) {
      store32(h + header::kDifat + 4 * i, i < layout_.fatSectors ? i : kFreeSector);
    }
    return out.append(sector, error);
  }

  static void chain(std::vector<std::uint32_t>& table, std::uint32_t start, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
      table[start + i] = i + 1 < count ? start + i + 1 : kEndOfChain;
    }
  }

  // A table of sector numbers, little-endian, through a small buffer.
  static bool appendTable(Emitter& out, const std::vector<std::uint32_t>& table,
                          std::string& error) {
    std::uint8_t bytes[4096];
    for (std::size_t at = 0; at < table.size();) {
      const std::size_t count = std::min<std::size_t>(table.size() - at, sizeof bytes / 4);
      for (std::size_t i = 0; i < count; ++i)
        store32(bytes + 4 * i, table[at + i]);
      if (!out.append(std::span(bytes, count * 4), error))
        return false;
      at += count;
    }
    return true;
  }

  bool writeFat(Emitter& out, std::string& error) const {
    const Layout& l = layout_;
    std::vector<std::uint32_t> fat(std::size_t{l.fatSectors} * (l.sectorSize / 4), kFreeSector);
    std::fill_n(fat.begin(), l.fatSectors, kFatSector);
    std::fill_n(fat.begin() + l.fatSectors, l.difatSectors, kDifatSector);
    chain(fat, l.directoryStart, l.directorySectors);
    chain(fat, l.miniFatStart, l.miniFatSectors);
    chain(fat, l.miniStreamStart, l.miniStreamSectors);
    for (const DirectoryEntry& entry : entries_) {
      const std::uint64_t size = entry.node->isStorage ? 0 : entry.node->streamSize();
      if (size >= kMiniStreamCutoff) {
        chain(fat, l.dataStart + entry.start,
              static_cast<std::uint32_t>(ceilDiv(size, l.sectorSize)));
      }
    }
    return appendTable(out, fat, error);
  }

  bool writeDifat(Emitter& out, std::string& error) const {
    const Layout& l = layout_;
    const std::uint32_t perSector = l.sectorSize / 4 - 1;
    std::uint32_t fatIndex = kHeaderDifatEntries;
    std::vector<std::uint32_t> table(perSector + 1);
    for (std::uint32_t d = 0; d < l.difatSectors; ++d) {
      for (std::uint32_t i = 0; i < perSector; ++i, ++fatIndex)
        table[i] = fatIndex < l.fatSectors ? fatIndex : kFreeSector;
      table[perSector] = d + 1 == l.difatSectors ? kEndOfChain : l.fatSectors + d + 1;
      if (!appendTable(out, table, error))
        return false;
    }
    return true;
  }

  bool writeDirectory(Emitter& out, std::string& error) const {
    const std::size_t slots =
        std::size_t{layout_.directorySectors} * layout_.sectorSize / kDirectoryEntrySize;
    std::uint8_t raw[kDirectoryEntrySize];
    for (std::size_t i = 0; i < slots; ++i) {
      std::memset(raw, 0, sizeof raw);
      store32(raw + entry::kLeft, kNoStream);
      store32(raw + entry::kRight, kNoStream);
      store32(raw + entry::kChild, kNoStream);
      if (i < entries_.size())
        writeEntry(entries_[i], i == 0, raw);
      if (!out.append(raw, error))
        return false;
    }
    return true;
  }

  void writeEntry(const DirectoryEntry& e, bool isRoot, std::uint8_t* raw) const {
    const CompoundNode& node = *e.node;
    const std::u16string_view name = isRoot ? std::u16string_view(u"Root Entry") : node.name;
    for (std::size_t i = 0; i < name.size(); ++i)
      store16(raw + 2 * i, name[i]);
    store16(raw + entry::kNameLength, static_cast<std::uint16_t>(2 * (name.size() + 1)));
    raw[entry::kType] = isRoot ? kTypeRoot : node.isStorage ? kTypeStorage : kTypeStream;
    raw[entry::kColor] = e.color;
    store32(raw + entry::kLeft, e.left);
    store32(raw + entry::kRight, e.right);
    store32(raw + entry::kChild, e.child);
    std::memcpy(raw + entry::kClsid, node.clsid.data(), node.clsid.size());
    store32(raw + entry::kStateBits, node.stateBits);
    store64(raw + entry::kCreated, node.created);
    store64(raw + entry::kModified, node.modified);
    if (isRoot) {
      const bool hasMini = layout_.miniSectors > 0;
      store32(raw + entry::kStartSector, hasMini ? layout_.miniStreamStart : kEndOfChain);
      store64(raw + entry::kSize, std::uint64_t{layout_.miniSectors} * kMiniSectorSize);
    } else if (!node.isStorage) {
      const std::uint64_t size = node.streamSize();
      const std::uint32_t start = size >= kMiniStreamCutoff ? layout_.dataStart + e.start : e.start;
      store32(raw + entry::kStartSector, size == 0 ? kEndOfChain : start);
      store64(raw + entry::kSize, size);
    }
  }

  bool writeMiniFat(Emitter& out, std::string& error) const {
    std::vector<std::uint32_t> miniFat(
        std::size_t{layout_.miniFatSectors} * (layout_.sectorSize / 4), kFreeSector);
    for (const DirectoryEntry& entry : entries_) {
      const std::uint64_t size = entry.node->isStorage ? 0 : entry.node->streamSize();
      if (size > 0 && size < kMiniStreamCutoff)
        chain(miniFat, entry.start, static_cast<std::uint32_t>(ceilDiv(size, kMiniSectorSize)));
    }
    return appendTable(out, miniFat, error);
  }

  // The small streams (the mini stream's contents) or the large ones, in directory order, each
  // padded to its unit.
  bool writeStreams(Emitter& out, bool small, std::string& error) const {
    std::vector<std::uint8_t> piece;
    for (const DirectoryEntry& entry : entries_) {
      const CompoundNode& node = *entry.node;
      const std::uint64_t size = node.isStorage ? 0 : node.streamSize();
      if (size == 0 || (size < kMiniStreamCutoff) != small)
        continue;
      if (!copyStream(node, out, piece, error)) {
        error = "stream " + describeEntryName(node.name) + ": " + error;
        return false;
      }
      if (!out.pad(small ? kMiniSectorSize : layout_.sectorSize, error))
        return false;
    }
    return true;
  }

  static bool copyStream(const CompoundNode& node, Emitter& out, std::vector<std::uint8_t>& piece,
                         std::string& error) {
    if (!node.source)
      return out.append(node.data, error);
    const std::unique_ptr<StreamReader> reader = node.source->open(error);
    if (!reader)
      return false;
    for (std::uint64_t left = node.source->size(); left > 0;) {
      piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left, kCopyPiece)));
      if (!reader->read(piece.data(), piece.size(), error) || !out.append(piece, error))
        return false;
      left -= piece.size();
    }
    return true;
  }

  static constexpr std::uint64_t kCopyPiece = 1 << 20;

  std::uint16_t major_;
  std::vector<DirectoryEntry> entries_;
  Layout layout_;
};

}  // namespace

struct CompoundFileWriter::Layout {
  std::unique_ptr<Writer> writer;
};

CompoundFileWriter::CompoundFileWriter() : layout_(std::make_unique<Layout>()) {}
CompoundFileWriter::~CompoundFileWriter() = default;

bool CompoundFileWriter::plan(const CompoundNode& root, std::string& error,
                              std::uint16_t majorVersion) {
  layout_->writer.reset();
  if (majorVersion != 3 && majorVersion != 4) {
    error = "cannot write compound file version " + std::to_string(majorVersion);
    return false;
  }
  if (!root.isStorage) {
    error = "the root of a compound file must be a storage";
    return false;
  }
  std::vector<DirectoryEntry> entries;
  if (!flatten(root, entries, error))
    return false;
  auto writer = std::make_unique<Writer>(majorVersion, std::move(entries));
  if (!writer->plan(error))
    return false;
  layout_->writer = std::move(writer);
  return true;
}

bool CompoundFileWriter::write(WritableFile& out, std::string& error) {
  if (!layout_->writer) {
    error = "nothing planned to write";
    return false;
  }
  return layout_->writer->write(out, error);
}

bool writeCompoundFile(const CompoundNode& root, std::vector<std::uint8_t>& out, std::string& error,
                       std::uint16_t majorVersion) {
  out.clear();
  CompoundFileWriter writer;
  MemoryFile file(out);
  if (!writer.plan(root, error, majorVersion) || !writer.write(file, error)) {
    out.clear();
    return false;
  }
  return true;
}

}  // namespace odlex::storage
