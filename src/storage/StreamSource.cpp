// Stream sources over memory, and copying a source to a file in pieces.

#include <algorithm>
#include <cstring>

#include "storage/CompoundFile.h"

namespace odlex::storage {

namespace {

class MemorySource final : public StreamSource {
 public:
  explicit MemorySource(std::vector<std::uint8_t> bytes)
      : bytes_(std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes))) {}
  std::uint64_t size() const override { return bytes_->size(); }
  std::unique_ptr<StreamReader> open(std::string&) const override {
    struct Reader final : StreamReader {
      std::shared_ptr<const std::vector<std::uint8_t>> bytes;
      std::size_t at = 0;
      bool read(std::uint8_t* out, std::size_t length, std::string& error) override {
        if (length > bytes->size() - at) {
          error = "read past the end of a stream";
          return false;
        }
        std::memcpy(out, bytes->data() + at, length);
        at += length;
        return true;
      }
    };
    auto reader = std::make_unique<Reader>();
    reader->bytes = bytes_;
    return reader;
  }

 private:
  std::shared_ptr<const std::vector<std::uint8_t>> bytes_;
};

class FileSource final : public StreamSource {
 public:
  explicit FileSource(std::unique_ptr<ReadableFile> file)
      : file_(std::move(file)), size_(file_->size()) {}
  std::uint64_t size() const override { return size_; }
  std::unique_ptr<StreamReader> open(std::string&) const override {
    struct Reader final : StreamReader {
      std::shared_ptr<ReadableFile> file;
      std::uint64_t size = 0;
      std::uint64_t at = 0;
      bool read(std::uint8_t* out, std::size_t length, std::string& error) override {
        if (length > size - at) {
          error = "read past the end of a stream";
          return false;
        }
        if (!file->readAt(at, out, length, error))
          return false;
        at += length;
        return true;
      }
    };
    auto reader = std::make_unique<Reader>();
    reader->file = file_;
    reader->size = size_;
    return reader;
  }

 private:
  std::shared_ptr<ReadableFile> file_;
  std::uint64_t size_;
};

constexpr std::uint64_t kPiece = 1 << 20;

}  // namespace

std::shared_ptr<const StreamSource> memorySource(std::vector<std::uint8_t> bytes) {
  return std::make_shared<MemorySource>(std::move(bytes));
}

std::shared_ptr<const StreamSource> fileSource(FileSystem& fs, const std::filesystem::path& path,
                                               std::string& error) {
  std::unique_ptr<ReadableFile> file = fs.openRead(path, error);
  if (!file)
    return nullptr;
  return std::make_shared<FileSource>(std::move(file));
}

bool writeStreamToFile(FileSystem& fs, const std::filesystem::path& path,
                       const StreamSource& source, const NewFileOptions& options,
                       std::string& error) {
  std::unique_ptr<StreamReader> reader = source.open(error);
  if (!reader)
    return false;
  std::unique_ptr<WritableFile> file = fs.createFile(path, options, error);
  if (!file)
    return false;
  std::vector<std::uint8_t> piece;
  for (std::uint64_t left = source.size(); left > 0; left -= piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min(left, kPiece)));
    if (!reader->read(piece.data(), piece.size(), error) || !file->append(piece, error))
      return false;
  }
  return file->finish(error);
}

}  // namespace odlex::storage
