// Checks and conversions of product texts: GUIDs, their merge-module form, and schema versions.

#include <cstdint>
#include <limits>

#include "odlex/database/ODLEXDatabase.h"

namespace {

constexpr std::size_t kGuidLength = 38;
constexpr std::size_t kCloseBrace = kGuidLength - 1;

// The bits of IsValidGUID's mask.
constexpr unsigned kTooShort = 1;
constexpr unsigned kNoOpenBrace = 2;
constexpr unsigned kNotHex = 4;
constexpr unsigned kNoDash = 8;
constexpr unsigned kNoCloseBrace = 16;
constexpr unsigned kTrailing = 32;

bool isDashPosition(std::size_t i) {
  return i == 9 || i == 14 || i == 19 || i == 24;
}

bool isUpperHex(char16_t c) {
  return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F');
}

}  // namespace

bool ODLEXDatabase::IsValidGUID(TalString& guid, unsigned& mask) {
  guid.toUpper();
  mask = guid.length() < kGuidLength ? kTooShort : 0;
  for (std::size_t i = 0; i < guid.length(); ++i) {
    const char16_t c = guid[i];
    if (i == 0) {
      if (c != u'{')
        mask |= kNoOpenBrace;
    } else if (isDashPosition(i)) {
      if (c != u'-')
        mask |= kNoDash;
    } else if (i == kCloseBrace) {
      if (c != u'}')
        mask |= kNoCloseBrace;
    } else if (i < kCloseBrace) {
      if (!isUpperHex(c))
        mask |= kNotHex;
    } else if (mask == 0) {
      // What follows a well-formed GUID is cut off.
      guid.remove(i);
      break;
    } else {
      mask |= kTrailing;
    }
  }
  return mask == 0;
}

TalString ODLEXDatabase::GetModuleGUID(const TalString& guid) {
  if (guid.length() < kGuidLength)
    return TalString();
  TalString suffix = guid.subString(1, guid.length() - 2);
  for (std::size_t dash = suffix.first(u'-'); dash != RW_NPOS; dash = suffix.first(u'-'))
    suffix.replace(dash, 1, u"_");
  return suffix;
}

TalString ODLEXDatabase::MungeVersion(const TalString& version) {
  const eSchemaVersion schema = MSIDatabase::MapVersion(version);
  return schema == eSchemaNone ? TalString() : GetVersionFromEnum(schema);
}

TalString ODLEXDatabase::DeMungeVersion(const TalString& version) {
  if (version.isNull())
    return TalString();
  // A text that is not a number, or one out of range, counts as 0.
  const std::int64_t number = version.ToInt().value_or(0);
  const bool fits =
      number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
  return MSIDatabase::MapVersion(static_cast<eSchemaVersion>(fits ? number : 0));
}

TalString ODLEXDatabase::GetVersionFromEnum(eSchemaVersion version) {
  return TalString::FromInt(static_cast<int>(version));
}
