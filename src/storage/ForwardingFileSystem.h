#pragma once
// A file system that hands every call to another one. File systems that watch or change a few
// calls on the way (counting written bytes, failing the N-th call) derive from it and override
// only those.

#include "storage/FileSystem.h"

namespace odlex::storage {

class ForwardingFileSystem : public FileSystem {
 public:
  explicit ForwardingFileSystem(FileSystem& inner) : inner_(inner) {}
  ForwardingFileSystem(const ForwardingFileSystem&) = delete;
  ForwardingFileSystem& operator=(const ForwardingFileSystem&) = delete;

  std::unique_ptr<ReadableFile> openRead(const std::filesystem::path& path,
                                         std::string& error) override {
    return inner_.openRead(path, error);
  }
  std::unique_ptr<WritableFile> createFile(const std::filesystem::path& path,
                                           const NewFileOptions& options,
                                           std::string& error) override {
    return inner_.createFile(path, options, error);
  }
  bool rename(const std::filesystem::path& from, const std::filesystem::path& to,
              std::string& error) override {
    return inner_.rename(from, to, error);
  }
  bool resolveLinks(const std::filesystem::path& path, std::filesystem::path& resolved,
                    std::string& error) override {
    return inner_.resolveLinks(path, resolved, error);
  }
  bool remove(const std::filesystem::path& path, std::string& error) override {
    return inner_.remove(path, error);
  }
  bool exists(const std::filesystem::path& path) override { return inner_.exists(path); }
  std::optional<FileStamp> stampOf(const std::filesystem::path& path) override {
    return inner_.stampOf(path);
  }
  bool createDirectories(const std::filesystem::path& path, std::string& error) override {
    return inner_.createDirectories(path, error);
  }
  std::vector<std::string> entryNames(const std::filesystem::path& folder) override {
    return inner_.entryNames(folder);
  }
  bool removeIfAbandoned(const std::filesystem::path& path) override {
    return inner_.removeIfAbandoned(path);
  }

 protected:
  FileSystem& inner() { return inner_; }

 private:
  FileSystem& inner_;
};

}  // namespace odlex::storage
