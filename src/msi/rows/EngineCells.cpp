// Cells of an engine table as row values, and back.

#include "msi/rows/EngineCells.h"

namespace odlex::rows {

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

std::vector<std::uint32_t> ColumnMap::write(
    engine::StringPool& pool, const std::vector<MSIRecordColumn>& values,
    const std::function<bool(std::size_t)>& hasBinary) const {
  std::vector<std::uint32_t> cells(table_.columnCount(), 0);
  for (std::size_t index = 0; index < cells.size(); ++index) {
    const engine::Column& target = table_.columns()[index];
    const int column = catalogIndex_[index];
    if (target.isBinary()) {
      cells[index] = column >= 0 && hasBinary(column) ? 1 : 0;
    } else if (target.isInteger()) {
      const int number = column < 0 ? MSIRecord::NullInteger : values[column].GetInteger();
      cells[index] = static_cast<std::uint32_t>(number);
    } else if (column >= 0) {
      cells[index] = pool.intern(values[column].GetString().u16());
    }
  }
  return cells;
}

}  // namespace odlex::rows
