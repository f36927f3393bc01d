#include "msi/engine/Text.h"

namespace odlex::engine {

namespace {
void appendCodePoint(std::string& out, char32_t c) {
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

void appendUtf16(std::u16string& out, char32_t c) {
  if (c < 0x10000) {
    out += static_cast<char16_t>(c);
  } else {
    c -= 0x10000;
    out += static_cast<char16_t>(0xD800 | (c >> 10));
    out += static_cast<char16_t>(0xDC00 | (c & 0x3FF));
  }
}
}  // namespace

std::string toUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    appendCodePoint(out, c);
  }
  return out;
}

std::u16string fromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    auto lead = static_cast<unsigned char>(text[i]);
    int extra = lead < 0x80         ? 0
                : (lead >> 5) == 6  ? 1
                : (lead >> 4) == 14 ? 2
                : (lead >> 3) == 30 ? 3
                                    : -1;
    char32_t c = extra == 0   ? lead
                 : extra == 1 ? lead & 0x1F
                 : extra == 2 ? lead & 0x0F
                              : lead & 0x07;
    bool valid = extra >= 0 && i + static_cast<std::size_t>(extra) < text.size();
    for (int k = 1; valid && k <= extra; ++k) {
      auto next = static_cast<unsigned char>(text[i + k]);
      valid = (next & 0xC0) == 0x80;
      c = (c << 6) | (next & 0x3F);
    }
    static constexpr char32_t kMinimum[] = {0, 0x80, 0x800, 0x10000};
    if (!valid || c < kMinimum[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out += u'\uFFFD';
      ++i;
      continue;
    }
    appendUtf16(out, c);
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

}  // namespace odlex::engine
