#pragma once
// Reads the text of a SELECT statement:
//
//   SELECT [DISTINCT] * | column [, column ...]
//   FROM table [, table ...]
//   [WHERE condition]
//   [ORDER BY column [, column ...]]
//
//   condition  := conjunct [OR conjunct ...]
//   conjunct   := term [AND term ...]
//   term       := ( condition ) | operand comparison operand | column IS [NOT] NULL
//   operand    := column | 'string' | integer | ?
//   comparison := = | <> | < | > | <= | >=
//   column     := name | name.name
//
// Names are bare or in back quotes. Parentheses nest at most kMaxNesting deep.

#include <string_view>

#include "msi/engine/Result.h"
#include "msi/query/Lexer.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

constexpr unsigned kMaxNesting = 32;

// Parses `text`; on failure returns false with kBadQuerySyntax and the place in `error`.
bool parseSelect(std::u16string_view text, SelectStatement& statement, engine::Error& error);

}  // namespace odlex::query
