#include <gtest/gtest.h>

#include <unordered_set>

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
}

TEST(TalStringCase, UpperAndLowerInPlaceAndAsCopies) {
  TalString s(u"ma\u00dfe \u00e0\u0101\u03ac\u0451\u0561\uff41{z}");
  s.toUpper();
  // sharp s has no one-unit upper case and stays.
  EXPECT_EQ(s, u"MA\u00dfE \u00c0\u0100\u0386\u0401\u0531\uff21{Z}");
  EXPECT_EQ(toLower(s), u"ma\u00dfe \u00e0\u0101\u03ac\u0451\u0561\uff41{z}");
  EXPECT_EQ(toUpper(TalString(u"\u00ff\u0131")), u"\u0178I");
}

TEST(TalStringCompare, ExactOrderIsByCodeUnit) {
  EXPECT_LT(TalString(u"B"), TalString(u"a"));
  EXPECT_LT(TalString(u"ab"), TalString(u"abc"));
  EXPECT_LT(TalString(u"a").compareTo(u"b"), 0);
  EXPECT_GT(TalString(u"b").compareTo(u"A", RWWString::ignoreCase), 0);
  EXPECT_EQ(TalString(u"x"), u"x");
  EXPECT_TRUE(u"x" == TalString(u"x"));
  EXPECT_NE(TalString(u"x"), u"X");
  EXPECT_EQ(TalString(static_cast<const char16_t*>(nullptr)), u"");
  std::unordered_set<TalString> set{TalString(u"k")};
  EXPECT_TRUE(set.contains(TalString(u"k")));
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
}

TEST(TalStringEdit, StripRemovesOnlyTheGivenCharacterAtTheGivenEnds) {
  const TalString s(u"  a b  ");
  EXPECT_EQ(s.strip(), u"  a b");
  EXPECT_EQ(s.strip(RWWString::leading), u"a b  ");
  EXPECT_EQ(s.strip(RWWString::both), u"a b");
  EXPECT_EQ(TalString(u"xxax").strip(RWWString::both, u'x'), u"a");
  EXPECT_EQ(TalString(u"   ").strip(RWWString::both), u"");
}

TEST(TalStringNumbers, ToIntAcceptsOnlyWholeDecimalNumbersInRange) {
  EXPECT_EQ(TalString(u"42").ToInt(), 42);
  EXPECT_EQ(TalString(u"-32768").ToInt(), -32768);
  EXPECT_EQ(TalString(u"+7").ToInt(), 7);
  EXPECT_EQ(TalString(u"9223372036854775807").ToInt(), INT64_MAX);
  EXPECT_EQ(TalString(u"-9223372036854775808").ToInt(), INT64_MIN);
  for (const char16_t* bad :
       {u"", u"-", u"+", u" 1", u"1 ", u"1x", u"0x10", u"\uff11", u"9223372036854775808",
        u"-9223372036854775809", u"99999999999999999999999"}) {
    EXPECT_FALSE(TalString(bad).ToInt().has_value()) << TalString(bad).ToUtf8();
  }
}

TEST(TalStringNumbers, FromIntRoundTrips) {
  for (std::int64_t n :
       {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1033}, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(TalString::FromInt(n).ToInt(), n);
  }
  EXPECT_EQ(TalString::FromInt(-15), u"-15");
}

}  // namespace
