#pragma once
// SYSTEMTIME: a calendar date and time of day (UTC unless said otherwise), and its conversion
// to and from FILETIME counts: 100-nanosecond intervals since 1601-01-01 00:00 UTC, the form
// the summary information stores its times in.
//
// Valid times lie from 1601-01-01 00:00:00.000 to 30827-12-31 23:59:59.999, the range the
// installer's own conversions accept. wDayOfWeek (0 = Sunday) is ignored when converting to a
// count and filled in when converting from one.

#include <cstdint>

struct SYSTEMTIME {
  unsigned short wYear;
  unsigned short wMonth;         // 1..12
  unsigned short wDayOfWeek;     // 0 (Sunday) .. 6
  unsigned short wDay;           // 1..days of the month
  unsigned short wHour;          // 0..23
  unsigned short wMinute;        // 0..59
  unsigned short wSecond;        // 0..59
  unsigned short wMilliseconds;  // 0..999
};

namespace odlex {

// The FILETIME count of `time`; false, leaving `fileTime` unchanged, when a field is out of
// range (month 13, 30 February, hour 24, a year before 1601 or after 30827, ...).
bool SystemTimeToFileTime(const SYSTEMTIME& time, std::uint64_t& fileTime);
// The time of a FILETIME count, to the millisecond (finer parts are dropped); false for a
// count past the last valid time.
bool FileTimeToSystemTime(std::uint64_t fileTime, SYSTEMTIME& time);
// The current time, UTC.
SYSTEMTIME CurrentSystemTime();
// The current time as a FILETIME count, to the 100 ns the clock gives.
std::uint64_t CurrentFileTime();

}  // namespace odlex
