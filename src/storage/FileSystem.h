#pragma once
// Every byte the library reads from or writes to disk goes through FileSystem, so that
// tests can make any single call fail and check that nothing was damaged.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace odlex::storage {

// A file opened for random-access reading.
class ReadableFile {
 public:
  virtual ~ReadableFile() = default;
  virtual std::uint64_t size() const = 0;
  // Reads exactly `length` bytes at `offset`; false (with a reason) on a short read or I/O error.
  virtual bool readAt(std::uint64_t offset, void* buffer, std::size_t length,
                      std::string& error) = 0;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual std::unique_ptr<ReadableFile> openRead(const std::filesystem::path& path,
                                                 std::string& error) = 0;
  // Creates or truncates `path` and writes all of `bytes`, flushed to disk.
  virtual bool writeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                         std::string& error) = 0;
  // Atomically replaces `to` with `from`.
  virtual bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
                      std::string& error) = 0;
  virtual bool remove(const std::filesystem::path& path, std::string& error) = 0;
  virtual bool exists(const std::filesystem::path& path) = 0;
  virtual bool createDirectories(const std::filesystem::path& path, std::string& error) = 0;

  // The process's real file system.
  static FileSystem& real();
};

// Writes `bytes` to a new file beside `target` and renames it over `target`. On any failure
// the temporary file is removed and `target` is left exactly as it was.
bool replaceFileAtomically(FileSystem& fs, const std::filesystem::path& target,
                           std::span<const std::uint8_t> bytes, std::string& error);

// Reads a whole file into memory (used for small inputs: idt files, certificates).
bool readWholeFile(FileSystem& fs, const std::filesystem::path& path,
                   std::vector<std::uint8_t>& out, std::string& error);

}  // namespace odlex::storage
