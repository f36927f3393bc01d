#pragma once
// Finding and writing rows of an engine table by key and column name, for the edits of a
// package's file tables. A column the table lacks is skipped: packages may lack optional ones.

#include <cstdint>
#include <optional>
#include <string_view>

#include "msi/engine/Database.h"
#include "odlex/support/TalError.h"

namespace odlex::package {

// The row of `table` whose first key cell is the text `key` (a one-column key); nothing when
// there is none.
std::optional<std::size_t> rowWithKey(const engine::Database& database, const engine::Table& table,
                                      std::u16string_view key);

// Sets the integer cell of `column` (null when `value` is empty).
void setInteger(engine::Table& table, std::size_t row, std::u16string_view column,
                std::optional<std::int32_t> value);
// Sets the text cell of `column` (the empty text is null).
void setText(engine::Database& database, engine::Table& table, std::size_t row,
             std::u16string_view column, std::u16string_view text);

// The table `name` of `database`, made with its standard columns when missing; null with the
// error when it cannot be made.
engine::Table* standardTable(engine::Database& database, std::u16string_view name, TalError& error);

}  // namespace odlex::package
