// Reads the compound file container. Every number taken from the file is checked before it is
// used: sector indices against the sectors the file really has, sizes against what their chains
// can hold, directory links against the directory's length. Every sector and mini sector is
// claimed by at most one owner (a stream, the directory, a sector table) when the file is
// opened, which rules out cycles and streams sharing sectors: reading a file then costs at most
// what the file holds.

#include <algorithm>
#include <cstring>

#include "storage/CompoundFile.h"
#include "storage/CompoundFileFormat.h"
#include "storage/MemoryFileSystem.h"
#include "storage/StreamName.h"

namespace odlex::storage {
namespace {

using namespace cfb;

std::uint64_t ceilDiv(std::uint64_t value, std::uint64_t unit) {
  return (value + unit - 1) / unit;
}

// Owners of sectors besides streams (which are owned by their directory index + 1).
enum Owner : std::uint32_t {
  kUnowned = 0,
  kOwnerFat = 0xFFFFFFF0,
  kOwnerDifat,
  kOwnerDirectory,
  kOwnerMiniFat,
  kOwnerMiniStream,
};

// One chain of sectors (or mini sectors) through an allocation table.
struct ChainRequest {
  const std::vector<std::uint32_t>* table;
  std::uint32_t bound;  // indices must be below this
  std::uint32_t start;
  std::uint64_t maxLength;  // stop after this many links (the length the data needs)
  const char* unit;         // "sector" or "mini sector", for messages
};

class Reader final : public CompoundFileReader {
 public:
  explicit Reader(std::unique_ptr<ReadableFile> file)
      : file_(std::move(file)), fileSize_(file_->size()) {}

  bool load(std::string& error) {
    if (!readHeader(error) || !readFat(error) || !readMiniFat(error) || !readDirectory(error) ||
        !readMiniStreamLocation(error) || !buildTree(error) || !claimStreams(error))
      return false;
    // Who owns which sector matters only while the file is checked.
    sectorOwners_ = {};
    miniOwners_ = {};
    return true;
  }

  std::shared_ptr<const StreamSource> streamSource(std::uint32_t index) const override {
    if (index >= entries_.size() || entries_[index].isStorage)
      return nullptr;
    return std::make_shared<Source>(*this, index);
  }

  std::uint16_t majorVersion() const override { return major_; }
  const std::vector<CompoundEntry>& entries() const override { return entries_; }

  bool readStream(std::uint32_t index, std::vector<std::uint8_t>& out,
                  std::string& error) const override {
    out.clear();
    if (index >= entries_.size() || entries_[index].isStorage) {
      error = "entry " + std::to_string(index) + " is not a stream";
      return false;
    }
    const std::uint64_t size = entries_[index].size;
    if (size == 0)
      return true;
    const bool inMiniStream = size < kMiniStreamCutoff;
    const std::uint32_t unitSize = inMiniStream ? kMiniSectorSize : sectorSize_;
    std::vector<std::uint32_t> chain;
    if (!walkChain(streamChain(index), chain, error)) {
      error = entryLabel(directoryIndex_[index], entries_[index].name) + ": " + error;
      return false;
    }
    std::vector<std::uint64_t> offsets(chain.size());
    for (std::size_t i = 0; i < chain.size(); ++i) {
      offsets[i] = inMiniStream ? miniSectorOffset(chain[i]) : sectorOffset(chain[i]);
    }
    out.resize(static_cast<std::size_t>(size));
    if (!readUnits(offsets, unitSize, out.data(), out.size(), error)) {
      out.clear();
      return false;
    }
    return true;
  }

 private:
  // Reads a stream along its chain, one run of neighbouring units at a time.
  class ChainReader final : public StreamReader {
   public:
    ChainReader(const Reader& reader, std::uint32_t index)
        : reader_(reader),
          chain_(reader.streamChain(index)),
          mini_(chain_.table == &reader.miniFat_),
          unitSize_(mini_ ? kMiniSectorSize : reader.sectorSize_),
          next_(chain_.start),
          left_(reader.entries_[index].size) {}

