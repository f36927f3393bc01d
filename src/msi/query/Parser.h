#pragma once
// Reads the text of one statement of the installer's query language:
//
//   SELECT [DISTINCT] * | column [, column ...] FROM table [, table ...]
//     [WHERE condition] [ORDER BY column [, column ...]]
//   INSERT INTO table (column [, column ...]) VALUES (value [, value ...]) [TEMPORARY]
//   UPDATE table SET column = value [, column = value ...] [WHERE condition]
//   DELETE FROM table [WHERE condition]
//   CREATE TABLE table (definition [, definition ...] PRIMARY KEY column [, column ...])
//     [HOLD]
//   DROP TABLE table
//   ALTER TABLE table ADD definition [HOLD]
//   ALTER TABLE table HOLD | FREE
//
//   condition  := conjunct [OR conjunct ...]
//   conjunct   := term [AND term ...]
//   term       := ( condition ) | operand comparison operand | column IS [NOT] NULL
//   operand    := column | value
//   value      := 'string' | integer | ?
//   comparison := = | <> | < | > | <= | >=
//   column     := name | name.name
//   definition := name type [NOT NULL] [TEMPORARY] [LOCALIZABLE]   (the three in any order)
//   type       := CHAR [(size)] | CHARACTER [(size)] | LONGCHAR | SHORT | INT | INTEGER
//                 | LONG | OBJECT
//
// SELECT, FROM, WHERE, AND, OR, IS, NOT, NULL, DISTINCT, ORDER and BY are reserved; the other
// words of the language are recognised only where they stand, so tables and columns may be
// called Key, Value or Table without back quotes. Names are bare or in back quotes.
// Parentheses nest at most kMaxNesting deep.
//
// Column types as stored: CHAR(n) and CHARACTER(n) are text of at most n characters (0 to
// 255; 0 is unlimited, and a bare CHAR is CHAR(1)); LONGCHAR is unlimited text; SHORT, INT
// and INTEGER are 16-bit integers; LONG is a 32-bit integer; OBJECT is binary data kept in a
// stream. A column is nullable unless NOT NULL; LOCALIZABLE applies to text only.

#include <string_view>

#include "msi/engine/Result.h"
#include "msi/query/Lexer.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

constexpr unsigned kMaxNesting = 32;

// Parses `text`; on failure returns false with kBadQuerySyntax and the place in `error`.
bool parseStatement(std::u16string_view text, Statement& statement, engine::Error& error);

}  // namespace odlex::query
