#pragma once
// Every byte the library reads from or writes to disk goes through FileSystem, so that
// tests can make any single call fail and check that nothing was damaged.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace odlex::storage {

// What tells one state of a file from another: which file it is, its size and when its
// contents last changed. Two stamps of one path differ when the file was replaced or rewritten
// in between.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modifiedNanoseconds = 0;
  bool operator==(const FileStamp&) const = default;
};

// A file opened for random-access reading.
class ReadableFile {
 public:
  virtual ~ReadableFile() = default;
  virtual std::uint64_t size() const = 0;
  // The open file's stamp now (it follows the file, not its name: rewriting the file in place
  // changes it, replacing the name with another file does not); nothing when it cannot be told.
  virtual std::optional<FileStamp> stamp() const { return std::nullopt; }
  // Reads exactly `length` bytes at `offset`; false (with a reason) on a short read or I/O error.
  virtual bool readAt(std::uint64_t offset, void* buffer, std::size_t length,
                      std::string& error) = 0;
};

// A file being written from start to end.
class WritableFile {
 public:
  virtual ~WritableFile() = default;
  // Appends `bytes`; false with a reason when they could not all be written (a full disk too).
  virtual bool append(std::span<const std::uint8_t> bytes, std::string& error) = 0;
  // Flushes everything appended to the disk (unless made with `flush` false) and closes the
  // file; false with a reason. A file dropped without finish() is closed, its contents
  // unflushed.
  virtual bool finish(std::string& error) = 0;
  // The stamp of the file as written so far (before finish); nothing when it cannot be told.
  virtual std::optional<FileStamp> stamp() const { return std::nullopt; }
};

// How createFile makes its file.
struct NewFileOptions {
  // Fail when anything (a file or a link) already has the path, rather than truncate it. The
  // file made is held (a lock other processes see) until its WritableFile is dropped, so that
  // removeIfAbandoned tells it from one whose writer died.
  bool exclusive = false;
  // When this names an existing file, the new file takes its permission bits, and its owner
  // and group where the process may give them, before any byte is written.
  std::filesystem::path permissionsOf;
  // When false, finish() closes the file without waiting for the disk: for files that can be
  // made again from their source (exported tables and cells), where one flush per file would
  // cost far more than writing it.
  bool flush = true;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual std::unique_ptr<ReadableFile> openRead(const std::filesystem::path& path,
                                                 std::string& error) = 0;
  // Creates `path` for writing (truncating what is there unless `options.exclusive`); null
  // with a reason on failure.
  virtual std::unique_ptr<WritableFile> createFile(const std::filesystem::path& path,
                                                   const NewFileOptions& options,
                                                   std::string& error) = 0;
  // Creates or truncates `path` and writes all of `bytes`, flushed to disk.
  bool writeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                 std::string& error);
  // Atomically replaces `to` with `from`, then flushes the folder so the change survives a
  // crash; a failure of that flush is reported although the rename happened.
  virtual bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
                      std::string& error) = 0;
  // The file that writing to `path` would change: `path` with symbolic links followed, or
  // `path` itself when nothing is there. False with a reason for a loop of links.
  virtual bool resolveLinks(const std::filesystem::path& path, std::filesystem::path& resolved,
                            std::string& error) = 0;
  virtual bool remove(const std::filesystem::path& path, std::string& error) = 0;
  virtual bool exists(const std::filesystem::path& path) = 0;
  // The stamp of the file `path` names now (links followed); nothing when there is none or it
  // cannot be told.
  virtual std::optional<FileStamp> stampOf(const std::filesystem::path&) { return std::nullopt; }
  virtual bool createDirectories(const std::filesystem::path& path, std::string& error) = 0;
  // The names of the entries of `folder`; none when it cannot be read.
  virtual std::vector<std::string> entryNames(const std::filesystem::path&) { return {}; }
  // Removes the file `path` unless a writer still holds it (see NewFileOptions::exclusive);
  // true when removed. A writer whose new file is removed before it holds it fails to make it.
  virtual bool removeIfAbandoned(const std::filesystem::path&) { return false; }

  // The process's real file system.
  static FileSystem& real();
  // The file system the database objects work on: real() unless a ScopedFileSystem put another
  // in its place.
  static FileSystem& current();
};

// Puts `fs` in the place of FileSystem::current() while it lives (tests inject faults through
// it; a host may keep its packages elsewhere). Databases opened meanwhile keep using `fs`, so it
// must outlive them. Not thread-safe.
class ScopedFileSystem {
 public:
  explicit ScopedFileSystem(FileSystem& fs);
  ~ScopedFileSystem();
  ScopedFileSystem(const ScopedFileSystem&) = delete;
  ScopedFileSystem& operator=(const ScopedFileSystem&) = delete;

 private:
  FileSystem* previous_;
};

// Writes `bytes` to a new file beside `target` and renames it over `target`. A link is written
// through: the file it leads to is replaced, the link stays. The new file has the permissions,
// owner and group of the one it replaces from its creation on. On any failure the temporary
// file is removed and `target` is left exactly as it was. With `written`, the new file's stamp
// (which the rename keeps) is put there. Temporary files that earlier writers of `target` left
// when they were killed are removed first; those of live writers are kept.
bool replaceFileAtomically(FileSystem& fs, const std::filesystem::path& target,
                           std::span<const std::uint8_t> bytes, std::string& error,
                           std::optional<FileStamp>* written = nullptr);
// The same with the new file's contents appended by `write`, in as many pieces as it likes;
// false from `write` (with the reason) fails the replacement like a failed write.
bool replaceFileAtomically(FileSystem& fs, const std::filesystem::path& target,
                           const std::function<bool(WritableFile&, std::string&)>& write,
                           std::string& error, std::optional<FileStamp>* written = nullptr);

// Replaces `target` with a copy of `source`, as replaceFileAtomically does, copied a piece at a
// time.
bool copyFileAtomically(FileSystem& fs, const std::filesystem::path& source,
                        const std::filesystem::path& target, std::string& error);

// Reads a whole file into memory (used for small inputs: idt files, certificates).
bool readWholeFile(FileSystem& fs, const std::filesystem::path& path,
                   std::vector<std::uint8_t>& out, std::string& error);

}  // namespace odlex::storage