    bool read(std::uint8_t* out, std::size_t length, std::string& error) override {
      if (length > left_) {
        error = "read past the end of a stream";
        return false;
      }
      while (length > 0) {
        if (unitLeft_ == 0 && !nextUnit(error))
          return false;
        const std::uint64_t runStart = position();
        std::size_t run = 0;
        for (;;) {
          const std::size_t take = static_cast<std::size_t>(
              std::min<std::uint64_t>(unitLeft_, std::uint64_t{length - run}));
          run += take;
          unitUsed_ += take;
          unitLeft_ -= take;
          // A run goes on into the next unit when that unit follows this one in the file.
          if (run == length || unitLeft_ > 0 || mini_ || next_ != current_ + 1)
            break;
          if (!nextUnit(error))
            return false;
        }
        if (!reader_.readClamped(runStart, out, run, error))
          return false;
        out += run;
        length -= run;
        left_ -= run;
      }
      return true;
    }

   private:
    bool nextUnit(std::string& error) {
      if (taken_ == chain_.maxLength) {
        error = "a stream's chain ends before its data";
        return false;
      }
      if (!inRange(chain_, next_, error))
        return false;
      current_ = next_;
      next_ = (*chain_.table)[current_];
      ++taken_;
      unitUsed_ = 0;
      unitLeft_ = unitSize_;
      return true;
    }

    std::uint64_t position() const {
      return (mini_ ? reader_.miniSectorOffset(current_) : reader_.sectorOffset(current_)) +
             unitUsed_;
    }

    const Reader& reader_;
    const ChainRequest chain_;
    const bool mini_;
    const std::uint32_t unitSize_;
    std::uint32_t current_ = 0;
    std::uint32_t next_;
    std::uint64_t taken_ = 0;
    std::uint64_t unitUsed_ = 0;
    std::uint64_t unitLeft_ = 0;
    std::uint64_t left_;
  };

  class Source final : public StreamSource {
   public:
    Source(const Reader& reader, std::uint32_t index) : reader_(reader), index_(index) {}
    std::uint64_t size() const override { return reader_.entries_[index_].size; }
    std::unique_ptr<StreamReader> open(std::string&) const override {
      return std::make_unique<ChainReader>(reader_, index_);
    }

   private:
    const Reader& reader_;
    std::uint32_t index_;
  };

  static std::string entryLabel(std::uint32_t index, std::u16string_view name = {}) {
    std::string label = "directory entry " + std::to_string(index);
    if (!name.empty())
      label += " (" + describeEntryName(name) + ")";
    return label;
  }

  std::string ownerLabel(std::uint32_t owner) const {
    switch (owner) {
      case kOwnerFat:
        return "the FAT";
      case kOwnerDifat:
        return "the DIFAT";
      case kOwnerDirectory:
        return "the directory";
      case kOwnerMiniFat:
        return "the mini FAT";
      case kOwnerMiniStream:
        return "the mini stream";
      default: {
        std::u16string name;
        std::string ignored;
        decodeName(owner - 1, name, ignored);
        return entryLabel(owner - 1, name);
      }
    }
  }

  // Gives `unit` (an index already checked against `owners`) to `owner`; a unit that already
  // has one is refused, naming both.
  bool claim(std::vector<std::uint32_t>& owners, std::uint32_t unit, std::uint32_t owner,
             const char* unitName, std::string& error) const {
    const std::uint32_t held = owners[unit];
    if (held == kUnowned) {
      owners[unit] = owner;
      return true;
    }
    error = held == owner
                ? std::string(unitName) + " chain loops back to " + unitName + " " +
                      std::to_string(unit)
                : std::string(unitName) + " " + std::to_string(unit) + " is used by both " +
                      ownerLabel(held) + " and " + ownerLabel(owner);
    return false;
  }

  // Follows a chain, claiming each of its units for `owner`; `length` is how many it has.
  bool claimUnits(const ChainRequest& request, std::vector<std::uint32_t>& owners,
                  std::uint32_t owner, std::uint64_t& length, std::string& error) const {
    length = 0;
    for (std::uint32_t current = request.start;
         current != kEndOfChain && length < request.maxLength; ++length) {
      if (!inRange(request, current, error) || !claim(owners, current, owner, request.unit, error))
        return false;
      current = (*request.table)[current];
    }
    return true;
  }

