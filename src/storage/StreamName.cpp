#include "storage/StreamName.h"

namespace odlex::storage {
namespace {

constexpr char16_t kPairBase = 0x3800;
constexpr char16_t kSingleBase = 0x4800;
constexpr char16_t kTableMark = 0x4840;
constexpr std::size_t kMaxEncodedUnits = 31;

constexpr char16_t kAlphabet[] =
    u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._";

// The 6-bit value of a character that can be packed, or -1.
int packedValue(char16_t c) {
  if (c >= u'0' && c <= u'9')
    return c - u'0';
  if (c >= u'A' && c <= u'Z')
    return c - u'A' + 10;
  if (c >= u'a' && c <= u'z')
    return c - u'a' + 36;
  if (c == u'.')
    return 62;
  if (c == u'_')
    return 63;
  return -1;
}

}  // namespace

std::optional<std::u16string> encodeStreamName(std::u16string_view name, bool isTable) {
  std::u16string encoded;
  if (isTable)
    encoded.push_back(kTableMark);
  for (std::size_t i = 0; i < name.size(); ++i) {
    const int first = packedValue(name[i]);
    if (first < 0) {
      encoded.push_back(name[i]);
    } else if (const int second = i + 1 < name.size() ? packedValue(name[i + 1]) : -1;
               second >= 0) {
      encoded.push_back(static_cast<char16_t>(kPairBase + first + (second << 6)));
      ++i;
    } else {
      encoded.push_back(static_cast<char16_t>(kSingleBase + first));
    }
    if (encoded.size() > kMaxEncodedUnits)
      return std::nullopt;
  }
  return encoded;
}

DecodedStreamName decodeStreamName(std::u16string_view encoded) {
  DecodedStreamName decoded;
  if (!encoded.empty() && encoded.front() == kTableMark) {
    decoded.isTable = true;
    encoded.remove_prefix(1);
  }
  for (const char16_t unit : encoded) {
    if (unit >= kPairBase && unit < kSingleBase) {
      const int value = unit - kPairBase;
      decoded.name.push_back(kAlphabet[value & 0x3F]);
      decoded.name.push_back(kAlphabet[value >> 6]);
    } else if (unit >= kSingleBase && unit < kTableMark) {
      decoded.name.push_back(kAlphabet[unit - kSingleBase]);
    } else {
      decoded.name.push_back(unit);
    }
  }
  return decoded;
}

std::string describeEntryName(std::u16string_view stored) {
  const DecodedStreamName decoded = decodeStreamName(stored);
  std::string text = decoded.isTable ? "table \"" : "\"";
  for (const char16_t unit : decoded.name) {
    if (unit >= 0x20 && unit < 0x7F) {
      text += static_cast<char>(unit);
    } else {
      static const char digits[] = "0123456789ABCDEF";
      text += "\\u";
      for (int shift = 12; shift >= 0; shift -= 4)
        text += digits[(unit >> shift) & 0xF];
    }
  }
  return text + '"';
}

}  // namespace odlex::storage
