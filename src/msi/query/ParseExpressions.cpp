// Tokens, names, WHERE conditions and values.

#include <string>

#include "msi/query/Parser.h"
#include "msi/query/ParserCore.h"

namespace odlex::query {
namespace {

void appendFlattened(Condition& chain, Condition part) {
  if (part.kind != chain.kind) {
    chain.children.push_back(std::move(part));
    return;
  }
  for (Condition& child : part.children)
    chain.children.push_back(std::move(child));
}

}  // namespace

bool StatementParser::unexpected(std::string_view expected) {
  return fail(error_, engine::kBadQuerySyntax, current_.position,
              "expected " + std::string(expected) + ", found " + describe(current_));
}

bool StatementParser::accept(Keyword keyword, bool& found) {
  found = isKeyword(keyword);
  return !found || advance();
}

bool StatementParser::expectKeyword(Keyword keyword) {
  if (!isKeyword(keyword))
    return unexpected(std::string(keywordName(keyword)));
  return advance();
}

bool StatementParser::isWord(std::string_view word) const {
  if (current_.kind != TokenKind::kName || current_.text.size() != word.size())
    return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    char16_t c = current_.text[i];
    if ((c >= u'a' && c <= u'z' ? char16_t(c - u'a' + u'A') : c) != char16_t(word[i]))
      return false;
  }
  return true;
}

bool StatementParser::acceptWord(std::string_view word, bool& found) {
  found = isWord(word);
  return !found || advance();
}

bool StatementParser::expectWord(std::string_view word) {
  if (!isWord(word))
    return unexpected(std::string(word));
  return advance();
}

bool StatementParser::expect(TokenKind kind, std::string_view what) {
  if (current_.kind != kind)
    return unexpected(what);
  return advance();
}

bool StatementParser::parseName(std::u16string& name, std::string_view what) {
  if (!isName())
    return unexpected(what);
  name = current_.text;
  return advance();
}

bool StatementParser::parseColumnName(ColumnName& column) {
  column.position = current_.position;
  if (!parseName(column.column, "a column name"))
    return false;
  if (current_.kind != TokenKind::kDot)
    return true;
  column.table = std::move(column.column);
  return advance() && parseName(column.column, "a column name after '.'");
}

bool StatementParser::parseColumnList(std::vector<ColumnName>& columns) {
  do {
    if (!columns.empty() && !advance())
      return false;  // past the comma
    if (!parseColumnName(columns.emplace_back()))
      return false;
  } while (current_.kind == TokenKind::kComma);
  return true;
}

bool StatementParser::parseTableName(TableName& table) {
  table.position = current_.position;
  if (!parseName(table.name, "a table name"))
    return false;
  if (current_.kind == TokenKind::kDot) {
    return fail(error_, engine::kBadQuerySyntax, current_.position,
                "a table name cannot contain '.'");
  }
  return true;
}

bool StatementParser::parseTableList(std::vector<TableName>& tables) {
  do {
    if (!tables.empty() && !advance())
      return false;
    if (!parseTableName(tables.emplace_back()))
      return false;
  } while (current_.kind == TokenKind::kComma);
  return true;
}

bool StatementParser::parseCondition(Condition& out, unsigned depth) {
  return parseChain(out, depth, Keyword::kOr);
}

// Parses `part [op part ...]` for one of AND/OR, flattening nested runs of the same operator
// into one node.
bool StatementParser::parseChain(Condition& out, unsigned depth, Keyword joiner) {
  Condition::Kind kind = joiner == Keyword::kOr ? Condition::Kind::kOr : Condition::Kind::kAnd;
  Position start = current_.position;
  Condition first;
  if (!parseChainPart(first, depth, joiner))
    return false;
  if (!isKeyword(joiner)) {
    out = std::move(first);
    return true;
  }
  out = Condition{};
  out.kind = kind;
  out.position = start;
  appendFlattened(out, std::move(first));
  for (;;) {
    bool found = false;
    if (!accept(joiner, found))
      return false;
    if (!found)
      return true;
    Condition next;
    if (!parseChainPart(next, depth, joiner))
      return false;
    appendFlattened(out, std::move(next));
  }
}

bool StatementParser::parseChainPart(Condition& out, unsigned depth, Keyword joiner) {
  return joiner == Keyword::kOr ? parseChain(out, depth, Keyword::kAnd) : parseTerm(out, depth);
}

bool StatementParser::parseTerm(Condition& out, unsigned depth) {
  if (current_.kind == TokenKind::kOpenParen) {
    if (depth + 1 > kMaxNesting) {
      return fail(error_, engine::kBadQuerySyntax, current_.position,
                  "parentheses nested more than " + std::to_string(kMaxNesting) + " deep");
    }
    if (!advance() || !parseCondition(out, depth + 1))
      return false;
    return expect(TokenKind::kCloseParen, "')'");
  }
  out.position = current_.position;
  if (!parseOperand(out.left))
    return false;
  if (isKeyword(Keyword::kIs))
    return parseNullTest(out);
  if (!parseComparison(out.comparison))
    return false;
  out.kind = Condition::Kind::kCompare;
  return parseOperand(out.right);
}

bool StatementParser::parseNullTest(Condition& out) {
  if (out.left.kind != Operand::Kind::kColumn) {
    return fail(error_, engine::kBadQuerySyntax, out.left.position,
                "IS NULL applies to a column only");
  }
  if (!advance())
    return false;
  bool negated = false;
  if (!accept(Keyword::kNot, negated) || !expectKeyword(Keyword::kNull))
    return false;
  out.kind = negated ? Condition::Kind::kIsNotNull : Condition::Kind::kIsNull;
  return true;
}

bool StatementParser::parseComparison(Comparison& comparison) {
  switch (current_.kind) {
    case TokenKind::kEqual:
      comparison = Comparison::kEqual;
      break;
    case TokenKind::kNotEqual:
      comparison = Comparison::kNotEqual;
      break;
    case TokenKind::kLess:
      comparison = Comparison::kLess;
      break;
    case TokenKind::kGreater:
      comparison = Comparison::kGreater;
      break;
    case TokenKind::kLessEqual:
      comparison = Comparison::kLessEqual;
      break;
    case TokenKind::kGreaterEqual:
      comparison = Comparison::kGreaterEqual;
      break;
    default:
      return unexpected("a comparison (=, <>, <, >, <=, >=) or IS");
  }
  return advance();
}

bool StatementParser::parseOperand(Operand& operand) {
  if (current_.kind == TokenKind::kString || current_.kind == TokenKind::kInteger ||
      current_.kind == TokenKind::kParameter) {
    return parseValue(operand);
  }
  operand.position = current_.position;
  if (!isName())
    return unexpected("a column, a 'string', an integer or ?");
  operand.kind = Operand::Kind::kColumn;
  return parseColumnName(operand.column);
}

bool StatementParser::parseValue(Value& value) {
  value.position = current_.position;
  switch (current_.kind) {
    case TokenKind::kString:
      value.kind = Operand::Kind::kString;
      value.text = current_.text;
      return advance();
    case TokenKind::kInteger:
      value.kind = Operand::Kind::kInteger;
      value.integer = current_.integer;
      return advance();
    case TokenKind::kParameter:
      value.kind = Operand::Kind::kParameter;
      value.parameter = parameterCount_++;
      return advance();
    default:
      return unexpected("a 'string', an integer or ?");
  }
}

}  // namespace odlex::query
