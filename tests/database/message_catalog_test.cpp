// Message catalogs: text catalogs, message tables of Windows modules, and the formatting of
// messages with hostile format strings.

#include <gtest/gtest.h>

#include <optional>

#include "common/PeModule.h"
#include "database/MessageCatalog.h"

namespace odlex::test {
namespace {

using odlex::database::FormatMessageText;
using odlex::database::MessageCatalog;

std::optional<MessageCatalog> parse(std::string_view bytes) {
  std::string why;
  auto catalog = MessageCatalog::Parse(
      std::span(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()), why);
  EXPECT_EQ(catalog.has_value(), why.empty()) << why;
  return catalog;
}

TEST(MessageCatalog, TextCatalogs) {
  const struct {
    std::string text;
    std::size_t messages;  // 0: no catalog
    std::uint32_t id = 0;
    std::u16string message = {};
  } cases[] = {
      {"# comment\n\n0x400D0074 = Table %1 was changed.  \r\n", 1, 0x400D0074,
       u"Table %1 was changed."},
      {"\xEF\xBB\xBF"
       "7=Gr\xC3\xB6\xC3\x9F"
       "e",
       1, 7, u"Gr\u00F6\u00DFe"},
      {"4294967295 = =x", 1, 4294967295u, u"=x"},
      {"", 0},
      {"4294967296 = too big", 0},
      {"0x = no digits", 0},
      {"12 twelve", 0},
      {"1 = a\n1 = b\n", 0},
      {"MZ not a module", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const std::optional<MessageCatalog> catalog = parse(c.text);
    if (c.messages == 0 && !c.text.empty()) {
      EXPECT_FALSE(catalog);
      continue;
    }
    ASSERT_TRUE(catalog);
    EXPECT_EQ(catalog->size(), c.messages);
    if (c.messages) {
      EXPECT_EQ(catalog->Format(c.id, {}), c.message);
    }
  }
}

TEST(MessageCatalog, HostileFormatStrings) {
  const std::u16string inserts[] = {u"A", u"%2", u"C"};
  const struct {
    std::u16string text;
    std::u16string formatted;
  } cases[] = {
      {u"%1 and %3", u"A and C"},
      {u"%2", u"%2"},  // an insert is never formatted again
      {u"%4 %99 %100", u"%4 %99 %100"},
      {u"%1!s! %1!d! %1!unclosed", u"A A A!unclosed"},
      {u"%%1 %. %! % x", u"%1 . !  x"},
      {u"a%nb%tc%rd", u"a\r\nb\tc\rd"},
      {u"stop%0 here", u"stop"},
      {u"%01", u""},
      {u"trailing %", u"trailing "},
      {u"%", u""},
      {u"%3%1", u"CA"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(TalString(c.text).ToUtf8());
    EXPECT_EQ(FormatMessageText(c.text, inserts), c.formatted);
  }
}

// MESSAGE_RESOURCE_DATA with one block of two messages: UTF-16 then ANSI.
std::string messageTable() {
  std::string table(
      "\x01\0\0\0"
      "\x74\0\x0D\x40"
      "\x75\0\x0D\x40"
      "\x10\0\0\0",
      16);
  std::string unicode;
  for (const char c : std::string("Table %1 was changed.\r\n"))
    unicode += std::string{c, '\0'};
  unicode += std::string("\0\0", 2);
  table += std::string{static_cast<char>(4 + unicode.size()), '\0', '\x01', '\0'} + unicode;
  table += std::string(
      "\x0C\0\0\0"
      "ANSI\0\0\0\0",
      12);
  return table;
}

TEST(MessageCatalog, ModulesMessageTables) {
  const std::string good = peModuleWith(11, messageTable());
  std::string cut = good;
  cut.resize(cut.size() - 6);
  std::string tooManyBlocks = good;
  tooManyBlocks[0x258] = '\x7F';
  const struct {
    std::string image;
    bool catalog;
  } cases[] = {{good, true}, {cut, false}, {tooManyBlocks, false}, {good.substr(0, 0x100), false}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    const std::optional<MessageCatalog> catalog = parse(cases[i].image);
    ASSERT_EQ(catalog.has_value(), cases[i].catalog);
    if (!catalog)
      continue;
    const std::u16string table[] = {u"Feature"};
    EXPECT_EQ(catalog->Format(0x400D0074, table), u"Table Feature was changed.");
    EXPECT_EQ(catalog->Format(0x400D0075, table), u"ANSI");
    EXPECT_EQ(catalog->Format(0x400D0076, table), std::nullopt);
  }
}

}  // namespace
}  // namespace odlex::test
