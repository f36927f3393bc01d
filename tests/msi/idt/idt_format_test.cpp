// The pieces of the .idt text format: value escapes, type words, numbers, times, line
// splitting and the file names made from package data.

#include <gtest/gtest.h>

#include "msi/engine/TypeWord.h"
#include "msi/idt/FieldText.h"
#include "msi/idt/IdtLines.h"
#include "msi/idt/SafeFileName.h"
#include "msi/idt/TextEscape.h"

namespace odlex::idt {
namespace {

TEST(IdtFormat, ControlCharactersTranslateBothWays) {
  const std::u16string value = u"a\tb\rc\nd\fe\bf";
  const std::u16string escaped = escapeValue(value + std::u16string(1, u'\0'));
  EXPECT_EQ(escaped,
            u"a\x10"
            u"b\x11"
            u"c\x19"
            u"d\x18"
            u"e\x1B"
            u"f\x15");
  EXPECT_EQ(escaped.find_first_of(u"\t\r\n"), std::u16string::npos);
  EXPECT_EQ(unescapeValue(escaped), value + std::u16string(1, u'\0'));
  // Other control characters and non-ASCII text pass unchanged.
  EXPECT_EQ(escapeValue(u"\x01\x7F\u00E9\u65E5"), u"\x01\x7F\u00E9\u65E5");
}

// Which word maps to which type is checked by the tables every export and import writes and
// reads (against msiinfo and msibuild); these are the words refused.
TEST(IdtFormat, MalformedTypeWordsAreRefused) {
  for (const char* bad : {"", "s", "x72", "s256", "s-1", "s072", "i1", "i8", "v1", "s7x", "I"}) {
    EXPECT_FALSE(engine::parseTypeWord(bad)) << bad;
  }
}

TEST(IdtFormat, IntegersAreCheckedAgainstTheirSize) {
  std::int32_t value = 0;
  EXPECT_TRUE(parseInteger("-2147483647", 4, value));
  EXPECT_EQ(value, -2147483647);
  EXPECT_FALSE(parseInteger("-2147483648", 4, value)) << "stored as null";
  for (const char* bad : {"99999999999", "", "+1", " 1", "1.0", "0x10", "-"}) {
    EXPECT_FALSE(parseInteger(bad, 4, value)) << bad;
  }
}

TEST(IdtFormat, TimesUseTheSummaryLayout) {
  std::uint64_t fileTime = 0;
  ASSERT_TRUE(parseFileTime("1999/03/22 15:25:45", fileTime));
  EXPECT_EQ(formatFileTime(fileTime), "1999/03/22 15:25:45");
  // 1970-01-01 is 11644473600 seconds after 1601-01-01.
  ASSERT_TRUE(parseFileTime("1970/01/01 00:00:00", fileTime));
  EXPECT_EQ(fileTime, 116444736000000000ULL);
  ASSERT_TRUE(parseFileTime("2024/02/29", fileTime));
  EXPECT_EQ(formatFileTime(fileTime), "2024/02/29 00:00:00");
  ASSERT_TRUE(parseFileTime("2024/02/29 07:08", fileTime));
  EXPECT_EQ(formatFileTime(fileTime), "2024/02/29 07:08:00");
  EXPECT_EQ(formatFileTime(0), "1601/01/01 00:00:00");
  EXPECT_FALSE(formatFileTime(~std::uint64_t{0}).empty()) << "any stored value prints";
  for (const char* bad : {"2023/02/29", "1999/13/01", "1999/03/22 24:00:00", "1999-03-22",
                          "1999/03/22 15:25:45x", "1600/12/31", "99/03/22", ""}) {
    EXPECT_FALSE(parseFileTime(bad, fileTime)) << bad;
  }
}

TEST(IdtFormat, LinesAndFields) {
  using Lines = std::vector<std::string_view>;
  LineCursor cursor("a\r\n\r\nb\tc\nd");
  Lines lines;
  for (std::string_view line; cursor.next(line);)
    lines.push_back(line);
  EXPECT_EQ(lines, (Lines{"a", "", "b\tc", "d"}));
  EXPECT_EQ(cursor.number(), 4u);
  // Splitting stops one field past the limit, however many tabs follow.
  EXPECT_EQ(splitFields("a\t\tb\tc", 2), (Lines{"a", "", "b"}));
}

TEST(IdtFormat, PlainFileNames) {
  // Hostile names are covered where they are used (export and import); these are the rules
  // those tests do not reach.
  EXPECT_EQ(safeFileName(u"lpt1.txt"), "_lpt1.txt");
  EXPECT_EQ(safeFileName(u"COM10"), "COM10");
  EXPECT_EQ(safeFileName(u"."), "_");
  EXPECT_EQ(safeFileName(u"x."), "x_");
  EXPECT_EQ(safeFileName(std::u16string(500, u'x')).size(), 120u);
  EXPECT_TRUE(isPlainFileName(u"\u65E5\u672C..ibd"));
  UniqueNames names;
  EXPECT_EQ(names.claim("a.ibd"), "a.ibd");
  EXPECT_EQ(names.claim("A.ibd"), "A~2.ibd");
  EXPECT_EQ(names.claim("a.ibd"), "a~3.ibd");
  EXPECT_EQ(names.claim("B"), "B");
  EXPECT_EQ(names.claim("b"), "b~2");
}

}  // namespace
}  // namespace odlex::idt
