#pragma once
// The recursive-descent reader behind parseStatement: one object per statement, reading one
// token ahead. Its methods are spread over the files of the parts of the language they read
// (statements, conditions and values, column definitions).

#include <string>
#include <string_view>

#include "msi/engine/Result.h"
#include "msi/query/Lexer.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

class StatementParser {
 public:
  StatementParser(std::u16string_view text, engine::Error& error) : lexer_(text), error_(error) {}

  bool parse(Statement& statement);

 private:
  // Statements (Parser.cpp).
  bool parseSelect(SelectStatement& statement);
  bool parseInsert(InsertStatement& statement);
  bool parseUpdate(UpdateStatement& statement);
  bool parseDelete(DeleteStatement& statement);
  bool parseCreate(CreateStatement& statement);
  bool parseDrop(DropStatement& statement);
  bool parseAlter(AlterStatement& statement);
  bool parseWhere(std::optional<Condition>& where);
  bool expectEnd();

  // Tokens, names, conditions and values (ParseExpressions.cpp).
  bool advance() { return lexer_.next(current_, error_); }
  bool unexpected(std::string_view expected);
  bool isKeyword(Keyword keyword) const {
    return current_.kind == TokenKind::kKeyword && current_.keyword == keyword;
  }
  bool accept(Keyword keyword, bool& found);
  bool expectKeyword(Keyword keyword);
  // A word that is a keyword only where it stands (INTO, VALUES, SET, types, ...): a bare
  // name equal to `word` (upper case) without regard to case. Tables and columns may carry
  // these names elsewhere without back quotes.
  bool isWord(std::string_view word) const;
  bool acceptWord(std::string_view word, bool& found);
  bool expectWord(std::string_view word);
  bool expect(TokenKind kind, std::string_view what);
  bool isName() const {
    return current_.kind == TokenKind::kName || current_.kind == TokenKind::kQuotedName;
  }
  bool parseName(std::u16string& name, std::string_view what);
  bool parseColumnName(ColumnName& column);
  bool parseColumnList(std::vector<ColumnName>& columns);
  bool parseTableName(TableName& table);
  bool parseTableList(std::vector<TableName>& tables);
  bool parseCondition(Condition& out, unsigned depth);
  bool parseChain(Condition& out, unsigned depth, Keyword joiner);
  bool parseChainPart(Condition& out, unsigned depth, Keyword joiner);
  bool parseTerm(Condition& out, unsigned depth);
  bool parseNullTest(Condition& out);
  bool parseComparison(Comparison& comparison);
  bool parseOperand(Operand& operand);
  // A value to store: 'string', integer or ?.
  bool parseValue(Value& value);

  // Column definitions (ParseDefinitions.cpp).
  bool parseColumnDefinition(ColumnDefinition& column, bool allowHold);
  bool parseColumnType(std::uint16_t& type);
  bool parseTextSize(std::uint16_t& size);

  Lexer lexer_;
  engine::Error& error_;
  Token current_;
  std::uint32_t parameterCount_ = 0;
};

}  // namespace odlex::query
