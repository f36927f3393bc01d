#include "storage/MemoryFileSystem.h"

#include <cstring>

namespace odlex::storage {

bool MemoryReadableFile::readAt(std::uint64_t offset, void* buffer, std::size_t length,
                                std::string& error) {
  const std::uint64_t size = bytes_->size();
  if (offset > size || length > size - offset) {
    error = "read past the end of an in-memory file (offset " + std::to_string(offset) +
            ", length " + std::to_string(length) + ", size " + std::to_string(size) + ")";
    return false;
  }
  if (length > 0)
    std::memcpy(buffer, bytes_->data() + offset, length);
  return true;
}

namespace {

FileStamp stampOfBytes(const std::vector<std::uint8_t>& bytes) {
  return FileStamp{0, reinterpret_cast<std::uintptr_t>(&bytes), bytes.size(), 0};
}

}  // namespace

std::optional<FileStamp> MemoryReadableFile::stamp() const {
  return stampOfBytes(*bytes_);
}

std::unique_ptr<ReadableFile> MemoryFileSystem::openRead(const std::filesystem::path& path,
                                                         std::string& error) {
  const auto found = files_.find(path);
  if (found == files_.end()) {
    error = "cannot open " + path.string() + ": No such file or directory";
    return nullptr;
  }
  return std::make_unique<MemoryReadableFile>(found->second);
}

namespace {

// Appends straight into the file's bytes, as a real file shows what was written so far.
class MemoryWritableFile final : public WritableFile {
 public:
  explicit MemoryWritableFile(std::shared_ptr<std::vector<std::uint8_t>> bytes)
      : bytes_(std::move(bytes)) {}
  bool append(std::span<const std::uint8_t> bytes, std::string&) override {
    bytes_->insert(bytes_->end(), bytes.begin(), bytes.end());
    return true;
  }
  bool finish(std::string&) override { return true; }
  std::optional<FileStamp> stamp() const override { return stampOfBytes(*bytes_); }

 private:
  std::shared_ptr<std::vector<std::uint8_t>> bytes_;
};

}  // namespace

std::unique_ptr<WritableFile> MemoryFileSystem::createFile(const std::filesystem::path& path,
                                                           const NewFileOptions& options,
                                                           std::string& error) {
  if (!hasFolder(path.parent_path()) || folders_.count(path) != 0) {
    error = "cannot create " + path.string() + ": No such file or directory";
    return nullptr;
  }
  if (options.exclusive && files_.count(path) != 0) {
    error = "cannot create " + path.string() + ": File exists";
    return nullptr;
  }
  // A new vector, so that readers of the old contents keep what they opened.
  auto bytes = std::make_shared<std::vector<std::uint8_t>>();
  files_[path] = bytes;
  return std::make_unique<MemoryWritableFile>(std::move(bytes));
}

bool MemoryFileSystem::resolveLinks(const std::filesystem::path& path,
                                    std::filesystem::path& resolved, std::string&) {
  resolved = path;
  return true;
}

bool MemoryFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to,
                              std::string& error) {
  const auto found = files_.find(from);
  if (found == files_.end() || !hasFolder(to.parent_path())) {
    error = "cannot rename " + from.string() + " to " + to.string() + ": No such file or directory";
    return false;
  }
  auto bytes = found->second;
  files_.erase(found);
  files_[to] = std::move(bytes);
  return true;
}

bool MemoryFileSystem::remove(const std::filesystem::path& path, std::string& error) {
  if (files_.erase(path) == 0) {
    error = "cannot remove " + path.string() + ": No such file or directory";
    return false;
  }
  return true;
}

bool MemoryFileSystem::exists(const std::filesystem::path& path) {
  return files_.count(path) != 0 || folders_.count(path) != 0;
}

std::optional<FileStamp> MemoryFileSystem::stampOf(const std::filesystem::path& path) {
  const auto found = files_.find(path);
  if (found == files_.end())
    return std::nullopt;
  return stampOfBytes(*found->second);
}

bool MemoryFileSystem::createDirectories(const std::filesystem::path& path, std::string& error) {
  for (std::filesystem::path folder = path; !folder.empty() && folder != folder.root_path();
       folder = folder.parent_path()) {
    if (files_.count(folder) != 0) {
      error = "cannot create directory " + path.string() + ": " + folder.string() + " is a file";
      return false;
    }
  }
  for (std::filesystem::path folder = path; !folder.empty() && folder != folder.root_path();
       folder = folder.parent_path()) {
    folders_.insert(folder);
  }
  return true;
}

std::vector<std::filesystem::path> MemoryFileSystem::files() const {
  std::vector<std::filesystem::path> paths;
  paths.reserve(files_.size());
  for (const auto& [path, bytes] : files_)
    paths.push_back(path);
  return paths;
}

bool MemoryFileSystem::hasFolder(const std::filesystem::path& path) const {
  return path.empty() || path == path.root_path() || folders_.count(path) != 0;
}

}  // namespace odlex::storage
