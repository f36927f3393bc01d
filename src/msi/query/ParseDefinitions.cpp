// Column definitions of CREATE TABLE and ALTER TABLE ... ADD.

#include <array>
#include <string>
#include <utility>

#include "msi/engine/Column.h"
#include "msi/query/ParserCore.h"

namespace odlex::query {
namespace {

namespace type = engine::column_type;

// The type words without a size, by the name that declares them.
constexpr std::array<std::pair<std::string_view, std::uint16_t>, 6> kFixedTypes{{
    {"LONGCHAR", type::kText},
    {"SHORT", type::kInteger16},
    {"INT", type::kInteger16},
    {"INTEGER", type::kInteger16},
    {"LONG", type::kInteger32},
    {"OBJECT", type::kBinary},
}};

constexpr unsigned kMaxTextSize = 255;

}  // namespace

bool StatementParser::parseColumnDefinition(ColumnDefinition& column, bool allowHold) {
  column.name.position = current_.position;
  if (!parseName(column.name.column, "a column name") || !parseColumnType(column.type))
    return false;
  bool notNull = false, temporary = false, localizable = false;
  for (;;) {
    if (isKeyword(Keyword::kNot) && !notNull) {
      if (!advance() || !expectKeyword(Keyword::kNull))
        return false;
      notNull = true;
    } else if (isWord("TEMPORARY") && !temporary) {
      temporary = true;
      if (!advance())
        return false;
    } else if (isWord("LOCALIZABLE") && !localizable) {
      if (!engine::Column{{}, column.type}.isString()) {
        return fail(error_, engine::kBadQuerySyntax, current_.position,
                    "only text columns are LOCALIZABLE");
      }
      localizable = true;
      if (!advance())
        return false;
    } else {
      break;
    }
  }
  if (!notNull)
    column.type |= type::kNullable;
  if (temporary)
    column.type |= type::kTemporary;
  if (localizable)
    column.type |= type::kLocalizable;
  return !allowHold || acceptWord("HOLD", column.hold);
}

bool StatementParser::parseColumnType(std::uint16_t& columnType) {
  for (const auto& [name, word] : kFixedTypes) {
    if (isWord(name)) {
      columnType = word;
      return advance();
    }
  }
  if (!isWord("CHAR") && !isWord("CHARACTER"))
    return unexpected(
        "a column type (CHAR, CHARACTER, LONGCHAR, SHORT, INT, INTEGER, LONG, OBJECT)");
  if (!advance())
    return false;
  std::uint16_t size = 1;
  if (current_.kind == TokenKind::kOpenParen && !parseTextSize(size))
    return false;
  columnType = type::kText | size;
  return true;
}

bool StatementParser::parseTextSize(std::uint16_t& size) {
  if (!advance())
    return false;
  if (current_.kind != TokenKind::kInteger || current_.integer < 0 ||
      current_.integer > static_cast<std::int32_t>(kMaxTextSize)) {
    return unexpected("a size from 0 to " + std::to_string(kMaxTextSize));
  }
  size = static_cast<std::uint16_t>(current_.integer);
  return advance() && expect(TokenKind::kCloseParen, "')'");
}

}  // namespace odlex::query
