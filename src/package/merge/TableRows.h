#pragma once
// Rows of one table taken out of a database, with their text resolved, so that rows can be
// compared and moved between two databases with different string pools.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Database.h"

namespace odlex::merge {

struct Value {
  enum class Kind { kNull, kInteger, kText, kStream };
  Kind kind = Kind::kNull;
  std::int32_t integer = 0;
  // The text (kText), or the name of the stream holding the cell's data (kStream).
  std::u16string text;

  static Value ofInteger(std::int32_t value) { return {Kind::kInteger, value, {}}; }
  // The empty text is null, as in the database.
  static Value ofText(std::u16string value) {
    return value.empty() ? Value{} : Value{Kind::kText, 0, std::move(value)};
  }
  bool isNull() const { return kind == Kind::kNull; }
  // The value as the .idt files write it: decimal integers, text as it is, "" for null.
  std::u16string display() const;
  friend bool operator==(const Value&, const Value&) = default;
};

using Row = std::vector<Value>;

struct TableRows {
  std::u16string name;
  std::vector<engine::Column> columns;
  std::vector<Row> rows;

  // Index of the column called `name`, or -1.
  int columnIndex(std::u16string_view column) const;
  std::size_t keyCount() const;
  // The key values of `row` joined by ';', for messages.
  std::u16string keyText(const Row& row) const;
  // The row's key as one string, for lookups.
  std::u16string keyOf(const Row& row) const;
  // The name of the stream that holds a binary cell of `row`: the table's name and the key
  // values joined by '.'.
  std::u16string streamName(const Row& row) const;
  // The text of column `column` of `row`; empty when the column is missing or null.
  std::u16string textOf(const Row& row, std::u16string_view column) const;
  // The integer of column `column` of `row`; `fallback` when missing or null.
  std::int32_t integerOf(const Row& row, std::u16string_view column, std::int32_t fallback) const;
};

TableRows readTable(const engine::Database& db, const engine::Table& table);

}  // namespace odlex::merge
