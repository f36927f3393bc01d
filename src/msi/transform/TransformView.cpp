// The changes of a transform as the rows of the installer's _TransformView table.

#include <unordered_map>

#include "msi/engine/Database.h"
#include "msi/engine/Text.h"
#include "msi/engine/TypeWord.h"
#include "msi/transform/Transform.h"

namespace odlex::transform {

namespace {

std::u16string valueText(const std::optional<Value>& value, const std::u16string& streamName) {
  if (!value)
    return {};
  return value->kind == Value::kStream ? streamName : value->display();
}

// The rows of the base table by key, to show what an update replaces.
std::unordered_map<std::u16string, std::size_t> rowsByKey(const engine::Database& base,
                                                          const engine::Table* table) {
  std::unordered_map<std::u16string, std::size_t> rows;
  for (std::size_t r = 0; table && r < table->rowCount(); ++r)
    rows.emplace(rowKey(base, *table, r), r);
  return rows;
}

void addTableRows(const TableEdit& edit, const engine::Database& base, std::vector<ViewRow>& rows) {
  if (edit.state == TableEdit::kDropped) {
    rows.push_back(ViewRow{edit.name, u"DROP", {}, {}, {}});
    return;
  }
  if (edit.state == TableEdit::kAdded)
    rows.push_back(ViewRow{edit.name, u"CREATE", {}, {}, {}});
  const std::size_t firstNew =
      edit.state == TableEdit::kAdded ? 0 : edit.columns.size() - edit.addedColumns;
  for (std::size_t c = firstNew; c < edit.columns.size(); ++c) {
    const engine::Column& column = edit.columns[c];
    rows.push_back(ViewRow{edit.name,
                           column.name,
                           {},
                           engine::fromUtf8(engine::typeWord(column.type)),
                           engine::fromUtf8(std::to_string(c + 1))});
  }
  const engine::Table* table = base.findTable(edit.name);
  const auto baseRows = rowsByKey(base, table);
  for (const RowEdit& row : edit.rows) {
    const std::u16string key = keyText(row.cells, edit.keyCount);
    if (row.kind != RowEdit::kUpdate)
      rows.push_back(
          ViewRow{edit.name, row.kind == RowEdit::kInsert ? u"INSERT" : u"DELETE", key, {}, {}});
    if (row.kind == RowEdit::kDelete)
      continue;
    const auto old = baseRows.find(rowKey(row.cells, edit.keyCount));
    const std::u16string streamName = streamNameOf(edit.name, row.cells, edit.keyCount);
    for (std::size_t c = edit.keyCount; c < row.cells.size(); ++c) {
      if (!row.cells[c] || (row.kind == RowEdit::kInsert && row.cells[c]->kind == Value::kNull))
        continue;
      std::u16string current;
      if (row.kind == RowEdit::kUpdate && old != baseRows.end() && c < table->columnCount())
        current = valueText(cellValue(base, *table, old->second, c), streamName);
      rows.push_back(ViewRow{edit.name, edit.columns[c].name, key,
                             valueText(row.cells[c], streamName), std::move(current)});
    }
  }
}

}  // namespace

std::vector<ViewRow> transformViewRows(const DecodedTransform& transform,
                                       const engine::Database& base) {
  std::vector<ViewRow> rows;
  for (const TableEdit& edit : transform.changes.tables)
    addTableRows(edit, base, rows);
  for (const StreamEdit& edit : transform.changes.streams) {
    rows.push_back(ViewRow{
        u"_Streams", edit.kind == StreamEdit::kDelete ? u"DELETE" : u"INSERT", edit.name, {}, {}});
    if (edit.kind != StreamEdit::kDelete)
      rows.push_back(ViewRow{u"_Streams", u"Data", edit.name, edit.name, {}});
  }
  return rows;
}

}  // namespace odlex::transform
