#include "storage/CodePageErrors.h"

#include <cstdio>

namespace odlex::storage {
namespace {

std::string hex(unsigned value, int digits) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%0*X", digits, value);
  return buffer;
}

char32_t codePointAt(std::u16string_view text, std::size_t position) {
  const char16_t unit = text[position];
  if (unit >= 0xD800 && unit < 0xDC00 && position + 1 < text.size()) {
    const char16_t low = text[position + 1];
    if (low >= 0xDC00 && low < 0xE000) {
      return 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (low - 0xDC00);
    }
  }
  return unit;
}

}  // namespace

std::string invalidByteMessage(std::uint32_t codePage, std::string_view bytes, std::size_t offset) {
  if (offset >= bytes.size()) {
    return "text ends inside a character of code page " + std::to_string(codePage);
  }
  return "byte 0x" + hex(static_cast<unsigned char>(bytes[offset]), 2) + " at offset " +
         std::to_string(offset) + " is not valid in code page " + std::to_string(codePage);
}

std::string unencodableMessage(std::uint32_t codePage, std::u16string_view text,
                               std::size_t position) {
  const char32_t c = position < text.size() ? codePointAt(text, position) : 0;
  return "character U+" + hex(c, 4) + " at position " + std::to_string(position) +
         " cannot be stored in code page " + std::to_string(codePage);
}

}  // namespace odlex::storage