  // Claims a chain as claimUnits does and gives its units.
  bool claimChain(const ChainRequest& request, std::vector<std::uint32_t>& owners,
                  std::uint32_t owner, std::vector<std::uint32_t>& chain,
                  std::string& error) const {
    std::uint64_t length = 0;
    return claimUnits(request, owners, owner, length, error) &&
           walkChain({request.table, request.bound, request.start, length, request.unit}, chain,
                     error);
  }

  static bool inRange(const ChainRequest& request, std::uint32_t index, std::string& error) {
    if (index < request.bound)
      return true;
    error = std::string(request.unit) + " index " + std::to_string(index) + " out of range (" +
            std::to_string(request.bound) + " " + request.unit + "s available)";
    return false;
  }

  // Follows the chain of a stream whose units were claimed when the file was opened, so it
  // neither loops nor runs short.
  static bool walkChain(const ChainRequest& request, std::vector<std::uint32_t>& chain,
                        std::string& error) {
    chain.clear();
    chain.reserve(static_cast<std::size_t>(request.maxLength));
    std::uint32_t current = request.start;
    while (chain.size() < request.maxLength) {
      if (!inRange(request, current, error))
        return false;
      chain.push_back(current);
      current = (*request.table)[current];
    }
    return true;
  }

  ChainRequest streamChain(std::uint32_t index) const {
    const std::uint64_t size = entries_[index].size;
    const bool inMiniStream = size < kMiniStreamCutoff;
    return ChainRequest{inMiniStream ? &miniFat_ : &fat_, inMiniStream ? miniBound_ : fatBound_,
                        starts_[index], ceilDiv(size, inMiniStream ? kMiniSectorSize : sectorSize_),
                        inMiniStream ? "mini sector" : "sector"};
  }

  // Claims the sectors of every stream, so that no two streams share one and every chain is
  // as long as its stream's size needs.
  bool claimStreams(std::string& error) {
    for (std::uint32_t index = 1; index < entries_.size(); ++index) {
      if (entries_[index].isStorage || entries_[index].size == 0)
        continue;
      const ChainRequest request = streamChain(index);
      auto& owners = request.table == &fat_ ? sectorOwners_ : miniOwners_;
      std::uint64_t length = 0;
      if (!claimUnits(request, owners, directoryIndex_[index] + 1, length, error) ||
          !requireLength(length, request.maxLength, entries_[index].size, error)) {
        error = entryLabel(directoryIndex_[index], entries_[index].name) + ": " + error;
        return false;
      }
    }
    return true;
  }

  static bool requireLength(std::uint64_t length, std::uint64_t needed, std::uint64_t size,
                            std::string& error) {
    if (length >= needed)
      return true;
    error = "size " + std::to_string(size) + " needs " + std::to_string(needed) +
            " sectors but its chain has only " + std::to_string(length);
    return false;
  }

  std::uint64_t sectorOffset(std::uint32_t sector) const {
    return (static_cast<std::uint64_t>(sector) + 1) * sectorSize_;
  }

  std::uint64_t miniSectorOffset(std::uint32_t miniSector) const {
    const std::uint64_t position = static_cast<std::uint64_t>(miniSector) * kMiniSectorSize;
    return sectorOffset(miniStreamSectors_[position / sectorSize_]) + position % sectorSize_;
  }

  // Reads `length` bytes made of units (sectors or mini sectors) starting at the given file
  // offsets, merging neighbouring units into one read. Bytes past the end of a file whose last
  // sector is cut short read as zero.
  bool readUnits(const std::vector<std::uint64_t>& offsets, std::uint32_t unitSize,
                 std::uint8_t* out, std::size_t length, std::string& error) const {
    std::size_t done = 0;
    std::size_t i = 0;
    while (done < length) {
      const std::uint64_t runStart = offsets[i];
      std::size_t runLength = std::min<std::size_t>(unitSize, length - done);
      ++i;
      while (done + runLength < length && offsets[i] == runStart + runLength) {
        runLength += std::min<std::size_t>(unitSize, length - done - runLength);
        ++i;
      }
      if (!readClamped(runStart, out + done, runLength, error))
        return false;
      done += runLength;
    }
    return true;
  }

