// Reading the VS_VERSIONINFO resource of a PE file.

#include "signature/PeVersion.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "signature/PeImage.h"
#include "signature/PeResource.h"
#include "signature/SystemFile.h"

namespace odlex::signature {
namespace {

constexpr std::uint32_t kVersionType = 16;
constexpr std::uint32_t kFixedSignature = 0xFEEF04BD;
constexpr std::size_t kFixedSize = 52;
constexpr std::uint32_t kTextValue = 1;  // wType of a block whose value is text (in 2-byte units)

using Bytes = std::span<const unsigned char>;

std::size_t aligned(std::size_t at) {
  return (at + 3) & ~std::size_t{3};
}

// One block of the resource: a length, a value length, a type, a null-terminated UTF-16 key,
// the value and the child blocks, each part starting on a 4-byte boundary of the resource.
struct Block {
  std::u16string key;
  Bytes value;
  Bytes children;
  std::size_t childrenAt = 0;  // offset of the children in the resource
};

// The block at `at` of `resource`, which must end within `end`.
std::optional<Block> blockAt(Bytes resource, std::size_t at, std::size_t end) {
  if (at > end || end - at < 6)
    return std::nullopt;
  const std::size_t length = peLittleEndian(resource, at, 2);
  if (length < 6 || length > end - at)
    return std::nullopt;
  const std::size_t blockEnd = at + length;
  const std::size_t valueLength = peLittleEndian(resource, at + 2, 2);
  const std::uint32_t type = peLittleEndian(resource, at + 4, 2);
  Block block;
  std::size_t cursor = at + 6;
  for (;; cursor += 2) {
    if (blockEnd - cursor < 2)
      return std::nullopt;
    const auto unit = static_cast<char16_t>(peLittleEndian(resource, cursor, 2));
    if (unit == 0)
      break;
    block.key += unit;
  }
  const std::size_t valueAt = std::min(aligned(cursor + 2), blockEnd);
  const std::size_t valueBytes = type == kTextValue ? 2 * valueLength : valueLength;
  if (valueBytes > blockEnd - valueAt)
    return std::nullopt;
  block.value = resource.subspan(valueAt, valueBytes);
  block.childrenAt = std::min(aligned(valueAt + valueBytes), blockEnd);
  block.children = resource.subspan(block.childrenAt, blockEnd - block.childrenAt);
  return block;
}

// The children of `parent`, in order; those after a damaged one are left out.
std::vector<Block> childrenOf(Bytes resource, const Block& parent) {
  std::vector<Block> children;
  const std::size_t end = parent.childrenAt + parent.children.size();
  for (std::size_t at = parent.childrenAt; at < end;) {
    std::optional<Block> child = blockAt(resource, at, end);
    if (!child)
      break;
    at = aligned(at + peLittleEndian(resource, at, 2));
    children.push_back(std::move(*child));
  }
  return children;
}

// The languages of the Translation value under VarFileInfo: pairs of a language and a code page.
std::string languagesOf(Bytes resource, const Block& root) {
  std::string languages;
  for (const Block& info : childrenOf(resource, root)) {
    if (info.key != u"VarFileInfo")
      continue;
    for (const Block& var : childrenOf(resource, info)) {
      if (var.key != u"Translation")
        continue;
      std::vector<std::uint32_t> seen;
      for (std::size_t at = 0; at + 4 <= var.value.size(); at += 4) {
        const std::uint32_t language = peLittleEndian(var.value, at, 2);
        if (std::find(seen.begin(), seen.end(), language) != seen.end())
          continue;
        seen.push_back(language);
        languages += (languages.empty() ? "" : ",") + std::to_string(language);
      }
      return languages;
    }
  }
  return languages;
}

}  // namespace

std::optional<PeVersion> peVersion(Bytes image, std::string& why) {
  const std::optional<Bytes> resource = peResource(image, kVersionType, why);
  if (!resource)
    return std::nullopt;
  const std::optional<Block> root = blockAt(*resource, 0, resource->size());
  if (!root || root->key != u"VS_VERSION_INFO" || root->value.size() < kFixedSize ||
      peLittleEndian(root->value, 0, 4) != kFixedSignature) {
    why = "the module's version resource is damaged";
    return std::nullopt;
  }
  const std::uint32_t high = peLittleEndian(root->value, 8, 4);
  const std::uint32_t low = peLittleEndian(root->value, 12, 4);
  PeVersion version;
  version.version = std::to_string(high >> 16) + "." + std::to_string(high & 0xFFFF) + "." +
                    std::to_string(low >> 16) + "." + std::to_string(low & 0xFFFF);
  version.language = languagesOf(*resource, *root);
  return version;
}

std::optional<PeVersion> fileVersion(const std::filesystem::path& path, std::string& why) {
  std::array<unsigned char, 2> start{};
  std::uint64_t size = 0;
  if (readFileStart(path, start, size) != kSuccess || start[0] != 'M' || start[1] != 'Z' ||
      size > kMaxVersionedModule) {
    why = "not a Windows module of a size whose version is read";
    return std::nullopt;
  }
  std::vector<unsigned char> image;
  if (readWholeFile(path, kMaxVersionedModule, image) != kSuccess) {
    why = "the file cannot be read";
    return std::nullopt;
  }
  return peVersion(image, why);
}

}  // namespace odlex::signature
