// TalString and RWWString: case rules, comparison, search, edits, numbers, UTF-8 conversion,
// formatting, tokenizing and regular expressions.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "odlex/support/RWWRegexp.h"
#include "odlex/support/RWWTokenizer.h"
#include "odlex/support/TalString.h"

namespace {

TEST(TalStringCase, IgnoreCaseCompareAndHashAgreeBeyondAscii) {
  const std::pair<const char16_t*, const char16_t*> equalIgnoringCase[] = {
      {u"\u00c9COLE", u"\u00e9cole"},                                          // Latin-1
      {u"\u0141\u00d3D\u0179", u"\u0142\u00f3d\u017a"},                        // Latin Extended-A
      {u"\u03a3\u039f\u03a6\u039f\u03a3", u"\u03c3\u03bf\u03c6\u03bf\u03c2"},  // final sigma
      {u"\u041c\u041e\u0421\u041a\u0412\u0410", u"\u043c\u043e\u0441\u043a\u0432\u0430"},
      {u"\u0178", u"\u00ff"},
      {u"STRASSE\u017f", u"strasses"},  // long s folds to s
      {u"\u00b5", u"\u03bc"},           // micro sign folds to mu
  };
  for (const auto& [a, b] : equalIgnoringCase) {
    const TalString x(a), y(b);
    EXPECT_EQ(x.compareTo(y, RWWString::ignoreCase), 0) << x.ToUtf8() << " / " << y.ToUtf8();
    EXPECT_EQ(x.hash(RWWString::ignoreCase), y.hash(RWWString::ignoreCase)) << x.ToUtf8();
    EXPECT_NE(x.compareTo(y), 0);
  }
  // The dotted and dotless i fold to themselves, not to i.
  EXPECT_NE(TalString(u"\u0131").compareTo(u"i", RWWString::ignoreCase), 0);
  EXPECT_NE(TalString(u"\u0130").compareTo(u"i", RWWString::ignoreCase), 0);
  // Exact order is by code unit, not by letter.
  EXPECT_LT(TalString(u"B"), TalString(u"a"));
  EXPECT_LT(TalString(u"ab"), TalString(u"abc"));
  EXPECT_GT(TalString(u"b").compareTo(u"A", RWWString::ignoreCase), 0);
  EXPECT_TRUE(std::unordered_set<TalString>{TalString(u"k")}.contains(TalString(u"k")));
}

TEST(TalStringCase, UpperAndLowerInPlaceAndAsCopies) {
  TalString s(u"ma\u00dfe \u00e0\u0101\u03ac\u0451\u0561\uff41{z}");
  s.toUpper();
  // sharp s has no one-unit upper case and stays.
  EXPECT_EQ(s, u"MA\u00dfE \u00c0\u0100\u0386\u0401\u0531\uff21{Z}");
  EXPECT_EQ(toLower(s), u"ma\u00dfe \u00e0\u0101\u03ac\u0451\u0561\uff41{z}");
  EXPECT_EQ(toUpper(TalString(u"\u00ff\u0131")), u"\u0178I");
}

TEST(TalStringSearch, IndexContainsFirstLast) {
  const TalString s(u"Program Files\\Product\\program.exe");
  EXPECT_EQ(s.index(u"program"), 22u);
  EXPECT_EQ(s.index(u"program", 0, RWWString::ignoreCase), 0u);
  EXPECT_EQ(s.index(u"PROGRAM", 1, RWWString::ignoreCase), 22u);
  EXPECT_EQ(s.index(u"exe", 40), RW_NPOS);
  EXPECT_EQ(s.index(u"", 3), 3u);
  EXPECT_TRUE(s.contains(u"FILES", RWWString::ignoreCase));
  EXPECT_FALSE(s.contains(u"FILES"));
  EXPECT_EQ(s.first(u'\\'), 13u);
  EXPECT_EQ(s.last(u'\\'), 21u);
  EXPECT_EQ(s.first(u'#'), RW_NPOS);
}

TEST(TalStringEdit, PositionsPastTheEndAreClampedNotFatal) {
  TalString s(u"abc");
  EXPECT_EQ(s.subString(1), u"bc");
  EXPECT_EQ(s(1, 1), u"b");
  EXPECT_EQ(s.subString(2, 99), u"c");
  EXPECT_EQ(s.subString(99, 1), u"");
  EXPECT_EQ(s[99], u'\0');
  s.insert(99, u"d").prepend(u">").append(u'!', 2);
  EXPECT_EQ(s, u">abcd!!");
  s.remove(5).replace(0, 1, u"<<");
  EXPECT_EQ(s, u"<<abcd");
  s.replace(99, 3, u"$").remove(99);
  EXPECT_EQ(s, u"<<abcd$");
  EXPECT_EQ(TalString(u"a") + u"b", u"ab");
  EXPECT_EQ(TalString(static_cast<const char16_t*>(nullptr)), u"");
}

TEST(TalStringEdit, StripRemovesOnlyTheGivenCharacterAtTheGivenEnds) {
  const TalString s(u"  a b  ");
  EXPECT_EQ(s.strip(), u"  a b");
  EXPECT_EQ(s.strip(RWWString::leading), u"a b  ");
  EXPECT_EQ(s.strip(RWWString::both), u"a b");
  EXPECT_EQ(TalString(u"xxax").strip(RWWString::both, u'x'), u"a");
  EXPECT_EQ(TalString(u"   ").strip(RWWString::both), u"");
}

TEST(TalStringNumbers, ToIntAcceptsOnlyWholeDecimalNumbersInRangeAndFromIntReachesBothEnds) {
  EXPECT_EQ(TalString(u"42").ToInt(), 42);
  EXPECT_EQ(TalString(u"-32768").ToInt(), -32768);
  EXPECT_EQ(TalString(u"+7").ToInt(), 7);
  EXPECT_EQ(TalString(u"9223372036854775807").ToInt(), INT64_MAX);
  EXPECT_EQ(TalString(u"-9223372036854775808").ToInt(), INT64_MIN);
  EXPECT_EQ(TalString::FromInt(0), u"0");
  EXPECT_EQ(TalString::FromInt(INT64_MIN), u"-9223372036854775808");
  EXPECT_EQ(TalString::FromInt(INT64_MAX), u"9223372036854775807");
  for (const char16_t* bad :
       {u"", u"-", u"+", u" 1", u"1 ", u"1x", u"0x10", u"\uff11", u"9223372036854775808",
        u"-9223372036854775809", u"99999999999999999999999"}) {
    EXPECT_FALSE(TalString(bad).ToInt().has_value()) << TalString(bad).ToUtf8();
  }
}

TEST(Utf8, RoundTripsEveryPlaneAndEmbeddedNul) {
  // ASCII, Latin-1, CJK, and U+1F600 / U+10FFFF as surrogate pairs.
  const std::u16string text = u"a\u00e9\u4e2d\U0001F600\U0010FFFF";
  const TalString s(text);
  const std::string utf8 = s.ToUtf8();
  EXPECT_EQ(utf8, "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(TalString::FromUtf8(utf8).u16(), text);
  EXPECT_EQ(s.length(), 7u);  // code units, not characters

  const std::string withNul("a\0b", 3);
  EXPECT_EQ(TalString::FromUtf8(withNul).length(), 3u);
  EXPECT_EQ(TalString::FromUtf8(withNul).ToUtf8(), withNul);
}

TEST(Utf8, IllFormedInputBecomesReplacementCharacters) {
  struct Case {
    std::string input;
    std::u16string expected;
  };
  const Case cases[] = {
      {"\xFF", u"\uFFFD"},                                // never a lead byte
      {"a\x80z", u"a\uFFFDz"},                            // stray continuation byte
      {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // overlong '/'
      {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},            // overlong three-byte form
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // encoded surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
      {"\xE4\xB8", u"\uFFFD"},                            // truncated at the end
      {"\xE4\xB8z", u"\uFFFDz"},                          // truncated before ASCII
      {"\xF0\x9F\x98", u"\uFFFD"},                        // truncated four-byte form
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TalString::FromUtf8(c.input).u16(), c.expected) << testing::PrintToString(c.input);
  }
}

TEST(Utf8, LoneSurrogatesBecomeReplacementCharacters) {
  const std::u16string lone = {u'a', 0xD800, u'b', 0xDC00};
  EXPECT_EQ(TalString(lone).ToUtf8(),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
  const std::u16string highAtEnd = {0xD83D};
  EXPECT_EQ(TalString(highAtEnd).ToUtf8(), "\xEF\xBF\xBD");
  const std::u16string reversedPair = {0xDE00, 0xD83D};
  EXPECT_EQ(TalString(reversedPair).ToUtf8(), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

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

std::vector<RWWString> AllTokens(const RWWString& text, const char16_t* delimiters) {
  RWWTokenizer next(text);
  std::vector<RWWString> tokens;
  for (RWWString token = next(delimiters); !token.isNull(); token = next(delimiters)) {
    tokens.push_back(token);
  }
  return tokens;
}

TEST(RWWTokenizer, SkipsRunsOfDelimitersAndKeepsEndingWithAnEmptyToken) {
  EXPECT_EQ(AllTokens(u"a;;b", u";"), (std::vector<RWWString>{u"a", u"b"}));
  EXPECT_EQ(AllTokens(u";;first.msi;second.msi;", u";"),
            (std::vector<RWWString>{u"first.msi", u"second.msi"}));
  EXPECT_TRUE(AllTokens(u"", u";").empty());
  EXPECT_TRUE(AllTokens(u";;;", u";").empty());
  EXPECT_EQ(AllTokens(u"a,b;c", u",;"), (std::vector<RWWString>{u"a", u"b", u"c"}));

  RWWTokenizer next(u"only");
  EXPECT_EQ(next(u";"), u"only");
  EXPECT_TRUE(next(u";").isNull());
  EXPECT_TRUE(next(u";").isNull());
}

// The tokenizer keeps its own copy of the text: it outlives the string it was made from.
TEST(RWWTokenizer, DefaultDelimitersAreWhitespaceAndMayChangeBetweenCalls) {
  std::unique_ptr<RWWTokenizer> tokenizer;
  {
    const RWWString text(u" one\ttwo\n three;four");
    tokenizer = std::make_unique<RWWTokenizer>(text);
  }
  RWWTokenizer& next = *tokenizer;
  EXPECT_EQ(next(), u"one");
  EXPECT_EQ(next(nullptr), u"two");
  EXPECT_EQ(next(u";"), u"\n three");
  EXPECT_EQ(next(), u";four");  // ';' is no longer a delimiter
}

TEST(RWWRegexp, FindsFirstMatchFromAStartPosition) {
  const RWWRegexp re(u"[0-9]+");
  ASSERT_EQ(re.status(), RWWRegexp::OK);
  EXPECT_TRUE(re.errorMessage().isNull());
  const RWWString text(u"v1.22.333");
  std::size_t length = 99;
  EXPECT_EQ(re.index(text, &length), 1u);
  EXPECT_EQ(length, 1u);
  EXPECT_EQ(re.index(text, &length, 2), 3u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(re.index(text, &length, 9), RW_NPOS);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(re.index(text, nullptr, 100), RW_NPOS);
  EXPECT_EQ(re.index(u"none"), RW_NPOS);
}

TEST(RWWRegexp, BadPatternReportsStatusAndCopiesKeepPatternAndStatus) {
  const RWWRegexp re(u"(unclosed");
  EXPECT_EQ(re.status(), RWWRegexp::ILLEGAL);
  EXPECT_FALSE(re.errorMessage().isNull());
  EXPECT_EQ(re.index(u"(unclosed"), RW_NPOS);
  const RWWRegexp copy = re;  // copies keep the status
  EXPECT_EQ(copy.status(), RWWRegexp::ILLEGAL);

  RWWRegexp assigned(u"x");
  {
    const RWWRegexp original(u"b+");
    assigned = original;
  }
  EXPECT_EQ(assigned.index(u"abbbc"), 1u) << "a copy matches without its original";
}

// A surrogate pair is one character; a lone surrogate in the text does not break matching.
TEST(RWWRegexp, SurrogatesDoNotBreakMatchingAndPositionsCountCodeUnits) {
  const RWWString text(u"a\U0001F600b\u00e9");
  std::size_t length = 0;
  EXPECT_EQ(RWWRegexp(u"a.b").index(text, &length), 0u);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(RWWRegexp(u"\U0001F600").index(text, &length), 1u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(RWWRegexp(u"\u00e9$").index(text), 4u);
  const std::u16string withLone = {u'x', 0xD800, u'y', u'z'};
  EXPECT_EQ(RWWRegexp(u"yz").index(RWWString(withLone), &length), 2u);
  EXPECT_EQ(length, 2u);
}

TEST(RWWRegexp, RunawayBacktrackingGivesUpInsteadOfHanging) {
  const RWWRegexp re(u"(a+)+$");
  ASSERT_EQ(re.status(), RWWRegexp::OK);
  EXPECT_EQ(re.index(RWWString(std::u16string(40, u'a') + u"!")), RW_NPOS);
}

}  // namespace