  bool readClamped(std::uint64_t offset, std::uint8_t* out, std::size_t length,
                   std::string& error) const {
    const std::uint64_t available = offset < fileSize_ ? fileSize_ - offset : 0;
    const std::size_t present =
        static_cast<std::size_t>(std::min<std::uint64_t>(length, available));
    if (present > 0 && !file_->readAt(offset, out, present, error))
      return false;
    std::memset(out + present, 0, length - present);
    return true;
  }

  bool readSectors(const std::vector<std::uint32_t>& sectors, std::vector<std::uint8_t>& out,
                   std::string& error) const {
    std::vector<std::uint64_t> offsets(sectors.size());
    for (std::size_t i = 0; i < sectors.size(); ++i)
      offsets[i] = sectorOffset(sectors[i]);
    out.resize(sectors.size() * sectorSize_);
    return readUnits(offsets, sectorSize_, out.data(), out.size(), error);
  }

  static void decodeTable(const std::vector<std::uint8_t>& bytes,
                          std::vector<std::uint32_t>& table) {
    table.resize(bytes.size() / 4);
    for (std::size_t i = 0; i < table.size(); ++i)
      table[i] = load32(&bytes[i * 4]);
  }

  bool readHeader(std::string& error) {
    if (fileSize_ < kHeaderSize) {
      error = "file too small for a compound file header (" + std::to_string(fileSize_) +
              " bytes, need " + std::to_string(kHeaderSize) + ")";
      return false;
    }
    if (!file_->readAt(0, header_, kHeaderSize, error))
      return false;
    if (std::memcmp(header_, kSignature, sizeof kSignature) != 0) {
      error = "not a compound file: signature mismatch";
      return false;
    }
    if (load16(header_ + header::kByteOrder) != kByteOrderMark) {
      error = "header: byte order mark is not 0xFFFE";
      return false;
    }
    major_ = load16(header_ + header::kMajorVersion);
    const std::uint16_t sectorShift = load16(header_ + header::kSectorShift);
    if (major_ != 3 && major_ != 4) {
      error = "header: unsupported major version " + std::to_string(major_);
      return false;
    }
    const std::uint16_t expectedShift = major_ == 3 ? 9 : 12;
    if (sectorShift != expectedShift) {
      error = "header: sector shift " + std::to_string(sectorShift) + " does not match version " +
              std::to_string(major_) + " (expected " + std::to_string(expectedShift) + ")";
      return false;
    }
    if (load16(header_ + header::kMiniSectorShift) != kMiniSectorShift) {
      error = "header: mini sector shift " +
              std::to_string(load16(header_ + header::kMiniSectorShift)) + " is not 6";
      return false;
    }
    if (load32(header_ + header::kMiniStreamCutoff) != kMiniStreamCutoff) {
      error = "header: mini stream cutoff " +
              std::to_string(load32(header_ + header::kMiniStreamCutoff)) + " is not 4096";
      return false;
    }
    sectorSize_ = 1u << sectorShift;
    if (fileSize_ < sectorSize_) {
      error = "file too small for a version " + std::to_string(major_) + " header (" +
              std::to_string(fileSize_) + " bytes)";
      return false;
    }
    const std::uint64_t sectors = ceilDiv(fileSize_ - sectorSize_, sectorSize_);
    sectorCount_ = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(sectors, static_cast<std::uint64_t>(kMaxRegularSector) + 1));
    sectorOwners_.assign(sectorCount_, kUnowned);
    return true;
  }

