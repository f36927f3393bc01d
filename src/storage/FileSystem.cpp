#include "storage/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <random>
#include <system_error>
#include <utility>

namespace odlex::storage {
namespace {

std::string describe(const std::string& action, const std::filesystem::path& path, int code) {
  return action + " " + path.string() + ": " + std::strerror(code);
}

// Closes the descriptor when it goes out of scope unless it was closed explicitly.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor() {
    if (fd_ >= 0)
      ::close(fd_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }
  // Returns 0 or the errno of a failed close.
  int close() {
    const int result = ::close(fd_);
    fd_ = -1;
    return result == 0 ? 0 : errno;
  }

 private:
  int fd_;
};

class PosixReadableFile final : public ReadableFile {
 public:
  PosixReadableFile(int fd, std::uint64_t size, std::filesystem::path path)
      : fd_(fd), size_(size), path_(std::move(path)) {}

  std::uint64_t size() const override { return size_; }

  bool readAt(std::uint64_t offset, void* buffer, std::size_t length, std::string& error) override {
    if (offset > size_ || length > size_ - offset) {
      error = "read past the end of " + path_.string() + " (offset " + std::to_string(offset) +
              ", length " + std::to_string(length) + ", size " + std::to_string(size_) + ")";
      return false;
    }
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    while (length > 0) {
      const ssize_t got = ::pread(fd_.get(), bytes, length, static_cast<off_t>(offset));
      if (got < 0) {
        if (errno == EINTR)
          continue;
        error = describe("cannot read", path_, errno);
        return false;
      }
      if (got == 0) {
        error = "unexpected end of file in " + path_.string();
        return false;
      }
      bytes += got;
      offset += static_cast<std::uint64_t>(got);
      length -= static_cast<std::size_t>(got);
    }
    return true;
  }

 private:
  FileDescriptor fd_;
  std::uint64_t size_;
  std::filesystem::path path_;
};

// Flushes the directory holding `path` so that a rename inside it survives a crash.
void syncParentDirectory(const std::filesystem::path& path) {
  std::filesystem::path parent = path.parent_path();
  if (parent.empty())
    parent = ".";
  FileDescriptor dir(::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (dir.get() >= 0)
    ::fsync(dir.get());
}

class PosixFileSystem final : public FileSystem {
 public:
  std::unique_ptr<ReadableFile> openRead(const std::filesystem::path& path,
                                         std::string& error) override {
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0) {
      error = describe("cannot open", path, errno);
      return nullptr;
    }
    struct stat info {};
    if (::fstat(fd.get(), &info) != 0) {
      error = describe("cannot inspect", path, errno);
      return nullptr;
    }
    if (!S_ISREG(info.st_mode)) {
      error = "cannot open " + path.string() + ": not a regular file";
      return nullptr;
    }
    return std::make_unique<PosixReadableFile>(fd.release(),
                                               static_cast<std::uint64_t>(info.st_size), path);
  }

  bool writeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                 std::string& error) override {
    FileDescriptor fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (fd.get() < 0) {
      error = describe("cannot create", path, errno);
      return false;
    }
    const std::uint8_t* data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
      const ssize_t put = ::write(fd.get(), data, left);
      if (put < 0) {
        if (errno == EINTR)
          continue;
        error = describe("cannot write", path, errno);
        return false;
      }
      data += put;
      left -= static_cast<std::size_t>(put);
    }
    if (::fsync(fd.get()) != 0) {
      error = describe("cannot flush", path, errno);
      return false;
    }
    if (const int code = fd.close(); code != 0) {
      error = describe("cannot close", path, code);
      return false;
    }
    return true;
  }

  bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
              std::string& error) override {
    // A file that replaces another keeps the permissions of the one it replaces.
    struct stat replaced {};
    if (::stat(to.c_str(), &replaced) == 0 &&
        ::chmod(from.c_str(), replaced.st_mode & 07777) != 0) {
      error = describe("cannot set the permissions of", from, errno);
      return false;
    }
    if (::rename(from.c_str(), to.c_str()) != 0) {
      error = describe("cannot rename " + from.string() + " to", to, errno);
      return false;
    }
    syncParentDirectory(to);
    return true;
  }

  bool remove(const std::filesystem::path& path, std::string& error) override {
    if (::unlink(path.c_str()) != 0) {
      error = describe("cannot remove", path, errno);
      return false;
    }
    return true;
  }

  bool exists(const std::filesystem::path& path) override {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
  }

  bool createDirectories(const std::filesystem::path& path, std::string& error) override {
    std::error_code code;
    std::filesystem::create_directories(path, code);
    if (code) {
      error = "cannot create directory " + path.string() + ": " + code.message();
      return false;
    }
    return true;
  }
};

std::filesystem::path temporaryNameBeside(const std::filesystem::path& target) {
  static const char digits[] = "0123456789abcdef";
  std::random_device entropy;
  std::uniform_int_distribution<int> pick(0, 15);
  std::string suffix = ".odlex-";
  for (int i = 0; i < 12; ++i)
    suffix += digits[pick(entropy)];
  suffix += ".tmp";
  std::filesystem::path temporary = target;
  temporary += suffix;
  return temporary;
}

}  // namespace

FileSystem& FileSystem::real() {
  static PosixFileSystem instance;
  return instance;
}

bool replaceFileAtomically(FileSystem& fs, const std::filesystem::path& target,
                           std::span<const std::uint8_t> bytes, std::string& error) {
  const std::filesystem::path temporary = temporaryNameBeside(target);
  if (fs.writeFile(temporary, bytes, error) && fs.rename(temporary, target, error))
    return true;
  std::string ignored;
  fs.remove(temporary, ignored);
  return false;
}

bool readWholeFile(FileSystem& fs, const std::filesystem::path& path,
                   std::vector<std::uint8_t>& out, std::string& error) {
  std::unique_ptr<ReadableFile> file = fs.openRead(path, error);
  if (!file)
    return false;
  const std::uint64_t size = file->size();
  if (size > std::numeric_limits<std::size_t>::max() / 2) {
    error = "cannot read " + path.string() + ": file too large";
    return false;
  }
  out.resize(static_cast<std::size_t>(size));
  if (size > 0 && !file->readAt(0, out.data(), out.size(), error)) {
    out.clear();
    return false;
  }
  return true;
}

}  // namespace odlex::storage
