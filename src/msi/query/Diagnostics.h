#pragma once
// Error reporting for query text: every message names the place in the query ("line 1,
// column 17: ...") and quotes the offending text, so a user can find it at once.

#include <cstdint>
#include <string>
#include <string_view>

#include "msi/engine/Result.h"

namespace odlex::query {

// A place in the query text; both counts start at 1, columns count UTF-16 code units.
struct Position {
  std::uint32_t line = 1;
  std::uint32_t column = 1;
};

// `text` in single quotes, cut short with "..." when long, for quoting in a message.
std::string quoteText(std::u16string_view text);

// Sets `error` to `code` with "line L, column C: message"; always returns false so that
// callers can write `return fail(...)`.
bool fail(engine::Error& error, std::uint32_t code, Position at, std::string_view message);

// Sets `error` to `code` with `text`, for faults that have no place in the query text (those of
// execute); always returns false.
bool failWith(engine::Error& error, std::uint32_t code, std::string text);

}  // namespace odlex::query
