// Rows by key and cells by column name.

#include "package/files/TableCells.h"

#include "msi/schema/Schema.h"

namespace odlex::package {

std::optional<std::size_t> rowWithKey(const engine::Database& database, const engine::Table& table,
                                      std::u16string_view key) {
  const std::uint32_t id = database.strings().find(key);
  if (id == 0 || table.keyCount() != 1)
    return std::nullopt;
  const std::uint32_t cells[] = {id};
  const std::ptrdiff_t row = table.findRow(cells);
  if (row < 0)
    return std::nullopt;
  return static_cast<std::size_t>(row);
}

void setInteger(engine::Table& table, std::size_t row, std::u16string_view column,
                std::optional<std::int32_t> value) {
  const int index = table.columnIndex(column);
  if (index >= 0 && table.columns()[static_cast<std::size_t>(index)].isInteger())
    table.setCell(row, static_cast<std::size_t>(index),
                  static_cast<std::uint32_t>(value.value_or(engine::kNullInteger)));
}

void setText(engine::Database& database, engine::Table& table, std::size_t row,
             std::u16string_view column, std::u16string_view text) {
  const int index = table.columnIndex(column);
  if (index >= 0 && table.columns()[static_cast<std::size_t>(index)].isString())
    table.setCell(row, static_cast<std::size_t>(index), database.strings().intern(text));
}

engine::Table* standardTable(engine::Database& database, std::u16string_view name,
                             TalError& error) {
  if (engine::Table* table = database.findTable(name))
    return table;
  engine::Error failure;
  engine::Table* table = database.createTable(
      std::u16string(name), schema::engineColumns(*schema::findTable(name)), failure);
  if (!table)
    error =
        TalError(failure.code, TalString::FromUtf8(failure.text), TalString(std::u16string(name)));
  return table;
}

}  // namespace odlex::package