  bool readFat(std::string& error) {
    const std::uint32_t fatCount = load32(header_ + header::kFatSectorCount);
    if (fatCount > sectorCount_) {
      error = "header: " + std::to_string(fatCount) + " FAT sectors declared but the file has " +
              std::to_string(sectorCount_) + " sectors";
      return false;
    }
    std::vector<std::uint32_t> fatSectors;
    fatSectors.reserve(fatCount);
    for (std::uint32_t i = 0; i < std::min(fatCount, kHeaderDifatEntries); ++i) {
      fatSectors.push_back(load32(header_ + header::kDifat + 4 * i));
    }
    if (!readDifatSectors(fatCount, fatSectors, error))
      return false;
    for (std::size_t i = 0; i < fatSectors.size(); ++i) {
      if (fatSectors[i] >= sectorCount_) {
        error = "DIFAT entry " + std::to_string(i) + ": FAT sector index " +
                std::to_string(fatSectors[i]) + " out of range (file has " +
                std::to_string(sectorCount_) + " sectors)";
        return false;
      }
      if (!claim(sectorOwners_, fatSectors[i], kOwnerFat, "sector", error)) {
        error = "FAT: " + error;
        return false;
      }
    }
    std::vector<std::uint8_t> bytes;
    if (!readSectors(fatSectors, bytes, error))
      return false;
    decodeTable(bytes, fat_);
    fatBound_ = static_cast<std::uint32_t>(std::min<std::size_t>(fat_.size(), sectorCount_));
    return true;
  }

  // Collects the FAT sector indices beyond the 109 held in the header from the DIFAT chain.
  bool readDifatSectors(std::uint32_t fatCount, std::vector<std::uint32_t>& fatSectors,
                        std::string& error) {
    const std::uint32_t perSector = sectorSize_ / 4 - 1;
    std::uint32_t current = load32(header_ + header::kFirstDifatSector);
    std::vector<std::uint8_t> bytes;
    while (fatSectors.size() < fatCount) {
      if (current >= sectorCount_) {
        error = "DIFAT sector index " + std::to_string(current) + " out of range (file has " +
                std::to_string(sectorCount_) + " sectors, " + std::to_string(fatSectors.size()) +
                " of " + std::to_string(fatCount) + " FAT sectors found)";
        return false;
      }
      if (!claim(sectorOwners_, current, kOwnerDifat, "sector", error)) {
        error = "DIFAT: " + error;
        return false;
      }
      if (!readSectors({current}, bytes, error))
        return false;
      for (std::uint32_t i = 0; i < perSector && fatSectors.size() < fatCount; ++i) {
        fatSectors.push_back(load32(&bytes[4 * i]));
      }
      current = load32(&bytes[4 * perSector]);
    }
    return true;
  }

  bool readMiniFat(std::string& error) {
    std::vector<std::uint32_t> chain;
    const ChainRequest request{&fat_, fatBound_, load32(header_ + header::kFirstMiniFatSector),
                               sectorCount_, "sector"};
    if (!claimChain(request, sectorOwners_, kOwnerMiniFat, chain, error)) {
      error = "mini FAT: " + error;
      return false;
    }
    std::vector<std::uint8_t> bytes;
    if (!readSectors(chain, bytes, error))
      return false;
    decodeTable(bytes, miniFat_);
    return true;
  }

  bool readDirectory(std::string& error) {
    const std::uint32_t first = load32(header_ + header::kFirstDirectorySector);
    if (first == kEndOfChain) {
      error = "header: the file has no directory";
      return false;
    }
    std::vector<std::uint32_t> chain;
    const ChainRequest request{&fat_, fatBound_, first, sectorCount_, "sector"};
    if (!claimChain(request, sectorOwners_, kOwnerDirectory, chain, error)) {
      error = "directory: " + error;
      return false;
    }
    if (!readSectors(chain, directory_, error))
      return false;
    directoryCount_ = static_cast<std::uint32_t>(directory_.size() / kDirectoryEntrySize);
    if (directoryCount_ == 0) {
      error = "directory: no entries, not even the root storage";
      return false;
    }
    return true;
  }

  const std::uint8_t* rawEntry(std::uint32_t index) const {
    return &directory_[static_cast<std::size_t>(index) * kDirectoryEntrySize];
  }

