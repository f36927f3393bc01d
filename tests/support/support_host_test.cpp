// What the library takes from the host: path text split and joined in either style and
// converted to the file system's, and SYSTEMTIME fields to FILETIME counts and back with the
// calendar's edges.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "odlex/support/Path.h"
#include "odlex/support/SystemTime.h"

namespace {

using namespace odlex::path;

TEST(Path, SplitsAtTheLastSeparatorOfEitherKind) {
  struct Case {
    const char16_t* path;
    const char16_t* directory;
    const char16_t* name;
    const char16_t* extension;
  };
  const Case cases[] = {
      {u"C:\\Setup\\Product.msi", u"C:\\Setup", u"Product.msi", u"msi"},
      {u"/home/user/merge.MSM", u"/home/user", u"merge.MSM", u"MSM"},
      {u"mixed/dir\\sub/file.tar.gz", u"mixed/dir\\sub", u"file.tar.gz", u"gz"},
      {u"dir.d\\noext", u"dir.d", u"noext", u""},
      {u"plain.idt", u"", u"plain.idt", u"idt"},
      {u"trailing\\", u"trailing", u"", u""},
      {u"\\\\server\\share", u"\\\\server", u"share", u""},
      {u"", u"", u"", u""},
  };
  for (const Case& c : cases) {
    const TalString p(c.path);
    EXPECT_EQ(Directory(p), c.directory) << p.ToUtf8();
    EXPECT_EQ(FileName(p), c.name) << p.ToUtf8();
    EXPECT_EQ(Extension(p), c.extension) << p.ToUtf8();
  }
  EXPECT_EQ(LastSeparator(u"a/b\\c"), 3u);
  EXPECT_EQ(LastSeparator(u"abc"), RW_NPOS);
}

TEST(Path, JoinKeepsTheDirectorysStyle) {
  EXPECT_EQ(Join(u"C:\\Setup", u"a.msi"), u"C:\\Setup\\a.msi");
  EXPECT_EQ(Join(u"/tmp", u"a.msi"), u"/tmp/a.msi");
  EXPECT_EQ(Join(u"dir", u"a.msi"), u"dir/a.msi");
  EXPECT_EQ(Join(u"C:\\Setup\\", u"a.msi"), u"C:\\Setup\\a.msi");
  EXPECT_EQ(Join(u"/tmp/", u"a"), u"/tmp/a");
  EXPECT_EQ(Join(u"", u"a"), u"a");
  EXPECT_EQ(Join(u"dir", u""), u"dir");
}

TEST(Path, FilesystemConversionUsesUtf8) {
  const TalString name(u"/tmp/\u00e9t\u00e9\U0001F600.msi");
  const std::filesystem::path native = ToFilesystem(name);
  EXPECT_EQ(native.native(), "/tmp/\xC3\xA9t\xC3\xA9\xF0\x9F\x98\x80.msi");
  EXPECT_EQ(FromFilesystem(native), name);
  EXPECT_EQ(FromFilesystem(std::filesystem::path("bad\xFF")), u"bad\uFFFD");
}

constexpr std::uint64_t kUnixEpoch = 116444736000000000ull;  // 1970-01-01 as a FILETIME

TEST(SystemTime, ConvertsKnownDatesBothWaysAndNowIsAfterTheUnixEpoch) {
  std::uint64_t count = 0;
  ASSERT_TRUE(odlex::SystemTimeToFileTime(SYSTEMTIME{1970, 1, 0, 1, 0, 0, 0, 0}, count));
  EXPECT_EQ(count, kUnixEpoch);
  ASSERT_TRUE(odlex::SystemTimeToFileTime(SYSTEMTIME{1601, 1, 0, 1, 0, 0, 0, 0}, count));
  EXPECT_EQ(count, 0u);

  const SYSTEMTIME leap{2024, 2, 0, 29, 23, 59, 58, 999};
  ASSERT_TRUE(odlex::SystemTimeToFileTime(leap, count));
  SYSTEMTIME back{};
  ASSERT_TRUE(odlex::FileTimeToSystemTime(count + 9'999, back));  // below a millisecond
  // The day of the week is filled in: a Thursday.
  EXPECT_EQ((std::vector<int>{back.wYear, back.wMonth, back.wDayOfWeek, back.wDay, back.wHour,
                              back.wMinute, back.wSecond, back.wMilliseconds}),
            (std::vector<int>{2024, 2, 4, 29, 23, 59, 58, 999}));

  EXPECT_GT(odlex::CurrentFileTime(), kUnixEpoch);
  EXPECT_GE(odlex::CurrentSystemTime().wYear, 2024);
}

TEST(SystemTime, RefusesFieldsOutOfRange) {
  std::uint64_t count = 7;
  const SYSTEMTIME bad[] = {
      {2023, 2, 0, 29, 0, 0, 0, 0},  // not a leap year
      {1900, 2, 0, 29, 0, 0, 0, 0},  // century, not a leap year
      {2024, 13, 0, 1, 0, 0, 0, 0}, {2024, 0, 0, 1, 0, 0, 0, 0},    {2024, 4, 0, 31, 0, 0, 0, 0},
      {2024, 1, 0, 0, 0, 0, 0, 0},  {2024, 1, 0, 1, 24, 0, 0, 0},   {2024, 1, 0, 1, 0, 60, 0, 0},
      {2024, 1, 0, 1, 0, 0, 60, 0}, {2024, 1, 0, 1, 0, 0, 0, 1000}, {1600, 12, 0, 31, 0, 0, 0, 0},
      {30828, 1, 0, 1, 0, 0, 0, 0},
  };
  for (const SYSTEMTIME& time : bad) {
    EXPECT_FALSE(odlex::SystemTimeToFileTime(time, count))
        << time.wYear << "-" << time.wMonth << "-" << time.wDay << " " << time.wHour << ":"
        << time.wMinute << ":" << time.wSecond << "." << time.wMilliseconds;
  }
  EXPECT_EQ(count, 7u) << "the count is left unchanged";
  EXPECT_TRUE(odlex::SystemTimeToFileTime(SYSTEMTIME{2000, 2, 0, 29, 0, 0, 0, 0}, count));

  ASSERT_TRUE(odlex::SystemTimeToFileTime(SYSTEMTIME{30827, 12, 0, 31, 23, 59, 59, 999}, count));
  SYSTEMTIME last{};
  EXPECT_TRUE(odlex::FileTimeToSystemTime(count, last));
  EXPECT_FALSE(odlex::FileTimeToSystemTime(count + 10'000, last));
  EXPECT_FALSE(odlex::FileTimeToSystemTime(UINT64_MAX, last));
}

}  // namespace
