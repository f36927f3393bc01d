#include "storage/FileSystem.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <random>
#include <string_view>
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

FileStamp stampOfStat(const struct stat& status) {
  return FileStamp{
      static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
      static_cast<std::uint64_t>(status.st_size),
      static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec};
}

class PosixReadableFile final : public ReadableFile {
 public:
  PosixReadableFile(int fd, std::uint64_t size, std::filesystem::path path)
      : fd_(fd), size_(size), path_(std::move(path)) {}

  std::uint64_t size() const override { return size_; }

  std::optional<FileStamp> stamp() const override {
    struct stat now {};
    if (::fstat(fd_.get(), &now) != 0)
      return std::nullopt;
    return stampOfStat(now);
  }

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

// Flushes the directory holding `path` so that a rename inside it survives a crash. Returns 0
// or the errno of the failure.
int syncParentDirectory(const std::filesystem::path& path) {
  std::filesystem::path parent = path.parent_path();
  if (parent.empty())
    parent = ".";
  FileDescriptor dir(::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (dir.get() < 0)
    return errno;
  return ::fsync(dir.get()) == 0 ? 0 : errno;
}

class PosixWritableFile final : public WritableFile {
 public:
  // `hold` is a second descriptor of the file whose lock outlives finish(), or -1.
  PosixWritableFile(int fd, int hold, std::filesystem::path path, bool flush)
      : fd_(fd), hold_(hold), path_(std::move(path)), flush_(flush) {}

  bool append(std::span<const std::uint8_t> bytes, std::string& error) override {
    const std::uint8_t* data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
      const ssize_t put = ::write(fd_.get(), data, left);
      if (put < 0) {
        if (errno == EINTR)
          continue;
        error = describe("cannot write", path_, errno);
        return false;
      }
      data += put;
      left -= static_cast<std::size_t>(put);
    }
    return true;
  }

  std::optional<FileStamp> stamp() const override {
    struct stat now {};
    if (::fstat(fd_.get(), &now) != 0)
      return std::nullopt;
    return stampOfStat(now);
  }

  bool finish(std::string& error) override {
    if (flush_ && ::fsync(fd_.get()) != 0) {
      error = describe("cannot flush", path_, errno);
      return false;
    }
    if (const int code = fd_.close(); code != 0) {
      error = describe("cannot close", path_, code);
      return false;
    }
    return true;
  }

 private:
  FileDescriptor fd_;
  FileDescriptor hold_;
  std::filesystem::path path_;
  bool flush_;
};

// Whether `path` still names the file open as `fd`.
bool stillNamed(int fd, const std::filesystem::path& path) {
  struct stat open {
  }, named{};
  return ::fstat(fd, &open) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

// Gives the new file `fd` the owner, group and permission bits of `model`. The owner and group
// are given only where the process may; the permission bits always.
bool takePermissionsOf(int fd, const struct stat& model, const std::filesystem::path& path,
                       std::string& error) {
  const bool given = ::fchown(fd, model.st_uid, model.st_gid) == 0 ||
                     ::fchown(fd, static_cast<uid_t>(-1), model.st_gid) == 0;
  static_cast<void>(given);  // a file the process may not give away stays its own
  if (::fchmod(fd, model.st_mode & 07777) != 0) {
    error = describe("cannot set the permissions of", path, errno);
    return false;
  }
  return true;
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

  std::unique_ptr<WritableFile> createFile(const std::filesystem::path& path,
                                           const NewFileOptions& options,
                                           std::string& error) override {
    struct stat model {};
    const bool hasModel =
        !options.permissionsOf.empty() && ::stat(options.permissionsOf.c_str(), &model) == 0;
    const int flags =
        O_WRONLY | O_CREAT | O_CLOEXEC | (options.exclusive ? O_EXCL | O_NOFOLLOW : O_TRUNC);
    // Created no more open than the model (the umask may only narrow it), then given the
    // model's exact bits before anything is written.
    const mode_t mode = hasModel ? (model.st_mode & 0777) : 0666;
    FileDescriptor fd(::open(path.c_str(), flags, mode));
    if (fd.get() < 0) {
      error = describe("cannot create", path, errno);
      return nullptr;
    }
    if (hasModel && !takePermissionsOf(fd.get(), model, path, error))
      return nullptr;
    // The lock belongs to the open file, which a duplicate descriptor keeps open after finish()
    // closes the one written through. Where locks are not supported nobody can take one, so
    // removeIfAbandoned keeps every file.
    FileDescriptor hold(options.exclusive ? ::dup(fd.get()) : -1);
    if (hold.get() >= 0 && ::flock(hold.get(), LOCK_EX) == 0 && !stillNamed(hold.get(), path)) {
      error = "cannot create " + path.string() + ": removed by another process as it was made";
      return nullptr;
    }
    return std::make_unique<PosixWritableFile>(fd.release(), hold.release(), path, options.flush);
  }

  std::vector<std::string> entryNames(const std::filesystem::path& folder) override {
    std::vector<std::string> names;
    std::error_code code;
    for (std::filesystem::directory_iterator entry(folder, code), end; !code && entry != end;
         entry.increment(code))
      names.push_back(entry->path().filename().string());
    return names;
  }

  bool removeIfAbandoned(const std::filesystem::path& path) override {
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat held {};
    return fd.get() >= 0 && ::fstat(fd.get(), &held) == 0 && S_ISREG(held.st_mode) &&
           ::flock(fd.get(), LOCK_EX | LOCK_NB) == 0 && stillNamed(fd.get(), path) &&
           ::unlink(path.c_str()) == 0;
  }

  bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
              std::string& error) override {
    if (::rename(from.c_str(), to.c_str()) != 0) {
      error = describe("cannot rename " + from.string() + " to", to, errno);
      return false;
    }
    if (const int code = syncParentDirectory(to); code != 0) {
      error = describe("replaced the file, but cannot flush the folder of", to, code);
      return false;
    }
    return true;
  }

  bool resolveLinks(const std::filesystem::path& path, std::filesystem::path& resolved,
                    std::string& error) override {
    constexpr int kMaxLinks = 40;  // as the kernel allows in one path
    resolved = path;
    for (int followed = 0; followed <= kMaxLinks; ++followed) {
      std::error_code code;
      const auto status = std::filesystem::symlink_status(resolved, code);
      if (code || !std::filesystem::is_symlink(status))
        return true;
      const std::filesystem::path next = std::filesystem::read_symlink(resolved, code);
      if (code) {
        error = "cannot follow the link " + resolved.string() + ": " + code.message();
        return false;
      }
      resolved = next.is_absolute() ? next : resolved.parent_path() / next;
    }
    error = "cannot follow the link " + path.string() + ": " + std::strerror(ELOOP);
    return false;
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

  std::optional<FileStamp> stampOf(const std::filesystem::path& path) override {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
      return std::nullopt;
    return stampOfStat(status);
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

// Temporary files are "<target's name>.odlex-<12 random hex digits>.tmp" in the target's
// folder, the name cut short where needed so that the whole stays within the longest name a
// folder entry may have.
constexpr std::string_view kTemporaryMark = ".odlex-";
constexpr std::string_view kTemporaryEnd = ".tmp";
constexpr std::size_t kTemporaryDigits = 12;

// The part of a temporary name before its digits.
std::string temporaryPrefix(const std::filesystem::path& target) {
  constexpr std::size_t kMaxNameBytes = 255;
  constexpr std::size_t kSuffixBytes =
      kTemporaryMark.size() + kTemporaryDigits + kTemporaryEnd.size();
  std::string name = target.filename().string();
  name.resize(std::min(name.size(), kMaxNameBytes - kSuffixBytes));
  return name.append(kTemporaryMark);
}

std::filesystem::path temporaryNameBeside(const std::filesystem::path& target) {
  static const char digits[] = "0123456789abcdef";
  std::random_device entropy;
  std::uniform_int_distribution<int> pick(0, 15);
  std::string name = temporaryPrefix(target);
  for (std::size_t i = 0; i < kTemporaryDigits; ++i)
    name += digits[pick(entropy)];
  name.append(kTemporaryEnd);
  return target.parent_path() / name;
}

bool isTemporaryOf(std::string_view name, std::string_view prefix) {
  if (name.size() != prefix.size() + kTemporaryDigits + kTemporaryEnd.size() ||
      !name.starts_with(prefix) || !name.ends_with(kTemporaryEnd))
    return false;
  const std::string_view digits = name.substr(prefix.size(), kTemporaryDigits);
  return std::all_of(digits.begin(), digits.end(),
                     [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

// Removes the temporary files that saves of `target` killed before they ended left beside it.
void removeAbandonedTemporaries(FileSystem& fs, const std::filesystem::path& target) {
  const std::string prefix = temporaryPrefix(target);
  const std::filesystem::path folder = target.parent_path();
  for (const std::string& name : fs.entryNames(folder.empty() ? "." : folder))
    if (isTemporaryOf(name, prefix))
      fs.removeIfAbandoned(target.parent_path() / name);
}

}  // namespace

FileSystem& FileSystem::real() {
  static PosixFileSystem instance;
  return instance;
}

namespace {
FileSystem* replacement = nullptr;
}  // namespace

FileSystem& FileSystem::current() {
  return replacement ? *replacement : real();
}

ScopedFileSystem::ScopedFileSystem(FileSystem& fs) : previous_(replacement) {
  replacement = &fs;
}

ScopedFileSystem::~ScopedFileSystem() {
  replacement = previous_;
}

bool FileSystem::writeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                           std::string& error) {
  auto file = createFile(path, {}, error);
  return file && file->append(bytes, error) && file->finish(error);
}

bool replaceFileAtomically(FileSystem& fs, const std::filesystem::path& target,
                           std::span<const std::uint8_t> bytes, std::string& error,
                           std::optional<FileStamp>* written) {
  return replaceFileAtomically(
      fs, target,
      [bytes](WritableFile& file, std::string& reason) { return file.append(bytes, reason); },
      error, written);
}

bool replaceFileAtomically(FileSystem& fs, const std::filesystem::path& target,
                           const std::function<bool(WritableFile&, std::string&)>& write,
                           std::string& error, std::optional<FileStamp>* written) {
  std::filesystem::path resolved;
  if (!fs.resolveLinks(target, resolved, error))
    return false;
  removeAbandonedTemporaries(fs, resolved);
  const std::filesystem::path temporary = temporaryNameBeside(resolved);
  NewFileOptions options;
  options.exclusive = true;
  options.permissionsOf = resolved;
  auto file = fs.createFile(temporary, options, error);
  if (!file)
    return false;
  bool complete = write(*file, error);
  if (complete && written)
    *written = file->stamp();
  // The file stays held until it has its final name, so nobody takes it for abandoned.
  if (complete && file->finish(error) && fs.rename(temporary, resolved, error))
    return true;
  std::string ignored;
  fs.remove(temporary, ignored);
  return false;
}

bool copyFileAtomically(FileSystem& fs, const std::filesystem::path& source,
                        const std::filesystem::path& target, std::string& error) {
  const std::unique_ptr<ReadableFile> from = fs.openRead(source, error);
  if (!from)
    return false;
  return replaceFileAtomically(
      fs, target,
      [&from](WritableFile& file, std::string& reason) {
        constexpr std::uint64_t kPiece = 1 << 20;
        std::vector<std::uint8_t> piece;
        for (std::uint64_t at = 0; at < from->size(); at += piece.size()) {
          piece.resize(static_cast<std::size_t>(std::min(kPiece, from->size() - at)));
          if (!from->readAt(at, piece.data(), piece.size(), reason) || !file.append(piece, reason))
            return false;
        }
        return true;
      },
      error);
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
