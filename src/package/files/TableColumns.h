#pragma once
// Reading cells of an engine table by column name, with a missing column or a cell of the wrong
// kind read as null: packages may lack optional columns, and nothing here may index past a row.

#include <optional>
#include <string_view>

#include "msi/engine/Database.h"

namespace odlex::package {

class TableColumns {
 public:
  TableColumns(const engine::Database& database, const engine::Table& table)
      : pool_(database.strings()), table_(table) {}

  std::size_t rows() const { return table_.rowCount(); }
  // The text of a text column; empty for null or a missing column.
  std::u16string_view text(std::size_t row, std::u16string_view column) const {
    const int index = table_.columnIndex(column);
    if (index < 0 || !table_.columns()[index].isString())
      return {};
    return table_.text(pool_, row, static_cast<std::size_t>(index));
  }
  // The value of an integer column; nothing for null or a missing column.
  std::optional<std::int32_t> integer(std::size_t row, std::u16string_view column) const {
    const int index = table_.columnIndex(column);
    if (index < 0 || !table_.columns()[index].isInteger() ||
        table_.isNull(row, static_cast<std::size_t>(index)))
      return std::nullopt;
    return table_.integer(row, static_cast<std::size_t>(index));
  }

 private:
  const engine::StringPool& pool_;
  const engine::Table& table_;
};

}  // namespace odlex::package
