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
    : ForwardingFileSystem(inner), bar_(std::move(label), "MiB") {}

void ProgressFileSystem::written(std::uint64_t bytes) {
  written_ += bytes;
  bar_.show(written_, expected_);
}

std::unique_ptr<storage::ReadableFile> ProgressFileSystem::openRead(
    const std::filesystem::path& path, std::string& error) {
  std::unique_ptr<storage::ReadableFile> file = inner().openRead(path, error);
  if (file)
    expected_ = std::max(expected_, file->size());
  return file;
}

std::unique_ptr<storage::WritableFile> ProgressFileSystem::createFile(
    const std::filesystem::path& path, const storage::NewFileOptions& options, std::string& error) {
  std::unique_ptr<storage::WritableFile> file = inner().createFile(path, options, error);
  if (!file)
    return nullptr;
  return std::make_unique<CountedFile>(std::move(file), *this);
}

}  // namespace odlex::cli
