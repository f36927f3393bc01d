// Statements: which one the text holds, and its clauses.

#include "msi/query/Parser.h"

#include <string>

#include "msi/query/ParserCore.h"

namespace odlex::query {

bool StatementParser::parse(Statement& statement) {
  if (!advance())
    return false;
  if (isKeyword(Keyword::kSelect))
    return parseSelect(statement.emplace<SelectStatement>());
  if (isWord("INSERT"))
    return parseInsert(statement.emplace<InsertStatement>());
  if (isWord("UPDATE"))
    return parseUpdate(statement.emplace<UpdateStatement>());
  if (isWord("DELETE"))
    return parseDelete(statement.emplace<DeleteStatement>());
  if (isWord("CREATE"))
    return parseCreate(statement.emplace<CreateStatement>());
  if (isWord("DROP"))
    return parseDrop(statement.emplace<DropStatement>());
  if (isWord("ALTER"))
    return parseAlter(statement.emplace<AlterStatement>());
  return unexpected("SELECT, INSERT, UPDATE, DELETE, CREATE, DROP or ALTER");
}

bool StatementParser::expectEnd() {
  return current_.kind == TokenKind::kEnd || unexpected("end of query");
}

bool StatementParser::parseWhere(std::optional<Condition>& where) {
  bool found = false;
  if (!accept(Keyword::kWhere, found))
    return false;
  if (!found)
    return true;
  return parseCondition(where.emplace(), 0);
}

bool StatementParser::parseSelect(SelectStatement& statement) {
  if (!advance() || !accept(Keyword::kDistinct, statement.distinct))
    return false;
  if (current_.kind == TokenKind::kStar) {
    statement.allColumns = true;
    if (!advance())
      return false;
  } else if (!parseColumnList(statement.columns)) {
    return false;
  }
  if (!expectKeyword(Keyword::kFrom) || !parseTableList(statement.tables) ||
      !parseWhere(statement.where)) {
    return false;
  }
  bool found = false;
  if (!accept(Keyword::kOrder, found))
    return false;
  if (found && (!expectKeyword(Keyword::kBy) || !parseColumnList(statement.orderBy)))
    return false;
  statement.parameterCount = parameterCount_;
  return expectEnd();
}

bool StatementParser::parseInsert(InsertStatement& statement) {
  if (!advance() || !expectWord("INTO") || !parseTableName(statement.table) ||
      !expect(TokenKind::kOpenParen, "'('") || !parseColumnList(statement.columns) ||
      !expect(TokenKind::kCloseParen, "')'") || !expectWord("VALUES") ||
      !expect(TokenKind::kOpenParen, "'('")) {
    return false;
  }
  do {
    if (!statement.values.empty() && !advance())
      return false;
    if (!parseValue(statement.values.emplace_back()))
      return false;
  } while (current_.kind == TokenKind::kComma);
  if (!expect(TokenKind::kCloseParen, "')'") || !acceptWord("TEMPORARY", statement.temporary))
    return false;
  if (statement.values.size() != statement.columns.size()) {
    return fail(error_, engine::kBadQuerySyntax, statement.table.position,
                std::to_string(statement.columns.size()) + " columns but " +
                    std::to_string(statement.values.size()) + " values");
  }
  statement.parameterCount = parameterCount_;
  return expectEnd();
}

bool StatementParser::parseUpdate(UpdateStatement& statement) {
  if (!advance() || !parseTableName(statement.table) || !expectWord("SET"))
    return false;
  do {
    if (!statement.assignments.empty() && !advance())
      return false;
    Assignment& assignment = statement.assignments.emplace_back();
    if (!parseColumnName(assignment.column) || !expect(TokenKind::kEqual, "'='") ||
        !parseValue(assignment.value)) {
      return false;
    }
  } while (current_.kind == TokenKind::kComma);
  if (!parseWhere(statement.where))
    return false;
  statement.parameterCount = parameterCount_;
  return expectEnd();
}

bool StatementParser::parseDelete(DeleteStatement& statement) {
  if (!advance() || !expectKeyword(Keyword::kFrom) || !parseTableName(statement.table) ||
      !parseWhere(statement.where)) {
    return false;
  }
  statement.parameterCount = parameterCount_;
  return expectEnd();
}

bool StatementParser::parseCreate(CreateStatement& statement) {
  if (!advance() || !expectWord("TABLE") || !parseTableName(statement.table) ||
      !expect(TokenKind::kOpenParen, "'('")) {
    return false;
  }
  do {
    if (!statement.columns.empty() && !advance())
      return false;
    if (!parseColumnDefinition(statement.columns.emplace_back(), false))
      return false;
  } while (current_.kind == TokenKind::kComma);
  if (!expectWord("PRIMARY") || !expectWord("KEY") || !parseColumnList(statement.primaryKey) ||
      !expect(TokenKind::kCloseParen, "')'") || !acceptWord("HOLD", statement.hold)) {
    return false;
  }
  return expectEnd();
}

bool StatementParser::parseDrop(DropStatement& statement) {
  if (!advance() || !expectWord("TABLE") || !parseTableName(statement.table))
    return false;
  return expectEnd();
}

bool StatementParser::parseAlter(AlterStatement& statement) {
  if (!advance() || !expectWord("TABLE") || !parseTableName(statement.table))
    return false;
  bool found = false;
  if (!acceptWord("ADD", found))
    return false;
  if (found) {
    statement.kind = AlterStatement::Kind::kAddColumn;
    if (!parseColumnDefinition(statement.column, true))
      return false;
  } else if (isWord("HOLD") || isWord("FREE")) {
    statement.kind = isWord("HOLD") ? AlterStatement::Kind::kHold : AlterStatement::Kind::kFree;
    if (!advance())
      return false;
  } else {
    return unexpected("ADD, HOLD or FREE");
  }
  return expectEnd();
}

bool parseStatement(std::u16string_view text, Statement& statement, engine::Error& error) {
  if (text.size() > kMaxQueryLength) {
    return fail(error, engine::kBadQuerySyntax, Position{},
                "query longer than " + std::to_string(kMaxQueryLength) + " characters");
  }
  statement = Statement{};
  return StatementParser(text, error).parse(statement);
}

}  // namespace odlex::query