  std::uint64_t entrySize(const std::uint8_t* raw) const {
    const std::uint64_t size = load64(raw + entry::kSize);
    return major_ == 3 ? (size & 0xFFFFFFFFu) : size;
  }

  bool readMiniStreamLocation(std::string& error) {
    const std::uint8_t* root = rawEntry(0);
    if (root[entry::kType] != kTypeRoot) {
      error = "directory entry 0: object type " + std::to_string(root[entry::kType]) +
              " is not the root storage";
      return false;
    }
    miniStreamSize_ = entrySize(root);
    if (miniStreamSize_ == 0)
      return true;
    if (miniStreamSize_ > static_cast<std::uint64_t>(sectorCount_) * sectorSize_) {
      error = "directory entry 0: mini stream size " + std::to_string(miniStreamSize_) +
              " larger than the file";
      return false;
    }
    const ChainRequest request{&fat_, fatBound_, load32(root + entry::kStartSector),
                               ceilDiv(miniStreamSize_, sectorSize_), "sector"};
    if (!claimChain(request, sectorOwners_, kOwnerMiniStream, miniStreamSectors_, error) ||
        !requireLength(miniStreamSectors_.size(), request.maxLength, miniStreamSize_, error)) {
      error = "mini stream: " + error;
      return false;
    }
    miniBound_ = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(miniFat_.size(), ceilDiv(miniStreamSize_, kMiniSectorSize)));
    miniOwners_.assign(miniBound_, kUnowned);
    return true;
  }

  bool decodeName(std::uint32_t index, std::u16string& name, std::string& error) const {
    const std::uint8_t* raw = rawEntry(index);
    const std::uint16_t bytes = load16(raw + entry::kNameLength);
    if (bytes < 2 || bytes > 2 * (kMaxNameUnits + 1) || bytes % 2 != 0) {
      error = entryLabel(index) + ": name length " + std::to_string(bytes) +
              " is not an even byte count between 2 and 64";
      return false;
    }
    const std::size_t units = bytes / 2 - 1;
    name.resize(units);
    for (std::size_t i = 0; i < units; ++i) {
      name[i] = static_cast<char16_t>(load16(raw + entry::kName + 2 * i));
      if (name[i] == 0) {
        error = entryLabel(index) + ": name ends before its stated length";
        return false;
      }
    }
    if (load16(raw + entry::kName + 2 * units) != 0) {
      error = entryLabel(index) + ": name is not NUL-terminated at its stated length";
      return false;
    }
    return true;
  }

  bool decodeEntry(std::uint32_t index, CompoundEntry& out, std::string& error) const {
    const std::uint8_t* raw = rawEntry(index);
    if (!decodeName(index, out.name, error))
      return false;
    const std::uint8_t type = raw[entry::kType];
    if (index != 0 && type != kTypeStorage && type != kTypeStream) {
      error = entryLabel(index, out.name) + ": object type " + std::to_string(type) +
              " is not a storage or a stream";
      return false;
    }
    out.isStorage = type != kTypeStream;
    std::memcpy(out.clsid.data(), raw + entry::kClsid, out.clsid.size());
    out.stateBits = load32(raw + entry::kStateBits);
    out.created = load64(raw + entry::kCreated);
    out.modified = load64(raw + entry::kModified);
    if (out.isStorage)
      return true;
    out.size = entrySize(raw);
    const bool inMiniStream = out.size < kMiniStreamCutoff;
    const std::uint64_t limit =
        inMiniStream ? miniStreamSize_ : static_cast<std::uint64_t>(sectorCount_) * sectorSize_;
    if (out.size > limit) {
      error = entryLabel(index, out.name) + ": stream size " + std::to_string(out.size) +
              " larger than the " + (inMiniStream ? "mini stream" : "file");
      return false;
    }
    return true;
  }

  struct PendingLink {
    std::uint32_t target;
    std::uint32_t from;
    const char* field;
  };

