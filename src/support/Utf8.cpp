#include "odlex/support/Utf8.h"

#include <cstdint>

namespace odlex {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

void AppendUtf16(std::u16string& out, char32_t cp) {
  if (cp < 0x10000) {
    out.push_back(static_cast<char16_t>(cp));
  } else {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
  }
}

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// The number of bytes of the sequence that `lead` starts and the allowed range of the byte
// after it (which excludes overlong forms, surrogates and values above U+10FFFF); 0 for a
// byte that cannot start a sequence.
struct Lead {
  int length;
  std::uint8_t secondMin;
  std::uint8_t secondMax;
};

Lead Classify(std::uint8_t lead) {
  if (lead >= 0xC2 && lead <= 0xDF)
    return {2, 0x80, 0xBF};
  if (lead == 0xE0)
    return {3, 0xA0, 0xBF};
  if (lead == 0xED)
    return {3, 0x80, 0x9F};
  if (lead >= 0xE1 && lead <= 0xEF)
    return {3, 0x80, 0xBF};
  if (lead == 0xF0)
    return {4, 0x90, 0xBF};
  if (lead >= 0xF1 && lead <= 0xF3)
    return {4, 0x80, 0xBF};
  if (lead == 0xF4)
    return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

}  // namespace

std::u16string Utf8ToUtf16(std::string_view utf8) {
  std::u16string out;
  out.reserve(utf8.size());
  std::size_t i = 0;
  while (i < utf8.size()) {
    const auto byte = static_cast<std::uint8_t>(utf8[i]);
    if (byte < 0x80) {
      out.push_back(byte);
      ++i;
      continue;
    }
    const Lead lead = Classify(byte);
    if (lead.length == 0) {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    char32_t cp = byte & (0xFF >> (lead.length + 1));
    std::size_t taken = 1;
    for (; taken < static_cast<std::size_t>(lead.length) && i + taken < utf8.size(); ++taken) {
      const auto next = static_cast<std::uint8_t>(utf8[i + taken]);
      const bool ok = taken == 1 ? (next >= lead.secondMin && next <= lead.secondMax)
                                 : (next >= 0x80 && next <= 0xBF);
      if (!ok) {
        break;
      }
      cp = (cp << 6) | (next & 0x3F);
    }
    if (taken == static_cast<std::size_t>(lead.length)) {
      AppendUtf16(out, cp);
    } else {
      out.push_back(kReplacement);  // the bytes taken so far form one ill-formed subpart
    }
    i += taken;
  }
  return out;
}

std::string Utf16ToUtf8(std::u16string_view utf16) {
  std::string out;
  out.reserve(utf16.size());
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    const char16_t unit = utf16[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 &&
        utf16[i + 1] <= 0xDFFF) {
      AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (utf16[i + 1] - 0xDC00));
      ++i;
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      AppendUtf8(out, kReplacement);
    } else {
      AppendUtf8(out, unit);
    }
  }
  return out;
}

}  // namespace odlex
