#include "msi/query/Diagnostics.h"

namespace odlex::query {
namespace {

constexpr std::size_t kMaxQuotedLength = 40;
constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

bool isHighSurrogate(char16_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool isLowSurrogate(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

}  // namespace

std::string toUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char16_t c = text[i];
    if (isHighSurrogate(c) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      appendUtf8(out, 0x10000 + ((char32_t(c) - 0xD800) << 10) + (text[i + 1] - 0xDC00));
      ++i;
    } else if (isHighSurrogate(c) || isLowSurrogate(c)) {
      appendUtf8(out, kReplacement);
    } else {
      appendUtf8(out, c);
    }
  }
  return out;
}

std::string quoteText(std::u16string_view text) {
  if (text.size() <= kMaxQuotedLength)
    return "'" + toUtf8(text) + "'";
  std::size_t cut = kMaxQuotedLength;
  if (isLowSurrogate(text[cut]))
    --cut;  // keep a surrogate pair whole
  return "'" + toUtf8(text.substr(0, cut)) + "...'";
}

bool fail(engine::Error& error, std::uint32_t code, Position at, std::string_view message) {
  error.code = code;
  error.text = "line " + std::to_string(at.line) + ", column " + std::to_string(at.column) + ": " +
               std::string(message);
  return false;
}

}  // namespace odlex::query
