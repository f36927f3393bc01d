// Finding and reading the message-table resource of a PE file.

#include "signature/PeMessageTable.h"

#include "odlex/support/Utf8.h"
#include "signature/PeImage.h"
#include "signature/PeResource.h"

namespace odlex::signature {
namespace {

constexpr std::uint32_t kMessageTableType = 11;
constexpr std::uint16_t kUnicodeEntry = 1;
constexpr std::uint16_t kUtf8Entry = 2;

using Bytes = std::span<const unsigned char>;

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
  const std::optional<Bytes> table = peResource(image, kMessageTableType, why);
  if (!table)
    return std::nullopt;
  return messagesOf(*table, why);
}

}  // namespace odlex::signature
