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

// Reads one stream from its start to its end, a piece at a time.
class StreamReader {
 public:
  virtual ~StreamReader() = default;
  // The next `length` bytes of the stream; false with a reason when they cannot be read
  // (reading past the stream's end included).
  virtual bool read(std::uint8_t* out, std::size_t length, std::string& error) = 0;
};

// A stream whose bytes stay where they are (in an open file) until they are copied: a large
// stream is never held in memory whole.
class StreamSource {
 public:
  virtual ~StreamSource() = default;
  virtual std::uint64_t size() const = 0;
  // A reader from the stream's first byte; null with a reason when it cannot be read.
  virtual std::unique_ptr<StreamReader> open(std::string& error) const = 0;
};

// A source over bytes held in memory.
std::shared_ptr<const StreamSource> memorySource(std::vector<std::uint8_t> bytes);

// A source over the file `path` as it is now, read a piece at a time while the source lives;
// null with the reason when the file cannot be opened.
std::shared_ptr<const StreamSource> fileSource(FileSystem& fs, const std::filesystem::path& path,
                                               std::string& error);

// Writes all of `source` to a new file `path` (replacing what is there), a piece at a time.
bool writeStreamToFile(FileSystem& fs, const std::filesystem::path& path,
                       const StreamSource& source, const NewFileOptions& options,
                       std::string& error);

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
  // Stream `entry` as a source read on demand, in pieces. REQUIRES: the reader outlives the
  // source and every reader opened from it. Null for an entry that is not a stream.
  virtual std::shared_ptr<const StreamSource> streamSource(std::uint32_t entry) const = 0;
};

// A tree to be written out.
struct CompoundNode {
  std::u16string name;
  bool isStorage = false;
  Clsid clsid{};
  std::uint32_t stateBits = 0;
  std::uint64_t created = 0;
  std::uint64_t modified = 0;
  std::vector<std::uint8_t> data;              // a stream's bytes, unless `source` is set
  std::shared_ptr<const StreamSource> source;  // where a stream's bytes are, when not in data
  std::vector<CompoundNode> children;          // storages

  std::uint64_t streamSize() const { return source ? source->size() : data.size(); }
};

// How readCompoundTree gives streams: their bytes read into `data`, or as sources that read
// them only when they are copied.
enum class StreamContents { kRead, kSource };

// Loads entry `entry` of `reader` (a stream, or a storage with everything under it) into `out`,
// e.g. to copy an embedded storage or to rewrite a whole file. With kSource the reader must
// outlive `out`.
bool readCompoundTree(const CompoundFileReader& reader, std::uint32_t entry, CompoundNode& out,
                      std::string& error, StreamContents contents = StreamContents::kRead);

// Writes a tree as a compound file, in order and in bounded pieces: the memory it takes is that
// of the file's sector tables and directory, whatever the size of the streams, which are copied
// from their sources a piece at a time.
class CompoundFileWriter {
 public:
  CompoundFileWriter();
  ~CompoundFileWriter();
  CompoundFileWriter(const CompoundFileWriter&) = delete;
  CompoundFileWriter& operator=(const CompoundFileWriter&) = delete;

  // Lays out `root` (a storage). False with the reason when it cannot be written: names longer
  // than 31 UTF-16 units or duplicated within one storage, or too much for one file.
  // REQUIRES: `root` stays unchanged until write is done.
  bool plan(const CompoundNode& root, std::string& error, std::uint16_t majorVersion = 3);
  // Appends the planned file to `out`. False with the reason when a stream cannot be read or
  // the file cannot be written. REQUIRES: plan succeeded.
  bool write(WritableFile& out, std::string& error);

 private:
  struct Layout;
  std::unique_ptr<Layout> layout_;
};

// The whole file as bytes in memory (small files: embedded storages, tests).
bool writeCompoundFile(const CompoundNode& root, std::vector<std::uint8_t>& out, std::string& error,
                       std::uint16_t majorVersion = 3);

}  // namespace odlex::storage
