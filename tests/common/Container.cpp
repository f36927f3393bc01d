#include "common/Container.h"

#include <memory>
#include <vector>

#include "storage/CompoundFile.h"
#include "storage/FileSystem.h"
#include "storage/StreamName.h"

namespace odlex::test {
namespace {

using storage::CompoundEntry;
using storage::CompoundFileReader;
using storage::CompoundNode;

std::unique_ptr<CompoundFileReader> openContainer(const std::filesystem::path& path,
                                                  std::string& error) {
  auto file = storage::FileSystem::real().openRead(path, error);
  if (!file)
    return nullptr;
  return CompoundFileReader::open(std::move(file), error);
}

}  // namespace

bool editContainer(const std::filesystem::path& source, const std::filesystem::path& target,
                   const std::function<void(CompoundNode& root)>& edit, std::string& error,
                   std::uint16_t majorVersion) {
  CompoundNode root;
  {
    auto reader = openContainer(source, error);
    if (!reader || !readCompoundTree(*reader, 0, root, error))
      return false;
  }
  edit(root);
  std::vector<std::uint8_t> bytes;
  if (!storage::writeCompoundFile(root, bytes, error, majorVersion))
    return false;
  return storage::FileSystem::real().writeFile(target, bytes, error);
}

bool copyContainer(const std::filesystem::path& source, const std::filesystem::path& target,
                   std::uint16_t majorVersion, std::string& error) {
  return editContainer(
      source, target, [](CompoundNode&) {}, error, majorVersion);
}

std::optional<std::vector<std::uint8_t>> rootStream(const std::filesystem::path& package,
                                                    std::u16string_view storedName) {
  std::string error;
  auto reader = openContainer(package, error);
  if (!reader)
    return std::nullopt;
  for (std::uint32_t child : reader->entries().at(0).children) {
    std::vector<std::uint8_t> bytes;
    if (reader->entries()[child].name == storedName && reader->readStream(child, bytes, error))
      return bytes;
  }
  return std::nullopt;
}

std::optional<std::uint32_t> stringPoolHeader(const std::filesystem::path& package) {
  auto poolName = storage::encodeStreamName(u"_StringPool", true);
  const auto pool = poolName ? rootStream(package, *poolName) : std::nullopt;
  if (!pool || pool->size() < 4)
    return std::nullopt;
  const std::vector<std::uint8_t>& p = *pool;
  return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

}  // namespace odlex::test
