// Tokenizing and parsing of query text: accepted forms, and the place and wording of errors.

#include <gtest/gtest.h>

#include <string>

#include "msi/query/Parser.h"
#include "msi/query/QueryText.h"

namespace odlex::query {
namespace {

// Parses `text`, keeping the statement when it is a SELECT.
bool parseSelect(std::u16string_view text, SelectStatement& select, engine::Error& error) {
  Statement statement;
  if (!parseStatement(text, statement, error))
    return false;
  if (const auto* parsed = std::get_if<SelectStatement>(&statement))
    select = *parsed;
  return true;
}

SelectStatement parsed(std::string_view text) {
  SelectStatement statement;
  engine::Error error;
  EXPECT_TRUE(parseSelect(utf16(text), statement, error)) << text << ": " << error.text;
  return statement;
}

engine::Error parseError(std::string_view text) {
  SelectStatement statement;
  engine::Error error;
  EXPECT_FALSE(parseSelect(utf16(text), statement, error)) << text;
  EXPECT_EQ(error.code, engine::kBadQuerySyntax) << text;
  return error;
}

std::string nested(unsigned depth) {
  return "SELECT * FROM T WHERE " + std::string(depth, '(') + "A = 1" + std::string(depth, ')');
}

// What statements mean is checked by running them (query_select_test); here only what running
// cannot show.
TEST(QueryParser, KeywordsIgnoreCaseQuotedNamesMayBeKeywordsAndOrRunsAreFlat) {
  const SelectStatement s =
      parsed("select distinct `Order`, T.`Select` from `Where` order by `Order`");
  EXPECT_TRUE(s.distinct);
  ASSERT_EQ(s.columns.size(), 2u);
  EXPECT_EQ(s.columns[0].column, u"Order");
  EXPECT_EQ(s.columns[1].column, u"Select");
  EXPECT_EQ(s.tables[0].name, u"Where");

  std::string longChain = "SELECT * FROM T WHERE A=0";
  for (int i = 1; i < 20000; ++i)
    longChain += " OR A=" + std::to_string(i);
  EXPECT_EQ(parsed(longChain).where->children.size(), 20000u);
}

TEST(QueryParser, ErrorsGiveLineColumnAndTokenReadably) {
  const std::pair<std::u16string, std::string> cases[] = {
      {u"",
       "line 1, column 1: expected SELECT, INSERT, UPDATE, DELETE, CREATE, DROP or ALTER, found "
       "end of query"},
      {u"SELECT `Key` FORM Item", "line 1, column 14: expected FROM, found 'FORM'"},
      {u"SELECT * FROM T WHERE A = 1 1", "line 1, column 29: expected end of query, found '1'"},
      {u"SELECT *\nFROM T\r\nWHERE A = @", "line 3, column 11: unexpected character '@'"},
      {u"SELECT * FROM T WHERE A = 'abc", "line 1, column 27: unterminated string: no closing '"},
      {u"SELECT `Key FROM T", "line 1, column 8: unterminated name: no closing `"},
      {u"SELECT `` FROM T", "line 1, column 8: empty name ``"},
      // Long and non-ASCII tokens are quoted readably.
      {u"SELECT * FROM \u00e9x", "line 1, column 15: unexpected character '\u00e9'"},
      {u"SELECT * FROM \U0001F600x", "line 1, column 15: unexpected character '\U0001F600'"},
      {u"SELECT * FROM T WHERE A = \xD800", "line 1, column 27: unexpected character '\uFFFD'"},
      {u"SELECT * " + std::u16string(200, u'n'),
       "line 1, column 10: expected FROM, found '" + std::string(40, 'n') + "...'"},
  };
  for (const auto& [text, message] : cases) {
    SelectStatement statement;
    engine::Error error;
    EXPECT_FALSE(parseSelect(text, statement, error)) << message;
    EXPECT_EQ(error.code, engine::kBadQuerySyntax) << message;
    EXPECT_EQ(error.text, message);
  }
}

TEST(QueryParser, RejectsMalformedStatements) {
  for (const char* text : {
           "SELECT",
           "SELECT * FROM",
           "SELECT A, FROM T",
           "SELECT * FROM T WHERE",
           "SELECT * FROM T WHERE A",
           "SELECT * FROM T WHERE A = ",
           "SELECT * FROM T WHERE (A = 1",
           "SELECT * FROM T WHERE A = 1)",
           "SELECT * FROM T WHERE A IS",
           "SELECT * FROM T WHERE A IS NOT 1",
           "SELECT * FROM T WHERE 'x' IS NULL",
           "SELECT * FROM T WHERE NOT A = 1",
           "SELECT * FROM T ORDER A",
           "SELECT * FROM T.U",
           "SELECT * FROM T WHERE A = 12abc",
           "SELECT * FROM T WHERE A = - 1",
           "SELECT * FROM select",
           "SELECT * FROM T;",
           // A character no token starts with, at each point the parser reads the next token.
           "@SELECT",
           "SELECT DISTINCT @",
           "SELECT *@",
           "SELECT A,@ FROM T",
           "SELECT T.@ FROM T",
           "SELECT * FROM T,@",
           "SELECT * FROM T WHERE @",
           "SELECT * FROM T WHERE (@",
           "SELECT * FROM T WHERE A = 1 OR @",
           "SELECT * FROM T WHERE A = 1 OR B",
           "SELECT * FROM T WHERE A IS @",
           "SELECT * FROM T WHERE A IS NOT @",
           "SELECT * FROM T ORDER BY @",
       }) {
    parseError(text);
  }
}

TEST(QueryParser, BoundsIntegers) {
  EXPECT_EQ(parsed("SELECT * FROM T WHERE A = 2147483647").where->right.integer, 2147483647);
  EXPECT_EQ(parsed("SELECT * FROM T WHERE A = -2147483647").where->right.integer, -2147483647);
  EXPECT_NE(parseError("SELECT * FROM T WHERE A = -2147483648").text.find("out of range"),
            std::string::npos);
  parseError("SELECT * FROM T WHERE A = 99999999999999999999999999");
}

TEST(QueryParser, BoundsNestingAndLength) {
  parsed(nested(kMaxNesting));
  EXPECT_NE(parseError(nested(kMaxNesting + 1)).text.find("nested more than"), std::string::npos);
  parseError(nested(100000));

  std::u16string huge =
      utf16("SELECT * FROM T WHERE A = '") + std::u16string(kMaxQueryLength, u'x') + u"'";
  SelectStatement statement;
  engine::Error error;
  EXPECT_FALSE(parseSelect(huge, statement, error));
  EXPECT_EQ(error.code, engine::kBadQuerySyntax);
}

}  // namespace
}  // namespace odlex::query