  // Checks a link to another directory entry and marks it as used; each entry may be reached
  // only once, which rules out cycles and shared subtrees.
  bool claimLink(const PendingLink& link, std::vector<bool>& visited, std::string& error) const {
    if (link.target >= directoryCount_) {
      error = entryLabel(link.from) + ": " + link.field + " index " + std::to_string(link.target) +
              " out of range (" + std::to_string(directoryCount_) + " entries)";
      return false;
    }
    if (visited[link.target]) {
      error = entryLabel(link.from) + ": " + link.field + " index " + std::to_string(link.target) +
              " leads to an entry already reached (cycle or shared subtree)";
      return false;
    }
    visited[link.target] = true;
    return true;
  }

  // Gathers every storage's children by walking its sibling tree in order, storage by storage
  // through a work list, so neither deep nesting nor damaged links can recurse or loop.
  bool buildTree(std::string& error) {
    std::vector<bool> visited(directoryCount_, false);
    visited[0] = true;
    entries_.emplace_back();
    if (!decodeEntry(0, entries_[0], error))
      return false;
    starts_.push_back(0);
    directoryIndex_.push_back(0);
    std::vector<std::uint32_t> storages{0};  // indices into entries_
    std::vector<std::uint32_t> stack;
    for (std::size_t next = 0; next < storages.size(); ++next) {
      const std::uint32_t parent = storages[next];
      const std::uint32_t parentDirectory = directoryIndex_[parent];
      std::uint32_t current = load32(rawEntry(parentDirectory) + entry::kChild);
      PendingLink link{current, parentDirectory, "child"};
      while (current != kNoStream || !stack.empty()) {
        while (current != kNoStream) {
          if (!claimLink(link, visited, error))
            return false;
          stack.push_back(current);
          current = load32(rawEntry(current) + entry::kLeft);
          link = {current, stack.back(), "left sibling"};
        }
        const std::uint32_t directoryIndex = stack.back();
        stack.pop_back();
        const auto added = static_cast<std::uint32_t>(entries_.size());
        entries_.emplace_back();
        if (!decodeEntry(directoryIndex, entries_.back(), error))
          return false;
        entries_[parent].children.push_back(added);
        starts_.push_back(load32(rawEntry(directoryIndex) + entry::kStartSector));
        directoryIndex_.push_back(directoryIndex);
        if (entries_.back().isStorage)
          storages.push_back(added);
        current = load32(rawEntry(directoryIndex) + entry::kRight);
        link = {current, directoryIndex, "right sibling"};
      }
    }
    return true;
  }

  std::unique_ptr<ReadableFile> file_;
  std::uint64_t fileSize_;
  std::uint8_t header_[kHeaderSize] = {};
  std::uint16_t major_ = 0;
  std::uint32_t sectorSize_ = 0;
  std::uint32_t sectorCount_ = 0;
  std::vector<std::uint32_t> fat_;
  std::uint32_t fatBound_ = 0;
  std::vector<std::uint32_t> miniFat_;
  std::uint32_t miniBound_ = 0;
  std::vector<std::uint8_t> directory_;
  std::uint32_t directoryCount_ = 0;
  std::uint64_t miniStreamSize_ = 0;
  std::vector<std::uint32_t> miniStreamSectors_;
  std::vector<CompoundEntry> entries_;
  std::vector<std::uint32_t> starts_;  // first (mini) sector, per entry
  // Who holds each sector and mini sector (an Owner, or a stream's directory index + 1).
  std::vector<std::uint32_t> sectorOwners_;
  std::vector<std::uint32_t> miniOwners_;
  std::vector<std::uint32_t> directoryIndex_;  // position in the file's directory, per entry
};

}  // namespace

std::unique_ptr<CompoundFileReader> CompoundFileReader::open(std::unique_ptr<ReadableFile> file,
                                                             std::string& error) {
  if (!file) {
    error = "no file to read";
    return nullptr;
  }
  auto reader = std::make_unique<Reader>(std::move(file));
  if (!reader->load(error))
    return nullptr;
  return reader;
}

std::unique_ptr<CompoundFileReader> CompoundFileReader::openBytes(std::vector<std::uint8_t> bytes,
                                                                  std::string& error) {
  auto shared = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
  return open(std::make_unique<MemoryReadableFile>(std::move(shared)), error);
}

}  // namespace odlex::storage
