// Finding and reading the message-table resource of a PE file.

#include "signature/PeMessageTable.h"

#include "odlex/support/Utf8.h"
#include "signature/PeImage.h"

namespace odlex::signature {
namespace {

constexpr std::size_t kResourceDirectory = 2;  // index of the resource table's directory entry
constexpr std::uint32_t kMessageTableType = 11;
constexpr std::uint32_t kSubdirectory = 0x80000000u;
constexpr std::uint16_t kUnicodeEntry = 1;
constexpr std::uint16_t kUtf8Entry = 2;

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

  // The OffsetToData of the entry of the resource directory at `directory` whose id is `id`, or
  // of its first entry when `id` is empty.
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

std::u16string textOf(Bytes text, std::uint16_t flags) {
  std::u16string out;
  if (flags & kUnicodeEntry) {
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
      const auto unit = static_cast<char16_t>(text[i] | text[i + 1] << 8);
      if (unit == 0)
        break;
      out += unit;
    }
    return out;
  }
  std::size_t length = 0;
  while (length < text.size() && text[length] != 0)
    ++length;
  if (flags & kUtf8Entry)
    return Utf8ToUtf16(std::string_view(reinterpret_cast<const char*>(text.data()), length));
  for (std::size_t i = 0; i < length; ++i)
    out += static_cast<char16_t>(text[i]);
  return out;
}

// The messages of a MESSAGE_RESOURCE_DATA block list.
std::optional<std::map<std::uint32_t, std::u16string>> messagesOf(Bytes data, std::string& why) {
  const auto read = [&](std::size_t at, std::size_t width) {
    return peLittleEndian(data, at, width);
  };
  if (data.size() < 4) {
    why = "the message table is cut short";
    return std::nullopt;
  }
  const std::size_t blocks = read(0, 4);
  if ((data.size() - 4) / 12 < blocks) {
    why = "the message table's blocks lie outside it";
    return std::nullopt;
  }
  std::map<std::uint32_t, std::u16string> messages;
  for (std::size_t block = 0; block < blocks; ++block) {
    const std::uint32_t low = read(4 + 12 * block, 4);
    const std::uint32_t high = read(8 + 12 * block, 4);
    std::size_t at = read(12 + 12 * block, 4);
    // Every message takes 4 bytes at least, so the walk ends within the table's size.
    for (std::uint64_t id = low; id <= high; ++id) {
      if (at > data.size() || data.size() - at < 4) {
        why = "a message lies outside the message table";
        return std::nullopt;
      }
      const std::size_t length = read(at, 2);
      const auto flags = static_cast<std::uint16_t>(read(at + 2, 2));
      if (length < 4 || length > data.size() - at) {
        why = "a message has a bad length";
        return std::nullopt;
      }
      messages.emplace(static_cast<std::uint32_t>(id),
                       textOf(data.subspan(at + 4, length - 4), flags));
      at += length;
    }
  }
  return messages;
}

}  // namespace

std::optional<std::map<std::uint32_t, std::u16string>> peMessageTable(Bytes image,
                                                                      std::string& why) {
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
  // Type 11, then the first resource of that type, then its first language: a data entry.
  std::optional<std::uint32_t> level;
  if (root)
    level = reader.entry(*root, rootSize, 0, kMessageTableType);
  for (int depth = 0; depth < 2 && level && (*level & kSubdirectory); ++depth)
    level = reader.entry(*root, rootSize, *level & ~kSubdirectory, std::nullopt);
  if (!level || (*level & kSubdirectory) || *level > rootSize || rootSize - *level < 16) {
    why = "the module has no message table";
    return std::nullopt;
  }
  const std::size_t dataEntry = *root + *level;
  const std::uint32_t size = reader.read(dataEntry + 4, 4);
  const std::optional<std::size_t> data = reader.offsetOf(reader.read(dataEntry, 4), size);
  if (!data) {
    why = "the message table lies outside the module";
    return std::nullopt;
  }
  return messagesOf(image.subspan(*data, size), why);
}

}  // namespace odlex::signature
