// Walking the resource tree of a PE file.

#include "signature/PeResource.h"

#include "signature/PeImage.h"

namespace odlex::signature {
namespace {

constexpr std::size_t kResourceDirectory = 2;  // index of the resource table's directory entry
constexpr std::uint32_t kSubdirectory = 0x80000000u;

using Bytes = std::span<const unsigned char>;

struct Reader {
  Bytes image;
  const PeHeaders& headers;

  bool has(std::size_t at, std::size_t size) const {
    return at <= image.size() && size <= image.size() - at;
  }
  std::uint32_t read(std::size_t at, std::size_t width) const {
    return peLittleEndian(image, at, width);
  }

  // The file range of `size` bytes at the address `rva`, inside one section's raw data.
  std::optional<std::size_t> offsetOf(std::uint32_t rva, std::size_t size) const {
    for (std::size_t i = 0; i < headers.sectionCount; ++i) {
      const std::size_t section = headers.sections + 40 * i;
      if (!has(section, 40))
        return std::nullopt;
      const std::uint32_t address = read(section + 12, 4);
      const std::uint32_t rawSize = read(section + 16, 4);
      const std::uint32_t rawOffset = read(section + 20, 4);
      if (rva < address || rva - address >= rawSize)
        continue;
      const std::size_t inside = rva - address;
      if (size > rawSize - inside || !has(std::size_t{rawOffset} + inside, size))
        return std::nullopt;
      return std::size_t{rawOffset} + inside;
    }
    return std::nullopt;
  }

  // The OffsetToData of the entry of the resource directory at `at` (inside the tree at `root`)
  // whose id is `id`, or of its first entry when `id` is empty.
  std::optional<std::uint32_t> entry(std::size_t root, std::size_t rootSize, std::uint32_t at,
                                     std::optional<std::uint32_t> id) const {
    if (at > rootSize || rootSize - at < 16)
      return std::nullopt;
    const std::size_t directory = root + at;
    const std::size_t count = read(directory + 12, 2) + std::size_t{read(directory + 14, 2)};
    const std::size_t entries = directory + 16;
    if ((rootSize - at - 16) / 8 < count)
      return std::nullopt;
    for (std::size_t i = 0; i < count; ++i) {
      if (!id || read(entries + 8 * i, 4) == *id)
        return read(entries + 8 * i + 4, 4);
    }
    return std::nullopt;
  }
};

}  // namespace

std::optional<Bytes> peResource(Bytes image, std::uint32_t type, std::string& why) {
  const std::optional<PeHeaders> headers = peHeaders(image);
  if (!headers) {
    why = "not a Windows module";
    return std::nullopt;
  }
  const Reader reader{image, *headers};
  std::optional<std::size_t> root;
  std::size_t rootSize = 0;
  if (headers->directoryCount > kResourceDirectory) {
    const std::size_t entry = headers->directories + 8 * kResourceDirectory;
    rootSize = reader.read(entry + 4, 4);
    root = reader.offsetOf(reader.read(entry, 4), rootSize);
  }
  // The type, then the first resource of that type, then its first language: a data entry. The
  // walk has three levels at most, so a tree whose entries point back up ends all the same.
  std::optional<std::uint32_t> level;
  if (root)
    level = reader.entry(*root, rootSize, 0, type);
  for (int depth = 0; depth < 2 && level && (*level & kSubdirectory); ++depth)
    level = reader.entry(*root, rootSize, *level & ~kSubdirectory, std::nullopt);
  if (!level || (*level & kSubdirectory) || *level > rootSize || rootSize - *level < 16) {
    why = "the module has no resource of type " + std::to_string(type);
    return std::nullopt;
  }
  const std::size_t dataEntry = *root + *level;
  const std::uint32_t size = reader.read(dataEntry + 4, 4);
  const std::optional<std::size_t> data = reader.offsetOf(reader.read(dataEntry, 4), size);
  if (!data) {
    why = "a resource of type " + std::to_string(type) + " lies outside the module";
    return std::nullopt;
  }
  return image.subspan(*data, size);
}

}  // namespace odlex::signature
