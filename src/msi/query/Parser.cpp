#include "msi/query/Parser.h"

#include <string>

namespace odlex::query {
namespace {

class Parser {
 public:
  Parser(std::u16string_view text, engine::Error& error) : lexer_(text), error_(error) {}

  bool parse(SelectStatement& statement) {
    if (!advance() || !expectKeyword(Keyword::kSelect))
      return false;
    if (!accept(Keyword::kDistinct, statement.distinct))
      return false;
    if (current_.kind == TokenKind::kStar) {
      statement.allColumns = true;
      if (!advance())
        return false;
    } else if (!parseColumnList(statement.columns)) {
      return false;
    }
    if (!expectKeyword(Keyword::kFrom) || !parseTableList(statement.tables))
      return false;
    bool found = false;
    if (!accept(Keyword::kWhere, found))
      return false;
    if (found) {
      statement.where.emplace();
      if (!parseCondition(*statement.where, 0))
        return false;
    }
    if (!accept(Keyword::kOrder, found))
      return false;
    if (found && (!expectKeyword(Keyword::kBy) || !parseColumnList(statement.orderBy))) {
      return false;
    }
    if (current_.kind != TokenKind::kEnd)
      return unexpected("end of query");
    statement.parameterCount = parameterCount_;
    return true;
  }

 private:
  // Moves to the next token; false when the lexer rejects the text.
  bool advance() { return lexer_.next(current_, error_); }

  bool unexpected(std::string_view expected) {
    return fail(error_, engine::kBadQuerySyntax, current_.position,
                "expected " + std::string(expected) + ", found " + describe(current_));
  }

  bool isKeyword(Keyword keyword) const {
    return current_.kind == TokenKind::kKeyword && current_.keyword == keyword;
  }

  // Consumes the keyword when it is next, telling in `found`; false when the text after it
  // cannot be read.
  bool accept(Keyword keyword, bool& found) {
    found = isKeyword(keyword);
    return !found || advance();
  }

  bool expectKeyword(Keyword keyword) {
    if (!isKeyword(keyword))
      return unexpected(std::string(keywordName(keyword)));
    return advance();
  }

  bool isName() const {
    return current_.kind == TokenKind::kName || current_.kind == TokenKind::kQuotedName;
  }

  bool parseName(std::u16string& name, std::string_view what) {
    if (!isName())
      return unexpected(what);
    name = current_.text;
    return advance();
  }

  bool parseColumnName(ColumnName& column) {
    column.position = current_.position;
    if (!parseName(column.column, "a column name"))
      return false;
    if (current_.kind != TokenKind::kDot)
      return true;
    column.table = std::move(column.column);
    return advance() && parseName(column.column, "a column name after '.'");
  }

  bool parseColumnList(std::vector<ColumnName>& columns) {
    do {
      if (!columns.empty() && !advance())
        return false;  // past the comma
      if (!parseColumnName(columns.emplace_back()))
        return false;
    } while (current_.kind == TokenKind::kComma);
    return true;
  }

  bool parseTableList(std::vector<TableName>& tables) {
    do {
      if (!tables.empty() && !advance())
        return false;
      TableName& table = tables.emplace_back();
      table.position = current_.position;
      if (!parseName(table.name, "a table name"))
        return false;
      if (current_.kind == TokenKind::kDot) {
        return fail(error_, engine::kBadQuerySyntax, current_.position,
                    "a table name cannot contain '.'");
      }
    } while (current_.kind == TokenKind::kComma);
    return true;
  }

  // Parses `operand [op operand ...]` for one of AND/OR, flattening nested runs of the same
  // operator into one node.
  bool parseChain(Condition& out, unsigned depth, Keyword joiner) {
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

  bool parseChainPart(Condition& out, unsigned depth, Keyword joiner) {
    return joiner == Keyword::kOr ? parseChain(out, depth, Keyword::kAnd) : parseTerm(out, depth);
  }

  static void appendFlattened(Condition& chain, Condition part) {
    if (part.kind != chain.kind) {
      chain.children.push_back(std::move(part));
      return;
    }
    for (Condition& child : part.children)
      chain.children.push_back(std::move(child));
  }

  bool parseCondition(Condition& out, unsigned depth) {
    return parseChain(out, depth, Keyword::kOr);
  }

  bool parseTerm(Condition& out, unsigned depth) {
    if (current_.kind == TokenKind::kOpenParen) {
      if (depth + 1 > kMaxNesting) {
        return fail(error_, engine::kBadQuerySyntax, current_.position,
                    "parentheses nested more than " + std::to_string(kMaxNesting) + " deep");
      }
      if (!advance() || !parseCondition(out, depth + 1))
        return false;
      if (current_.kind != TokenKind::kCloseParen)
        return unexpected("')'");
      return advance();
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

  bool parseNullTest(Condition& out) {
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

  bool parseComparison(Comparison& comparison) {
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

  bool parseOperand(Operand& operand) {
    operand.position = current_.position;
    switch (current_.kind) {
      case TokenKind::kString:
        operand.kind = Operand::Kind::kString;
        operand.text = current_.text;
        return advance();
      case TokenKind::kInteger:
        operand.kind = Operand::Kind::kInteger;
        operand.integer = current_.integer;
        return advance();
      case TokenKind::kParameter:
        operand.kind = Operand::Kind::kParameter;
        operand.parameter = parameterCount_++;
        return advance();
      default:
        if (!isName())
          return unexpected("a column, a 'string', an integer or ?");
        operand.kind = Operand::Kind::kColumn;
        return parseColumnName(operand.column);
    }
  }

  Lexer lexer_;
  engine::Error& error_;
  Token current_;
  std::uint32_t parameterCount_ = 0;
};

}  // namespace

bool parseSelect(std::u16string_view text, SelectStatement& statement, engine::Error& error) {
  if (text.size() > kMaxQueryLength) {
    return fail(error, engine::kBadQuerySyntax, Position{},
                "query longer than " + std::to_string(kMaxQueryLength) + " characters");
  }
  statement = SelectStatement{};
  return Parser(text, error).parse(statement);
}

}  // namespace odlex::query
