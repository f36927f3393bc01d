// Cells of an engine table as row values, and back.

#include "msi/rows/EngineCells.h"

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

}  // namespace odlex::rows
