#include "common/FaultyFileSystem.h"

namespace odlex::test {
namespace {

class FaultyReadableFile final : public storage::ReadableFile {
 public:
  FaultyReadableFile(std::unique_ptr<storage::ReadableFile> inner, FaultyFileSystem& owner)
      : inner_(std::move(inner)), owner_(owner) {}

  std::uint64_t size() const override { return inner_->size(); }
  std::optional<storage::FileStamp> stamp() const override { return inner_->stamp(); }
  bool readAt(std::uint64_t offset, void* buffer, std::size_t length, std::string& error) override {
    if (owner_.injectFault("readAt", error))
      return false;
    return inner_->readAt(offset, buffer, length, error);
  }

 private:
  std::unique_ptr<storage::ReadableFile> inner_;
  FaultyFileSystem& owner_;
};

class FaultyWritableFile final : public storage::WritableFile {
 public:
  FaultyWritableFile(std::unique_ptr<storage::WritableFile> inner, FaultyFileSystem& owner)
      : inner_(std::move(inner)), owner_(owner) {}

  bool append(std::span<const std::uint8_t> bytes, std::string& error) override {
    if (owner_.injectFault("append", error)) {
      std::string ignored;
      inner_->append(bytes.first(bytes.size() / 2), ignored);
      error += ": No space left on device";
      return false;
    }
    return inner_->append(bytes, error);
  }
  std::optional<storage::FileStamp> stamp() const override { return inner_->stamp(); }
  bool finish(std::string& error) override {
    if (owner_.injectFault("finish", error))
      return false;
    return inner_->finish(error);
  }

 private:
  std::unique_ptr<storage::WritableFile> inner_;
  FaultyFileSystem& owner_;
};

}  // namespace

void FaultyFileSystem::failAtCall(std::uint64_t call) {
  failAt_ = call;
  calls_ = 0;
}

bool FaultyFileSystem::injectFault(const char* operation, std::string& error) {
  ++calls_;
  if (calls_ != failAt_)
    return false;
  error =
      std::string("injected failure of ") + operation + " (call " + std::to_string(calls_) + ")";
  return true;
}

std::unique_ptr<storage::ReadableFile> FaultyFileSystem::openRead(const std::filesystem::path& path,
                                                                  std::string& error) {
  if (injectFault("openRead", error))
    return nullptr;
  auto file = inner().openRead(path, error);
  if (!file)
    return nullptr;
  return std::make_unique<FaultyReadableFile>(std::move(file), *this);
}

std::unique_ptr<storage::WritableFile> FaultyFileSystem::createFile(
    const std::filesystem::path& path, const storage::NewFileOptions& options, std::string& error) {
  if (injectFault("createFile", error))
    return nullptr;
  auto file = inner().createFile(path, options, error);
  if (!file)
    return nullptr;
  return std::make_unique<FaultyWritableFile>(std::move(file), *this);
}

bool FaultyFileSystem::resolveLinks(const std::filesystem::path& path,
                                    std::filesystem::path& resolved, std::string& error) {
  if (injectFault("resolveLinks", error))
    return false;
  return inner().resolveLinks(path, resolved, error);
}

bool FaultyFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to,
                              std::string& error) {
  if (injectFault("rename", error))
    return false;
  return inner().rename(from, to, error);
}

bool FaultyFileSystem::remove(const std::filesystem::path& path, std::string& error) {
  if (injectFault("remove", error))
    return false;
  return inner().remove(path, error);
}

bool FaultyFileSystem::exists(const std::filesystem::path& path) {
  std::string ignored;
  if (injectFault("exists", ignored))
    return false;
  return inner().exists(path);
}

std::optional<storage::FileStamp> FaultyFileSystem::stampOf(const std::filesystem::path& path) {
  std::string ignored;
  if (injectFault("stampOf", ignored))
    return std::nullopt;
  return inner().stampOf(path);
}

bool FaultyFileSystem::createDirectories(const std::filesystem::path& path, std::string& error) {
  if (injectFault("createDirectories", error))
    return false;
  return inner().createDirectories(path, error);
}

}  // namespace odlex::test
