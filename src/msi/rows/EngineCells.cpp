// Cells of an engine table as row values, and back.

#include "msi/rows/EngineCells.h"

#include <algorithm>
#include <numeric>

#include "msi/rows/CellOrder.h"

namespace odlex::rows {

namespace {

// The pool id of the text a text column stores for `value`, read in place when it is text.
std::uint32_t internText(engine::StringPool& pool, const MSIRecordColumn& value) {
  if (value.GetKind() == MSIRecordColumn::kindString)
    return pool.intern(CellText::of(value));
  return pool.intern(value.GetString().u16());
}

}  // namespace

ColumnMap::ColumnMap(const schema::TableSchema& schema, const engine::Table& table)
    : table_(table), catalogIndex_(table.columnCount(), -1) {
  for (std::size_t i = 0; i < schema.columns.size(); ++i) {
    const int index = table.columnIndex(schema.columns[i].name);
    engineIndex_.push_back(index);
    if (schema.columns[i].key())
      keyIndex_.push_back(index);
    if (index >= 0)
      catalogIndex_[index] = static_cast<int>(i);
  }
}

MSIRecordColumn ColumnMap::read(const engine::StringPool& pool, std::size_t row,
                                std::size_t column) const {
  const int index = engineIndex_[column];
  if (index < 0 || table_.isNull(row, index))
    return MSIRecordColumn();
  const engine::Column& source = table_.columns()[index];
  if (source.isBinary())
    return MSIRecordColumn::Stream(TalString(table_.streamName(pool, row)));
  if (source.isInteger())
    return MSIRecordColumn::Integer(table_.integer(row, index));
  return MSIRecordColumn::String(TalString(std::u16string(table_.text(pool, row, index))));
}

void ColumnMap::write(engine::StringPool& pool, const std::vector<MSIRecordColumn>& values,
                      const std::function<bool(std::size_t)>& hasBinary,
                      std::span<std::uint32_t> cells) const {
  for (std::size_t index = 0; index < cells.size(); ++index) {
    const engine::Column& target = table_.columns()[index];
    const int column = catalogIndex_[index];
    if (target.isBinary()) {
      cells[index] = column >= 0 && hasBinary(column) ? 1 : 0;
    } else if (target.isInteger()) {
      const int number = column < 0 ? MSIRecord::NullInteger : values[column].GetInteger();
      cells[index] = static_cast<std::uint32_t>(number);
    } else {
      cells[index] = column < 0 ? 0 : internText(pool, values[column]);
    }
  }
}

void ColumnMap::writeUnchanged(const engine::StringPool& pool, std::size_t row,
                               std::span<std::uint32_t> cells) const {
  for (std::size_t index = 0; index < cells.size(); ++index) {
    const engine::Column& target = table_.columns()[index];
    const std::uint32_t cell = table_.cell(row, index);
    if (target.isBinary())
      cells[index] = catalogIndex_[index] >= 0 && cell != 0 ? 1 : 0;
    else if (target.isInteger())
      cells[index] =
          catalogIndex_[index] >= 0 ? cell : static_cast<std::uint32_t>(MSIRecord::NullInteger);
    else
      cells[index] = catalogIndex_[index] >= 0 ? pool.canonical(cell) : 0;
  }
}

std::vector<std::size_t> ColumnMap::keyOrder(const engine::StringPool& pool) const {
  for (const int index : keyIndex_) {
    if (index >= 0 && table_.columns()[index].isBinary())
      return {};
  }
  // Null cells read as null values, which order first: as the smallest integer (the null
  // integer is INT32_MIN) and as the empty text (an empty text reads as null).
  const auto less = [&](std::size_t a, std::size_t b) {
    for (const int index : keyIndex_) {
      if (index < 0)
        continue;
      if (table_.columns()[index].isInteger()) {
        const std::int32_t x = table_.integer(a, index), y = table_.integer(b, index);
        if (x != y)
          return x < y;
      } else if (const int order =
                     pool.get(table_.cell(a, index)).compare(pool.get(table_.cell(b, index)))) {
        return order < 0;
      }
    }
    return false;
  };
  std::vector<std::size_t> order(table_.rowCount());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), less);
  return order;
}

}  // namespace odlex::rows
