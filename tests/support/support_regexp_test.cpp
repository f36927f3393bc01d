#include <gtest/gtest.h>

#include "odlex/support/RWWRegexp.h"

namespace {

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

TEST(RWWRegexp, SurrogatePairIsOneCharacterAndPositionsCountCodeUnits) {
  const RWWString text(u"a\U0001F600b\u00e9");
  std::size_t length = 0;
  EXPECT_EQ(RWWRegexp(u"a.b").index(text, &length), 0u);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(RWWRegexp(u"\U0001F600").index(text, &length), 1u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(RWWRegexp(u"\u00e9$").index(text), 4u);
}

TEST(RWWRegexp, LoneSurrogateInTextDoesNotBreakMatching) {
  const std::u16string withLone = {u'x', 0xD800, u'y', u'z'};
  std::size_t length = 0;
  EXPECT_EQ(RWWRegexp(u"yz").index(RWWString(withLone), &length), 2u);
  EXPECT_EQ(length, 2u);
}

TEST(RWWRegexp, RunawayBacktrackingGivesUpInsteadOfHanging) {
  const RWWRegexp re(u"(a+)+$");
  ASSERT_EQ(re.status(), RWWRegexp::OK);
  EXPECT_EQ(re.index(RWWString(std::u16string(40, u'a') + u"!")), RW_NPOS);
}

}  // namespace
