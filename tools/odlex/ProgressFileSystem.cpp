// Counting written bytes on the way to the real file system, and drawing the bar.

#include "ProgressFileSystem.h"

#include <algorithm>

namespace odlex::cli {
namespace {

// A file being written whose appends are counted by the file system that made it.
class CountedFile : public storage::WritableFile {
 public:
  CountedFile(std::unique_ptr<storage::WritableFile> inner, ProgressFileSystem& counter)
      : inner_(std::move(inner)), counter_(counter) {}

  bool append(std::span<const std::uint8_t> bytes, std::string& error) override {
    if (!inner_->append(bytes, error))
      return false;
    counter_.written(bytes.size());
    return true;
  }
  bool finish(std::string& error) override { return inner_->finish(error); }
  std::optional<storage::FileStamp> stamp() const override { return inner_->stamp(); }

 private:
  std::unique_ptr<storage::WritableFile> inner_;
  ProgressFileSystem& counter_;
};

}  // namespace

ProgressFileSystem::ProgressFileSystem(storage::FileSystem& inner, std::string label)
    : inner_(inner), bar_(std::move(label), "MiB") {}

void ProgressFileSystem::written(std::uint64_t bytes) {
  written_ += bytes;
  bar_.show(written_, expected_);
}

std::unique_ptr<storage::ReadableFile> ProgressFileSystem::openRead(
    const std::filesystem::path& path, std::string& error) {
  std::unique_ptr<storage::ReadableFile> file = inner_.openRead(path, error);
  if (file)
    expected_ = std::max(expected_, file->size());
  return file;
}

std::unique_ptr<storage::WritableFile> ProgressFileSystem::createFile(
    const std::filesystem::path& path, const storage::NewFileOptions& options, std::string& error) {
  std::unique_ptr<storage::WritableFile> file = inner_.createFile(path, options, error);
  if (!file)
    return nullptr;
  return std::make_unique<CountedFile>(std::move(file), *this);
}

bool ProgressFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to,
                                std::string& error) {
  return inner_.rename(from, to, error);
}

bool ProgressFileSystem::resolveLinks(const std::filesystem::path& path,
                                      std::filesystem::path& resolved, std::string& error) {
  return inner_.resolveLinks(path, resolved, error);
}

bool ProgressFileSystem::remove(const std::filesystem::path& path, std::string& error) {
  return inner_.remove(path, error);
}

bool ProgressFileSystem::exists(const std::filesystem::path& path) {
  return inner_.exists(path);
}

std::optional<storage::FileStamp> ProgressFileSystem::stampOf(const std::filesystem::path& path) {
  return inner_.stampOf(path);
}

bool ProgressFileSystem::createDirectories(const std::filesystem::path& path, std::string& error) {
  return inner_.createDirectories(path, error);
}

std::vector<std::string> ProgressFileSystem::entryNames(const std::filesystem::path& folder) {
  return inner_.entryNames(folder);
}

bool ProgressFileSystem::removeIfAbandoned(const std::filesystem::path& path) {
  return inner_.removeIfAbandoned(path);
}

}  // namespace odlex::cli
