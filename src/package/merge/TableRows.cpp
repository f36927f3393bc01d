// Reading a table's rows with their text resolved.

#include "package/merge/TableRows.h"

#include <string>

#include "msi/engine/Text.h"

namespace odlex::merge {

std::u16string Value::display() const {
  switch (kind) {
    case Kind::kInteger:
      return engine::fromUtf8(std::to_string(integer));
    case Kind::kText:
    case Kind::kStream:
      return text;
    case Kind::kNull:
      break;
  }
  return {};
}

int TableRows::columnIndex(std::u16string_view column) const {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].name == column)
      return static_cast<int>(i);
  }
  return -1;
}

std::size_t TableRows::keyCount() const {
  std::size_t count = 0;
  while (count < columns.size() && columns[count].key())
    ++count;
  return count;
}

namespace {

std::u16string joinKey(const TableRows& table, const Row& row, char16_t separator) {
  std::u16string text;
  const std::size_t keys = table.keyCount();
  for (std::size_t i = 0; i < keys && i < row.size(); ++i) {
    if (i > 0)
      text += separator;
    text += row[i].display();
  }
  return text;
}

}  // namespace

std::u16string TableRows::keyText(const Row& row) const {
  return joinKey(*this, row, u';');
}

std::u16string TableRows::keyOf(const Row& row) const {
  // Kind and text, each key cell ended by a NUL: no two different keys give one string.
  std::u16string key;
  const std::size_t keys = keyCount();
  for (std::size_t i = 0; i < keys && i < row.size(); ++i) {
    key += static_cast<char16_t>(u'0' + static_cast<int>(row[i].kind));
    key += row[i].display();
    key += u'\0';
  }
  return key;
}

std::u16string TableRows::streamName(const Row& row) const {
  return name + u'.' + joinKey(*this, row, u'.');
}

std::u16string TableRows::textOf(const Row& row, std::u16string_view column) const {
  const int index = columnIndex(column);
  return index < 0 || row[static_cast<std::size_t>(index)].kind != Value::Kind::kText
             ? std::u16string()
             : row[static_cast<std::size_t>(index)].text;
}

std::int32_t TableRows::integerOf(const Row& row, std::u16string_view column,
                                  std::int32_t fallback) const {
  const int index = columnIndex(column);
  return index < 0 || row[static_cast<std::size_t>(index)].kind != Value::Kind::kInteger
             ? fallback
             : row[static_cast<std::size_t>(index)].integer;
}

TableRows readTable(const engine::Database& db, const engine::Table& table) {
  TableRows result{table.name(), table.columns(), {}};
  result.rows.reserve(table.rowCount());
  for (std::size_t r = 0; r < table.rowCount(); ++r) {
    Row row(table.columnCount());
    for (std::size_t c = 0; c < table.columnCount(); ++c) {
      if (table.isNull(r, c))
        continue;
      const engine::Column& column = table.columns()[c];
      if (column.isInteger())
        row[c] = Value::ofInteger(table.integer(r, c));
      else if (!column.isBinary())
        row[c] = Value::ofText(std::u16string(table.text(db.strings(), r, c)));
    }
    // Binary cells name the stream of their row, made from the key read above.
    for (std::size_t c = 0; c < table.columnCount(); ++c) {
      if (table.columns()[c].isBinary() && !table.isNull(r, c))
        row[c] = Value{Value::Kind::kStream, 0, result.streamName(row)};
    }
    result.rows.push_back(std::move(row));
  }
  return result;
}

}  // namespace odlex::merge
