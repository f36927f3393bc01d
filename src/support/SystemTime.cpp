// Calendar arithmetic between SYSTEMTIME fields and FILETIME counts (proleptic Gregorian
// calendar, as the installer uses).

#include "odlex/support/SystemTime.h"

#include <chrono>

namespace odlex {
namespace {

constexpr std::uint64_t kTicksPerMillisecond = 10'000;
constexpr std::uint64_t kTicksPerDay = 86'400'000 * kTicksPerMillisecond;
constexpr unsigned kFirstYear = 1601;
constexpr unsigned kLastYear = 30827;

// Days from 1601-01-01 to the first day of the same year/month/day (the Unix epoch is day
// 134774 of that count).
std::int64_t daysSince1601(const std::chrono::year_month_day& date) {
  constexpr std::chrono::sys_days kOrigin = std::chrono::year{1601} / 1 / 1;
  return (std::chrono::sys_days(date) - kOrigin).count();
}

}  // namespace

bool SystemTimeToFileTime(const SYSTEMTIME& time, std::uint64_t& fileTime) {
  const std::chrono::year_month_day date{
      std::chrono::year{time.wYear}, std::chrono::month{time.wMonth}, std::chrono::day{time.wDay}};
  if (time.wYear < kFirstYear || time.wYear > kLastYear || !date.ok() || time.wHour > 23 ||
      time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999)
    return false;
  const std::uint64_t milliseconds =
      ((time.wHour * 60ull + time.wMinute) * 60ull + time.wSecond) * 1000ull + time.wMilliseconds;
  fileTime = static_cast<std::uint64_t>(daysSince1601(date)) * kTicksPerDay +
             milliseconds * kTicksPerMillisecond;
  return true;
}

bool FileTimeToSystemTime(std::uint64_t fileTime, SYSTEMTIME& time) {
  const std::uint64_t days = fileTime / kTicksPerDay;
  std::uint64_t milliseconds = (fileTime % kTicksPerDay) / kTicksPerMillisecond;
  constexpr std::chrono::sys_days kOrigin = std::chrono::year{1601} / 1 / 1;
  constexpr std::chrono::sys_days kEnd = std::chrono::year{kLastYear + 1} / 1 / 1;
  if (days >= static_cast<std::uint64_t>((kEnd - kOrigin).count()))
    return false;
  const std::chrono::sys_days day = kOrigin + std::chrono::days(static_cast<std::int64_t>(days));
  const std::chrono::year_month_day date(day);
  time.wYear = static_cast<unsigned short>(static_cast<int>(date.year()));
  time.wMonth = static_cast<unsigned short>(static_cast<unsigned>(date.month()));
  time.wDay = static_cast<unsigned short>(static_cast<unsigned>(date.day()));
  time.wDayOfWeek = static_cast<unsigned short>(std::chrono::weekday(day).c_encoding());
  time.wMilliseconds = static_cast<unsigned short>(milliseconds % 1000);
  milliseconds /= 1000;
  time.wSecond = static_cast<unsigned short>(milliseconds % 60);
  milliseconds /= 60;
  time.wMinute = static_cast<unsigned short>(milliseconds % 60);
  time.wHour = static_cast<unsigned short>(milliseconds / 60);
  return true;
}

std::uint64_t CurrentFileTime() {
  using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
  constexpr std::chrono::sys_days kOrigin = std::chrono::year{1601} / 1 / 1;
  // In ticks before subtracting: nanoseconds since 1601 overflow 64 bits.
  const auto now = std::chrono::time_point_cast<Ticks>(std::chrono::system_clock::now());
  return static_cast<std::uint64_t>((now - kOrigin).count());
}

SYSTEMTIME CurrentSystemTime() {
  SYSTEMTIME now{};
  FileTimeToSystemTime(CurrentFileTime(), now);
  return now;
}

}  // namespace odlex
