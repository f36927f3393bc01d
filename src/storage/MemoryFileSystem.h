#pragma once
// A FileSystem whose files live in memory: used by the fuzz targets and by tests that must not
// touch the disk. Paths are compared as given (no normalisation); a file's parent folder must
// have been created (or be the empty path) for writes to succeed, as on a real disk.

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "storage/FileSystem.h"

namespace odlex::storage {

// A read-only view of bytes held in memory.
class MemoryReadableFile final : public ReadableFile {
 public:
  explicit MemoryReadableFile(std::shared_ptr<const std::vector<std::uint8_t>> bytes)
      : bytes_(std::move(bytes)) {}

  std::uint64_t size() const override { return bytes_->size(); }
  // The held bytes' address stands for the inode; a file is never changed in place here.
  std::optional<FileStamp> stamp() const override;
  bool readAt(std::uint64_t offset, void* buffer, std::size_t length, std::string& error) override;

 private:
  std::shared_ptr<const std::vector<std::uint8_t>> bytes_;
};

class MemoryFileSystem final : public FileSystem {
 public:
  std::unique_ptr<ReadableFile> openRead(const std::filesystem::path& path,
                                         std::string& error) override;
  // Options other than `exclusive` have no meaning here.
  std::unique_ptr<WritableFile> createFile(const std::filesystem::path& path,
                                           const NewFileOptions& options,
                                           std::string& error) override;
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
              std::string& error) override;
  // There are no links: every path is its own file.
  bool resolveLinks(const std::filesystem::path& path, std::filesystem::path& resolved,
                    std::string& error) override;
  bool remove(const std::filesystem::path& path, std::string& error) override;
  bool exists(const std::filesystem::path& path) override;
  std::optional<FileStamp> stampOf(const std::filesystem::path& path) override;
  bool createDirectories(const std::filesystem::path& path, std::string& error) override;

  // The paths of every file, in order (lets tests check that no temporary file was left).
  std::vector<std::filesystem::path> files() const;

 private:
  bool hasFolder(const std::filesystem::path& path) const;

  std::map<std::filesystem::path, std::shared_ptr<std::vector<std::uint8_t>>> files_;
  std::set<std::filesystem::path> folders_;
};

}  // namespace odlex::storage
