// Fuzz target: the input is a message catalog file (a text catalog, or a Windows module with a
// message table when it starts with "MZ"). Every message it yields is formatted with a few
// inserts, and the input itself is formatted as a message. Nothing may crash, read outside the
// input or the inserts, or cost more than a small multiple of the input.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "database/MessageCatalog.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using odlex::database::MessageCatalog;
  const std::u16string inserts[] = {u"first", u"%2 %1", u""};
  std::string why;
  if (const auto catalog = MessageCatalog::Parse(std::span(data, size), why)) {
    for (std::uint32_t id : {0u, 1u, 0x400D0074u, 0xFFFFFFFFu})
      catalog->Format(id, inserts);
  }
  std::u16string text;
  text.reserve(size / 2);
  for (std::size_t at = 0; at + 1 < size; at += 2)
    text += static_cast<char16_t>(data[at] | (data[at + 1] << 8));
  odlex::database::FormatMessageText(text, inserts);
  return 0;
}
