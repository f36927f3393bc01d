// DefaultDir values: parsing keeps every form the installer writes exactly, the accessors pick
// the right side and name, and malformed values are refused.

#include <gtest/gtest.h>

#include "odlex/support/TalString.h"

#include "msi/directory/DefaultDir.h"

namespace odlex::directory {
namespace {

TEST(DefaultDirTest, FormatsBackExactlyWhatWasParsed) {
  for (std::u16string_view text :
       {u"Vendor|Vendor Name", u".", u"SourceDir", u"a|b:c|d", u"bin", u"a:b", u".:Src", u"A|A"}) {
    auto parsed = DefaultDir::parse(text);
    ASSERT_TRUE(parsed) << TalString(std::u16string(text)).ToUtf8();
    EXPECT_EQ(parsed->format(), text);
  }
}

TEST(DefaultDirTest, SidesAndNames) {
  auto both = DefaultDir::parse(u"a|b:c|d");
  ASSERT_TRUE(both);
  EXPECT_EQ(both->target().shortName(), u"a");
  EXPECT_EQ(both->target().longName(), u"b");
  EXPECT_EQ(both->source().shortName(), u"c");
  EXPECT_EQ(both->source().longName(), u"d");

  auto single = DefaultDir::parse(u"Vendor|Vendor Name");
  ASSERT_TRUE(single);
  EXPECT_FALSE(single->hasSource());
  EXPECT_EQ(single->source().longName(), u"Vendor Name");
  EXPECT_EQ(single->source().shortName(), u"Vendor");

  auto dot = DefaultDir::parse(u".");
  ASSERT_TRUE(dot);
  EXPECT_TRUE(dot->target().isParent());
  EXPECT_EQ(dot->target().shortName(), u".");
}

TEST(DefaultDirTest, ShortNameEdits) {
  auto value = DefaultDir::parse(u"bin");
  ASSERT_TRUE(value);
  value->target().setShortName(u"BIN~1");
  EXPECT_EQ(value->format(), u"BIN~1|bin");
  value->target().setShortName(u"bin");
  EXPECT_EQ(value->format(), u"bin");
  value->source().setShortName(u"SRC");
  EXPECT_EQ(value->format(), u"bin:SRC|bin");
}

TEST(DefaultDirTest, RefusesMalformedValues) {
  for (std::u16string_view text : {u"", u"a|", u"|b", u"a|b|c", u"a:", u":b", u"a:b:c", u"a:b|"}) {
    EXPECT_FALSE(DefaultDir::parse(text)) << TalString(std::u16string(text)).ToUtf8();
  }
}

}  // namespace
}  // namespace odlex::directory
