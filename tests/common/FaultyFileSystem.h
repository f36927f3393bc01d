#pragma once
// A FileSystem that forwards to another one but makes the N-th call fail (every method counts,
// including reads through files it opened). Tests loop "fail at call 1, 2, 3, ..." until an
// operation succeeds, checking after every failure that nothing was damaged. Every call counts,
// writes and flushes through files it created included; a failing append first writes half of
// its bytes and reports a full disk.

#include <cstdint>

#include "storage/ForwardingFileSystem.h"

namespace odlex::test {

class FaultyFileSystem final : public storage::ForwardingFileSystem {
 public:
  explicit FaultyFileSystem(storage::FileSystem& inner) : ForwardingFileSystem(inner) {}

  // Makes call number `call` (counting from 1) fail; 0 means never fail. Resets the count.
  void failAtCall(std::uint64_t call);
  std::uint64_t calls() const { return calls_; }
  // Whether the planned failure has happened.
  bool failed() const { return failAt_ != 0 && calls_ >= failAt_; }

  std::unique_ptr<storage::ReadableFile> openRead(const std::filesystem::path& path,
                                                  std::string& error) override;
  std::unique_ptr<storage::WritableFile> createFile(const std::filesystem::path& path,
                                                    const storage::NewFileOptions& options,
                                                    std::string& error) override;
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
              std::string& error) override;
  bool resolveLinks(const std::filesystem::path& path, std::filesystem::path& resolved,
                    std::string& error) override;
  bool remove(const std::filesystem::path& path, std::string& error) override;
  bool exists(const std::filesystem::path& path) override;
  std::optional<storage::FileStamp> stampOf(const std::filesystem::path& path) override;
  bool createDirectories(const std::filesystem::path& path, std::string& error) override;
  // Clean-up calls (entryNames, removeIfAbandoned), whose failure callers go on without, are
  // forwarded and not counted.

  // Counts one call; true (with an error) when this is the call that must fail.
  bool injectFault(const char* operation, std::string& error);

 private:
  std::uint64_t calls_ = 0;
  std::uint64_t failAt_ = 0;
};

}  // namespace odlex::test
