#include "msi/idt/FieldText.h"

#include <charconv>
#include <chrono>
#include <cstdio>

namespace odlex::idt {
namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
// Days from 1601-01-01 to 1970-01-01.
constexpr std::int64_t kEpochDays = 134'774;

// Reads exactly `width` digits at `pos`, advancing it.
bool readDigits(std::string_view text, std::size_t& pos, std::size_t width, int& value) {
  if (pos + width > text.size())
    return false;
  value = 0;
  for (std::size_t i = 0; i < width; ++i) {
    const char c = text[pos + i];
    if (c < '0' || c > '9')
      return false;
    value = value * 10 + (c - '0');
  }
  pos += width;
  return true;
}

bool expect(std::string_view text, std::size_t& pos, char c) {
  if (pos >= text.size() || text[pos] != c)
    return false;
  ++pos;
  return true;
}

}  // namespace

bool parseInteger(std::string_view field, unsigned size, std::int32_t& value) {
  if (field.empty() || field.front() == '+')
    return false;
  std::int64_t parsed = 0;
  const auto [end, status] = std::from_chars(field.data(), field.data() + field.size(), parsed);
  if (status != std::errc() || end != field.data() + field.size())
    return false;
  const std::int64_t limit = size == 2 ? INT16_MAX : INT32_MAX;
  if (parsed < -limit || parsed > limit)
    return false;
  value = static_cast<std::int32_t>(parsed);
  return true;
}

bool parseSmallDecimal(std::string_view field, std::uint32_t& value) {
  if (field.empty() || field.size() > 9)
    return false;
  value = 0;
  for (char c : field) {
    if (c < '0' || c > '9')
      return false;
    value = value * 10 + static_cast<std::uint32_t>(c - '0');
  }
  return true;
}

std::string formatFileTime(std::uint64_t fileTime) {
  const std::int64_t seconds = static_cast<std::int64_t>(fileTime / kTicksPerSecond);
  const std::int64_t secondOfDay = seconds % 86400;
  // Civil date of a day count since 1970-01-01 (proleptic Gregorian), in 64 bits so that
  // any stored value prints without overflow.
  const std::int64_t z = seconds / 86400 - kEpochDays + 719'468;
  const std::int64_t era = (z >= 0 ? z : z - 146'096) / 146'097;
  const std::int64_t dayOfEra = z - era * 146'097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t mp = (5 * dayOfYear + 2) / 153;
  const std::int64_t day = dayOfYear - (153 * mp + 2) / 5 + 1;
  const std::int64_t month = mp < 10 ? mp + 3 : mp - 9;
  const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, "%04lld/%02lld/%02lld %02lld:%02lld:%02lld",
                static_cast<long long>(year), static_cast<long long>(month),
                static_cast<long long>(day), static_cast<long long>(secondOfDay / 3600),
                static_cast<long long>(secondOfDay / 60 % 60),
                static_cast<long long>(secondOfDay % 60));
  return buffer;
}

bool parseFileTime(std::string_view text, std::uint64_t& fileTime) {
  using namespace std::chrono;
  std::size_t pos = 0;
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
  if (!readDigits(text, pos, 4, y) || !expect(text, pos, '/') || !readDigits(text, pos, 2, mo) ||
      !expect(text, pos, '/') || !readDigits(text, pos, 2, d)) {
    return false;
  }
  if (pos < text.size()) {
    if (!expect(text, pos, ' ') || !readDigits(text, pos, 2, h) || !expect(text, pos, ':') ||
        !readDigits(text, pos, 2, mi)) {
      return false;
    }
    if (pos < text.size() && (!expect(text, pos, ':') || !readDigits(text, pos, 2, s))) {
      return false;
    }
  }
  const year_month_day date{year{y}, month{static_cast<unsigned>(mo)},
                            day{static_cast<unsigned>(d)}};
  if (pos != text.size() || y < 1601 || !date.ok() || h > 23 || mi > 59 || s > 59)
    return false;
  const std::int64_t days = sys_days{date}.time_since_epoch().count() + kEpochDays;
  const std::int64_t seconds = days * 86400 + h * 3600 + mi * 60 + s;
  fileTime = static_cast<std::uint64_t>(seconds) * kTicksPerSecond;
  return true;
}

}  // namespace odlex::idt
