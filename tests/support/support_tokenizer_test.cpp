#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "odlex/support/RWWTokenizer.h"

namespace {

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

TEST(RWWTokenizer, DefaultDelimitersAreWhitespaceAndMayChangeBetweenCalls) {
  RWWTokenizer next(u" one\ttwo\n three;four");
  EXPECT_EQ(next(), u"one");
  EXPECT_EQ(next(nullptr), u"two");
  EXPECT_EQ(next(u";"), u"\n three");
  EXPECT_EQ(next(), u";four");  // ';' is no longer a delimiter
}

TEST(RWWTokenizer, OwnsItsCopyOfTheText) {
  std::unique_ptr<RWWTokenizer> next;
  {
    const RWWString text(u"x y");
    next = std::make_unique<RWWTokenizer>(text);
  }
  EXPECT_EQ((*next)(), u"x");
}

}  // namespace
