// Folder names: DefaultDir values (parsing keeps every form the installer writes exactly, the
// accessors pick the right side and name, malformed values are refused), and the short (8.3)
// names made for long folder names, with the test for names that already are short.

#include <gtest/gtest.h>

#include "odlex/support/TalString.h"

#include <set>

#include "msi/directory/DefaultDir.h"
#include "msi/directory/ShortName.h"

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

std::u16string shortFor(std::u16string_view longName, const std::set<std::u16string>& taken = {}) {
  auto made = makeShortName(
      longName, [&](std::u16string_view c) { return taken.contains(std::u16string(c)); });
  EXPECT_TRUE(made);
  return made ? made.value() : u"";
}

TEST(ShortNameTest, RecognisesValidShortNames) {
  for (std::u16string_view name : {u"bin", u"BIN", u"status.txt", u"ABCDEFGH.XYZ", u"A~1", u"_"}) {
    EXPECT_TRUE(isValidShortName(name)) << TalString(std::u16string(name)).ToUtf8();
  }
  for (std::u16string_view name : {u"", u"ABCDEFGHI", u"a.b.c", u"name.text", u".cfg", u"a.",
                                   u"My App", u"a+b", u"x[1]", u"caf\u00e9"}) {
    EXPECT_FALSE(isValidShortName(name)) << TalString(std::u16string(name)).ToUtf8();
  }
}

// Names that already are short stay as written.
TEST(ShortNameTest, MakesWindowsStyleNames) {
  const std::pair<std::u16string_view, std::u16string_view> cases[] = {
      {u"bin", u"bin"},
      {u"Data.v2", u"Data.v2"},
      {u"Vendor Name", u"VENDOR~1"},
      {u"Application", u"APPLIC~1"},
      {u"my app", u"MYAPP~1"},
      {u"Release.Notes.text", u"RELEAS~1.TEX"},
      {u".config", u"CONFIG~1"},
      {u"a+b,c;d=e[f]", u"A_B_C_~1"},
      {u"caf\u00e9 cr\u00e8me", u"CAF_CR~1"},
      {u"...", u"_~1"},
  };
  for (const auto& [longName, expected] : cases)
    EXPECT_EQ(shortFor(longName), expected) << TalString(std::u16string(longName)).ToUtf8();
}

TEST(ShortNameTest, CountsUpPastTakenNamesAndGivesUpWhenEveryNumberIsTaken) {
  EXPECT_EQ(shortFor(u"Vendor Name", {u"VENDOR~1"}), u"VENDOR~2");
  std::set<std::u16string> taken;
  for (int n = 1; n <= 9; ++n) {
    taken.insert(u"VENDOR~" + std::u16string(1, static_cast<char16_t>(u'0' + n)));
  }
  EXPECT_EQ(shortFor(u"Vendor Name", taken), u"VENDO~10");
  EXPECT_FALSE(makeShortName(u"Vendor Name", [](std::u16string_view) { return true; }));
}

}  // namespace
}  // namespace odlex::directory
