#include <gtest/gtest.h>

#include <vector>

#include "odlex/support/TalString.h"

namespace {

TEST(TalStringFormat, DirectivesWithTypedArguments) {
  const TalString name(u"ProductName");
  EXPECT_EQ(TalString::Format(u"SELECT `Value` FROM `Property` WHERE `Property`='%s'", name),
            u"SELECT `Value` FROM `Property` WHERE `Property`='ProductName'");
  EXPECT_EQ(TalString::Format(u"%d|%i|%u|%x|%X|%%|%c", -5, 7, 4000000000u, 255, 0xABCu, 65),
            u"-5|7|4000000000|ff|ABC|%|A");
  EXPECT_EQ(TalString::Format(u"%ls=%lu (%hd)", u"key", 10ul, short{-3}), u"key=10 (-3)");
  EXPECT_EQ(TalString::Format(u"{%08X}", 0x1A2Bu), u"{00001A2B}");
  EXPECT_EQ(TalString::Format(u"[%5s][%05d][%3d]", u"ab", -42, 1234), u"[   ab][-0042][1234]");
  EXPECT_EQ(TalString::Format(u"%x", -1), u"ffffffff");
}

TEST(TalStringFormat, MismatchesNeverReadPastTheArguments) {
  EXPECT_EQ(TalString::Format(u"a%sb%dc"), u"abc");                         // missing arguments
  EXPECT_EQ(TalString::Format(u"%d and %s", u"text", 12), u"text and 12");  // wrong kinds
  EXPECT_EQ(TalString::Format(u"%q %", 1), u"%q %");                        // unknown and trailing
  EXPECT_EQ(TalString::Format(u"%s", static_cast<const char16_t*>(nullptr)), u"");
  EXPECT_EQ(TalString::Format(nullptr, 1), u"");
}

TEST(TalStringFormatMessage, NumberedInsertsAndEscapes) {
  const std::vector<TalString> inserts = {u"Component", u"C1"};
  EXPECT_EQ(TalString::FormatMessageW(u"Table %1: row %2 changed.%n", inserts),
            u"Table Component: row C1 changed.\r\n");
  EXPECT_EQ(TalString::FormatMessageW(u"%2!s! before %1!s!", inserts), u"C1 before Component");
  EXPECT_EQ(TalString::FormatMessageW(u"100%% %. %! %tx", inserts), u"100% . ! \tx");
  EXPECT_EQ(TalString::FormatMessageW(u"kept%0dropped", inserts), u"kept");
  EXPECT_EQ(TalString::FormatMessageW(u"[%3][%12]%", inserts), u"[][]%");
  EXPECT_EQ(TalString::FormatMessageW(u"%1%1", {TalString(u"x")}), u"xx");
}

}  // namespace
