#include <gtest/gtest.h>

#include <string>

#include "odlex/support/TalString.h"

namespace {

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

}  // namespace
