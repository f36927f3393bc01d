#pragma once
// The compound file container ("structured storage") that holds an installer database:
// a tree of storages and streams inside one file. Reads versions 3 and 4; writes version 3
// (and version 4 on request, so tests can produce such files).
//
// Nothing read from the file is trusted: every count, sector index, chain and size is
// checked against the file's real size before use, chains are followed with a step limit,
// and a damaged file yields false with a reason, never a crash or an oversized allocation.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "storage/FileSystem.h"

namespace odlex::storage {

using Clsid = std::array<std::uint8_t, 16>;

struct CompoundEntry {
  std::u16string name;
  bool isStorage = false;  // the root entry counts as a storage
  Clsid clsid{};
  std::uint32_t stateBits = 0;
  std::uint64_t created = 0;            // FILETIME
  std::uint64_t modified = 0;           // FILETIME
  std::uint64_t size = 0;               // streams only
  std::vector<std::uint32_t> children;  // entry indices, storages only
};

class CompoundFileReader {
 public:
  // Reads the header, the sector tables and the directory. The file stays open: stream
  // contents are read on demand by readStream.
  static std::unique_ptr<CompoundFileReader> open(std::unique_ptr<ReadableFile> file,
                                                  std::string& error);
  // The same over bytes held in memory (fuzzing, embedded storages).
  static std::unique_ptr<CompoundFileReader> openBytes(std::vector<std::uint8_t> bytes,
                                                       std::string& error);

  virtual ~CompoundFileReader() = default;
  virtual std::uint16_t majorVersion() const = 0;
  // Entry 0 is the root storage.
  virtual const std::vector<CompoundEntry>& entries() const = 0;
  virtual bool readStream(std::uint32_t entry, std::vector<std::uint8_t>& out,
                          std::string& error) const = 0;
};

// A tree to be written out.
struct CompoundNode {
  std::u16string name;
  bool isStorage = false;
  Clsid clsid{};
  std::uint32_t stateBits = 0;
  std::uint64_t created = 0;
  std::uint64_t modified = 0;
  std::vector<std::uint8_t> data;      // streams
  std::vector<CompoundNode> children;  // storages
};

// Loads entry `entry` of `reader` (a stream with its bytes, or a storage with everything under
// it) into `out`, e.g. to copy an embedded storage or to rewrite a whole file.
bool readCompoundTree(const CompoundFileReader& reader, std::uint32_t entry, CompoundNode& out,
                      std::string& error);

// Serialises `root` (a storage) into a complete compound file image. Names longer than
// 31 UTF-16 units or duplicated within one storage are refused.
bool writeCompoundFile(const CompoundNode& root, std::vector<std::uint8_t>& out, std::string& error,
                       std::uint16_t majorVersion = 3);

}  // namespace odlex::storage
