#include "storage/CodePageUtf8.h"

#include "storage/CodePageErrors.h"

namespace odlex::storage {
namespace {

constexpr std::uint32_t kUtf8 = 65001;

bool isContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

// Decodes the sequence starting at bytes[i]; returns its length, 0 when malformed.
std::size_t decodeSequence(std::string_view bytes, std::size_t i, char32_t& c) {
  const auto lead = static_cast<unsigned char>(bytes[i]);
  std::size_t length;
  char32_t minimum;
  if (lead < 0x80) {
    c = lead;
    return 1;
  } else if (lead >= 0xC2 && lead < 0xE0) {
    length = 2, minimum = 0x80, c = lead & 0x1F;
  } else if (lead >= 0xE0 && lead < 0xF0) {
    length = 3, minimum = 0x800, c = lead & 0x0F;
  } else if (lead >= 0xF0 && lead < 0xF5) {
    length = 4, minimum = 0x10000, c = lead & 0x07;
  } else {
    return 0;
  }
  if (bytes.size() - i < length)
    return 0;
  for (std::size_t k = 1; k < length; ++k) {
    const auto byte = static_cast<unsigned char>(bytes[i + k]);
    if (!isContinuation(byte))
      return 0;
    c = (c << 6) | (byte & 0x3F);
  }
  const bool surrogate = c >= 0xD800 && c < 0xE000;
  return c < minimum || c > 0x10FFFF || surrogate ? 0 : length;
}

}  // namespace

bool decodeUtf8(std::string_view bytes, std::u16string& out, std::string& error) {
  out.clear();
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    char32_t c;
    const std::size_t length = decodeSequence(bytes, i, c);
    if (length == 0) {
      error = invalidByteMessage(kUtf8, bytes, i);
      return false;
    }
    if (c >= 0x10000) {
      out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(c));
    }
    i += length;
  }
  return true;
}

bool encodeUtf8(std::u16string_view text, std::string& out, std::string& error) {
  out.clear();
  out.reserve(text.size() * 3);
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c < 0xE000) {
      const bool pair =
          c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
      if (!pair) {
        error = unencodableMessage(kUtf8, text, i);
        return false;
      }
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    }
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (c >> 18)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return true;
}

}  // namespace odlex::storage
