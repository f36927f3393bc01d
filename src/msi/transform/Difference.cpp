#include "msi/transform/Difference.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include "msi/engine/Database.h"
#include "msi/engine/Text.h"

namespace odlex::transform {

using engine::Database;
using engine::Error;
using engine::Table;

namespace {

constexpr std::size_t kCompareChunk = 64 * 1024;

void appendKey(std::u16string& key, const Value& value) {
  key += value.kind == Value::kInteger ? u'I' : value.kind == Value::kText ? u'T' : u'N';
  key +=
      value.kind == Value::kInteger ? engine::fromUtf8(std::to_string(value.integer)) : value.text;
  key += u'\0';
}

bool sameValue(const Value& a, const Value& b, bool& same, Error& error) {
  if (a.kind != b.kind) {
    same = false;
    return true;
  }
  switch (a.kind) {
    case Value::kNull:
      same = true;
      return true;
    case Value::kInteger:
      same = a.integer == b.integer;
      return true;
    case Value::kText:
      same = a.text == b.text;
      return true;
    case Value::kStream:
      return sameStreamContents(*a.stream, *b.stream, same, error);
  }
  return true;
}

// Whether `target` is `base` with non-key columns appended, the only column change a transform
// carries.
bool onlyAppendedColumns(const Table& base, const Table& target) {
  if (base.columnCount() > target.columnCount())
    return false;
  for (std::size_t c = 0; c < target.columnCount(); ++c) {
    const engine::Column& column = target.columns()[c];
    if (c >= base.columnCount()
            ? column.key()
            : column.name != base.columns()[c].name || column.type != base.columns()[c].type)
      return false;
  }
  return true;
}

std::vector<std::optional<Value>> allValues(const Database& db, const Table& table,
                                            std::size_t row) {
  std::vector<std::optional<Value>> cells;
  for (std::size_t c = 0; c < table.columnCount(); ++c)
    cells.emplace_back(cellValue(db, table, row, c));
  return cells;
}

std::vector<Value> beforeValues(const Database& db, const Table& table, std::size_t row) {
  std::vector<Value> values;
  for (std::size_t c = 0; c < table.columnCount(); ++c)
    values.push_back(cellValue(db, table, row, c));
  return values;
}

TableEdit addedTable(const Database& db, const Table& table) {
  TableEdit edit{TableEdit::kAdded, table.name(), table.columns(), table.keyCount(), 0, {}};
  for (std::size_t r : table.keyOrder())
    edit.rows.push_back(RowEdit{RowEdit::kInsert, allValues(db, table, r), {}});
  return edit;
}

TableEdit droppedTable(const Table& table) {
  return TableEdit{TableEdit::kDropped, table.name(), table.columns(), table.keyCount(), 0, {}};
}

bool changedTable(const Database& base, const Table& from, const Database& target, const Table& to,
                  TableEdit& edit, Error& error) {
  edit = TableEdit{TableEdit::kChanged,
                   to.name(),
                   to.columns(),
                   to.keyCount(),
                   to.columnCount() - from.columnCount(),
                   {}};
  std::unordered_map<std::u16string, std::size_t> baseRows;
  for (std::size_t r = 0; r < from.rowCount(); ++r)
    baseRows[rowKey(base, from, r)] = r;
  std::vector<bool> matched(from.rowCount(), false);
  for (std::size_t r : to.keyOrder()) {
    const auto found = baseRows.find(rowKey(target, to, r));
    if (found == baseRows.end()) {
      edit.rows.push_back(RowEdit{RowEdit::kInsert, allValues(target, to, r), {}});
      continue;
    }
    const std::size_t old = found->second;
    matched[old] = true;
    RowEdit update{RowEdit::kUpdate, std::vector<std::optional<Value>>(to.columnCount()), {}};
    bool changed = false;
    for (std::size_t c = 0; c < to.columnCount(); ++c) {
      Value value = cellValue(target, to, r, c);
      bool same = value.kind == Value::kNull;
      if (c < from.columnCount() && !sameValue(cellValue(base, from, old, c), value, same, error))
        return false;
      if (c < to.keyCount() || !same) {
        changed = changed || c >= to.keyCount();
        update.cells[c] = std::move(value);
      }
    }
    if (changed) {
      update.before = beforeValues(base, from, old);
      edit.rows.push_back(std::move(update));
    }
  }
  for (std::size_t r : from.keyOrder()) {
    if (matched[r])
      continue;
    RowEdit removal{RowEdit::kDelete, std::vector<std::optional<Value>>(to.columnCount()),
                    beforeValues(base, from, r)};
    for (std::size_t c = 0; c < to.keyCount(); ++c)
      removal.cells[c] = removal.before[c];
    edit.rows.push_back(std::move(removal));
  }
  return true;
}

// Names of the streams that hold binary cells.
void addCellStreams(const Database& db, std::set<std::u16string>& names) {
  for (std::size_t t = 0; t < db.tableCount(); ++t) {
    const Table& table = db.table(t);
    for (std::size_t c = 0; c < table.columnCount(); ++c) {
      if (!table.columns()[c].isBinary())
        continue;
      for (std::size_t r = 0; r < table.rowCount(); ++r) {
        if (table.cell(r, c) != 0)
          names.insert(table.streamName(db.strings(), r));
      }
    }
  }
}

bool diffStreams(const Database& base, const Database& target, Difference& out, Error& error) {
  std::set<std::u16string> cells;
  addCellStreams(base, cells);
  addCellStreams(target, cells);
  for (const std::u16string& name : target.streamNames()) {
    if (cells.contains(name))
      continue;
    auto data = target.streamSource(name, error);
    if (!data)
      return false;
    if (!base.hasStream(name)) {
      out.streams.push_back(StreamEdit{StreamEdit::kInsert, name, std::move(data)});
      continue;
    }
    auto old = base.streamSource(name, error);
    bool same = false;
    if (!old || !sameStreamContents(*old, *data, same, error))
      return false;
    if (!same)
      out.streams.push_back(StreamEdit{StreamEdit::kUpdate, name, std::move(data)});
  }
  for (const std::u16string& name : base.streamNames()) {
    if (!cells.contains(name) && !target.hasStream(name))
      out.streams.push_back(StreamEdit{StreamEdit::kDelete, name, nullptr});
  }
  return true;
}

}  // namespace

Value Value::ofInteger(std::int32_t value) {
  Value result;
  result.kind = kInteger;
  result.integer = value;
  return result;
}

Value Value::ofText(std::u16string text) {
  Value result;
  if (!text.empty()) {
    result.kind = kText;
    result.text = std::move(text);
  }
  return result;
}

std::u16string Value::display() const {
  switch (kind) {
    case kInteger:
      return engine::fromUtf8(std::to_string(integer));
    case kText:
      return text;
    case kStream:
      return engine::fromUtf8("[stream of " + std::to_string(stream->size()) + " bytes]");
    case kNull:
      break;
  }
  return {};
}

std::u16string rowKey(const Database& db, const Table& table, std::size_t row) {
  std::u16string key;
  for (std::size_t c = 0; c < table.keyCount(); ++c)
    appendKey(key, cellValue(db, table, row, c));
  return key;
}

std::u16string rowKey(const std::vector<std::optional<Value>>& row, std::size_t keyCount) {
  std::u16string key;
  for (std::size_t c = 0; c < keyCount && c < row.size(); ++c)
    appendKey(key, row[c] ? *row[c] : Value{});
  return key;
}

Value cellValue(const Database& db, const Table& table, std::size_t row, std::size_t column) {
  const engine::Column& type = table.columns()[column];
  const std::uint32_t cell = table.cell(row, column);
  if (type.isBinary()) {
    Value value;
    Error missing;
    if (cell != 0) {
      value.stream = db.streamSource(table.streamName(db.strings(), row), missing);
      if (value.stream)
        value.kind = Value::kStream;
    }
    return value;
  }
  if (type.isString())
    return Value::ofText(std::u16string(db.strings().get(cell)));
  const auto number = static_cast<std::int32_t>(cell);
  return number == engine::kNullInteger ? Value{} : Value::ofInteger(number);
}

std::u16string streamNameOf(std::u16string_view table, const std::vector<std::optional<Value>>& row,
                            std::size_t keyCount) {
  std::u16string name(table);
  for (std::size_t c = 0; c < keyCount && c < row.size(); ++c) {
    name += u'.';
    if (row[c])
      name += row[c]->display();
  }
  return name;
}

std::u16string keyText(const std::vector<std::optional<Value>>& row, std::size_t keyCount) {
  std::u16string text;
  for (std::size_t c = 0; c < keyCount && c < row.size(); ++c) {
    if (c > 0)
      text += u'\t';
    if (row[c])
      text += row[c]->display();
  }
  return text;
}

bool sameStreamContents(const storage::StreamSource& a, const storage::StreamSource& b, bool& same,
                        Error& error) {
  same = a.size() == b.size();
  if (!same)
    return true;
  std::string reason;
  auto readerA = a.open(reason);
  auto readerB = readerA ? b.open(reason) : nullptr;
  if (!readerB) {
    error = Error{engine::kReadFault, "comparing streams: " + reason};
    return false;
  }
  std::vector<std::uint8_t> chunkA(kCompareChunk), chunkB(kCompareChunk);
  for (std::uint64_t left = a.size(); left > 0 && same;) {
    const std::size_t length =
        static_cast<std::size_t>(std::min<std::uint64_t>(left, kCompareChunk));
    if (!readerA->read(chunkA.data(), length, reason) ||
        !readerB->read(chunkB.data(), length, reason)) {
      error = Error{engine::kReadFault, "comparing streams: " + reason};
      return false;
    }
    same = std::equal(chunkA.begin(), chunkA.begin() + static_cast<std::ptrdiff_t>(length),
                      chunkB.begin());
    left -= length;
  }
  return true;
}

bool diffDatabases(const Database& base, const Database& target, SchemaChanges schema,
                   Difference& out, Error& error) {
  out = {};
  for (std::size_t t = 0; t < target.tableCount(); ++t) {
    const Table& to = target.table(t);
    const Table* from = base.findTable(to.name());
    if (!from) {
      out.tables.push_back(addedTable(target, to));
      continue;
    }
    if (!onlyAppendedColumns(*from, to)) {
      if (schema == SchemaChanges::kRefuse) {
        error = Error{engine::kFunctionFailed,
                      "table " + engine::toUtf8(to.name()) +
                          ": its columns changed other than by new non-key columns at the end, "
                          "which a transform cannot carry"};
        return false;
      }
      out.tables.push_back(droppedTable(*from));
      out.tables.push_back(addedTable(target, to));
      continue;
    }
    TableEdit edit;
    if (!changedTable(base, *from, target, to, edit, error))
      return false;
    if (!edit.rows.empty() || edit.addedColumns > 0)
      out.tables.push_back(std::move(edit));
  }
  for (std::size_t t = 0; t < base.tableCount(); ++t) {
    if (!target.findTable(base.table(t).name()))
      out.tables.push_back(droppedTable(base.table(t)));
  }
  return diffStreams(base, target, out, error);
}

}  // namespace odlex::transform
