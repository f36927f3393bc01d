// Whole-file reads and file digests over POSIX file descriptors, so that the reason of a
// failure (errno) can be given as a status code.

#include "signature/SystemFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <openssl/evp.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace odlex::signature {
namespace {

unsigned long statusOf(int error) {
  switch (error) {
    case ENOENT:
      return kFileNotFound;
    case ENOTDIR:
      return kPathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
      return kAccessDenied;
    default:
      return kReadFault;
  }
}

// An open file descriptor of a regular file, closed on destruction.
class Descriptor {
 public:
  explicit Descriptor(const std::filesystem::path& path)
      : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (fd_ >= 0)
      ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  // kSuccess with the file's size, or the reason it cannot be read.
  unsigned long open(std::uint64_t& size) const {
    if (fd_ < 0)
      return statusOf(errno);
    struct stat info {};
    if (::fstat(fd_, &info) != 0)
      return statusOf(errno);
    if (S_ISDIR(info.st_mode))
      return kAccessDenied;
    size = static_cast<std::uint64_t>(info.st_size);
    return kSuccess;
  }

  // Reads up to `length` bytes; the count read (0 at the end), or -1 with errno set.
  ssize_t read(unsigned char* buffer, std::size_t length) const {
    ssize_t got;
    do {
      got = ::read(fd_, buffer, length);
    } while (got < 0 && errno == EINTR);
    return got;
  }

 private:
  int fd_;
};

}  // namespace

const char* fileStatusText(unsigned long status) {
  switch (status) {
    case kSuccess:
      return "read";
    case kFileNotFound:
      return "no such file";
    case kPathNotFound:
      return "a folder of its path is missing";
    case kAccessDenied:
      return "not readable, or a folder";
    case kInvalidData:
      return "not what was expected";
    case kHandleEndOfFile:
      return "empty";
    case kFileTooLarge:
      return "too large";
    default:
      return "cannot be read";
  }
}

unsigned long readWholeFile(const std::filesystem::path& path, std::uint64_t maxSize,
                            std::vector<unsigned char>& bytes) {
  bytes.clear();
  Descriptor file(path);
  std::uint64_t size = 0;
  if (const unsigned long status = file.open(size); status != kSuccess)
    return status;
  if (size > maxSize)
    return kFileTooLarge;
  bytes.resize(static_cast<std::size_t>(size));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = file.read(bytes.data() + done, bytes.size() - done);
    if (got <= 0) {
      const unsigned long status = got < 0 ? statusOf(errno) : kReadFault;
      bytes.clear();
      return status;
    }
    done += static_cast<std::size_t>(got);
  }
  return bytes.empty() ? kHandleEndOfFile : kSuccess;
}

unsigned long readFileStart(const std::filesystem::path& path, std::span<unsigned char> start,
                            std::uint64_t& size) {
  Descriptor file(path);
  if (const unsigned long status = file.open(size); status != kSuccess)
    return status;
  if (size == 0)
    return kHandleEndOfFile;
  const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, start.size()));
  for (std::size_t done = 0; done < wanted;) {
    const ssize_t got = file.read(start.data() + done, wanted - done);
    if (got <= 0)
      return got < 0 ? statusOf(errno) : kReadFault;
    done += static_cast<std::size_t>(got);
  }
  return kSuccess;
}

unsigned long md5OfFile(const std::filesystem::path& path, std::array<unsigned char, 16>& digest) {
  Descriptor file(path);
  std::uint64_t size = 0;
  if (const unsigned long status = file.open(size); status != kSuccess)
    return status;
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                  EVP_MD_CTX_free);
  if (!context || EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) != 1)
    return kReadFault;
  std::vector<unsigned char> block(64 * 1024);
  for (;;) {
    const ssize_t got = file.read(block.data(), block.size());
    if (got < 0)
      return statusOf(errno);
    if (got == 0)
      break;
    EVP_DigestUpdate(context.get(), block.data(), static_cast<std::size_t>(got));
  }
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1 || length != digest.size())
    return kReadFault;
  return kSuccess;
}

}  // namespace odlex::signature
