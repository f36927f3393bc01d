#include "odlex/support/TalString.h"

#include <limits>
#include <system_error>

#include "odlex/support/Utf8.h"

TalString TalString::FromUtf8(std::string_view utf8) {
  return TalString(odlex::Utf8ToUtf16(utf8));
}

TalString TalString::SystemMessage(int errorNumber) {
  return FromUtf8(std::system_category().message(errorNumber));
}

TalString TalString::FromInt(std::int64_t n) {
  // Work on the magnitude as unsigned so that the smallest int64 converts too.
  std::uint64_t magnitude = n < 0 ? 0 - static_cast<std::uint64_t>(n) : n;
  std::u16string digits;
  do {
    digits.insert(digits.begin(), static_cast<char16_t>(u'0' + magnitude % 10));
    magnitude /= 10;
  } while (magnitude != 0);
  if (n < 0) {
    digits.insert(digits.begin(), u'-');
  }
  return TalString(std::move(digits));
}

std::optional<std::int64_t> TalString::ToInt() const {
  const std::u16string& text = u16();
  std::size_t i = 0;
  const bool negative = !text.empty() && text[0] == u'-';
  if (!text.empty() && (text[0] == u'-' || text[0] == u'+')) {
    i = 1;
  }
  if (i == text.size()) {
    return std::nullopt;
  }
  // Accumulate the magnitude; the negative range is one larger than the positive one.
  const std::uint64_t limit =
      negative ? static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + 1
               : std::numeric_limits<std::int64_t>::max();
  std::uint64_t magnitude = 0;
  for (; i < text.size(); ++i) {
    if (text[i] < u'0' || text[i] > u'9') {
      return std::nullopt;
    }
    const unsigned digit = text[i] - u'0';
    if (magnitude > (limit - digit) / 10) {
      return std::nullopt;
    }
    magnitude = magnitude * 10 + digit;
  }
  return negative ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude);
}
