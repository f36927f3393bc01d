// Key comparison and stream naming of row cells.

#include "msi/rows/CellOrder.h"

#include <functional>

#include "msi/schema/Schema.h"

namespace odlex::rows {

namespace {

template <typename T>
int order(const T& a, const T& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

}  // namespace

int compareCells(const MSIRecordColumn& a, const MSIRecordColumn& b) {
  if (a.GetKind() != b.GetKind())
    return order(a.GetKind(), b.GetKind());
  switch (a.GetKind()) {
    case MSIRecordColumn::kindInteger:
      return order(a.GetInteger(), b.GetInteger());
    case MSIRecordColumn::kindString:
    case MSIRecordColumn::kindStream: {
      const int text = CellText::of(a).compare(CellText::of(b));
      return text < 0 ? -1 : text > 0 ? 1 : 0;
    }
    case MSIRecordColumn::kindNull:
      break;
  }
  return 0;
}

std::size_t hashCell(const MSIRecordColumn& cell) {
  if (cell.GetKind() == MSIRecordColumn::kindInteger)
    return std::hash<int>()(cell.GetInteger());
  return std::hash<std::u16string>()(CellText::of(cell));
}

TalString streamNameOf(const MSIEntry& row) {
  std::u16string name(row.GetSchema().name);
  for (const auto& column : row.GetSchema().columns) {
    if (!column.key())
      break;
    MSIRecordColumn value;
    row.GetColumn(TalString(std::u16string(column.name)), value);
    name += u'.';
    name += value.GetString().u16();
  }
  return TalString(std::move(name));
}

}  // namespace odlex::rows
