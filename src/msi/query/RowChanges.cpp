// INSERT, UPDATE and DELETE: statements that change the rows of one table.

#include <algorithm>
#include <string>

#include "msi/query/Binder.h"
#include "msi/query/Change.h"
#include "msi/query/Diagnostics.h"
#include "msi/query/Executor.h"
#include "msi/query/StoredValue.h"

namespace odlex::query {
namespace {

// The key of a row as text, for messages: its key values joined with '.'.
std::string keyText(const engine::Database& database, const engine::Table& table, std::size_t row) {
  const std::u16string name = table.streamName(database.strings(), row);
  return quoteText(std::u16string_view(name).substr(table.name().size() + 1));
}

// Removes the streams of the binary cells of `rows` in `column` (every binary column when
// `column` is negative).
void removeStreams(engine::Database& database, const engine::Table& table,
                   std::span<const std::uint32_t> rows, int column = -1) {
  for (std::size_t c = 0; c < table.columnCount(); ++c) {
    if (!table.columns()[c].isBinary() || (column >= 0 && static_cast<int>(c) != column))
      continue;
    for (std::uint32_t row : rows) {
      if (table.cell(row, c) != 0)
        database.removeStream(table.streamName(database.strings(), row));
    }
  }
}

// A change to the rows of one table that a WHERE condition may pick.
class RowChange : public Change {
 public:
  std::uint32_t parameterCount() const override { return parameterCount_; }

 protected:
  bool bindTable(engine::Database& database, const TableName& name, engine::Error& error) {
    engine::Table* table = changeableTable(database, name, error);
    if (!table)
      return false;
    tableName_ = name.name;
    columns_ = table->columns();
    return true;
  }

  bool bindWhere(engine::Database& database, const TableName& name,
                 const std::optional<Condition>& where, std::uint32_t parameterCount,
                 engine::Error& error) {
    parameterCount_ = parameterCount;
    SelectStatement select;
    select.allColumns = true;
    select.tables.push_back(name);
    select.where = where;
    select.parameterCount = parameterCount;
    return bindStatement(database, select, plan_, error);
  }

  engine::Table* table(engine::Database& database, engine::Error& error) const {
    return tableAtExecute(database, tableName_, columns_, error);
  }

  bool pickRows(engine::Database& database, std::span<const Field> parameters,
                std::vector<std::uint32_t>& rows, engine::Error& error) {
    return findRows(database, plan_, parameters, rows, error);
  }

  std::uint32_t parameterCount_ = 0;
  std::u16string tableName_;
  std::vector<engine::Column> columns_;
  Plan plan_;
};

class Insert : public RowChange {
 public:
  bool bind(engine::Database& database, const InsertStatement& statement, engine::Error& error) {
    parameterCount_ = statement.parameterCount;
    temporary_ = statement.temporary;
    if (!bindTable(database, statement.table, error))
      return false;
    const engine::Table& table = *database.findTable(tableName_);
    for (std::size_t i = 0; i < statement.columns.size(); ++i) {
      if (!bindStoredValue(table, statement.columns[i], statement.values[i], values_, error))
        return false;
    }
    return true;
  }

  bool run(engine::Database& database, std::span<const Field> parameters,
           engine::Error& error) override {
    engine::Table* target = table(database, error);
    if (!target)
      return false;
    std::vector<std::uint32_t> cells;
    for (const engine::Column& column : target->columns())
      cells.push_back(column.isInteger() ? static_cast<std::uint32_t>(engine::kNullInteger) : 0);
    std::vector<StoredCell> stored(values_.size());
    for (std::size_t i = 0; i < values_.size(); ++i) {
      if (!storedCell(database, *target, values_[i], parameters, stored[i], error))
        return false;
      cells[values_[i].column] = stored[i].cell;
    }
    for (std::size_t c = 0; c < cells.size(); ++c) {
      const engine::Column& column = target->columns()[c];
      const bool given = std::ranges::any_of(
          values_, [c](const StoredValue& stored) { return stored.column == c; });
      if (!given && !column.nullable()) {
        return failWith(error, engine::kFunctionFailed,
                        "column " + quoteText(column.name) + " of table " + quoteText(tableName_) +
                            " is NOT NULL and needs a value");
      }
    }
    const std::ptrdiff_t existing = target->findRow({cells.data(), target->keyCount()});
    if (existing >= 0) {
      return failWith(error, engine::kFunctionFailed,
                      "table " + quoteText(tableName_) + " already has a row with key " +
                          keyText(database, *target, static_cast<std::size_t>(existing)));
    }
    target->appendRow(cells);
    const std::size_t row = target->rowCount() - 1;
    if (temporary_)
      target->markTemporary(row);
    for (StoredCell& cell : stored) {
      if (cell.data)
        database.setStream(target->streamName(database.strings(), row), std::move(*cell.data));
    }
    return true;
  }

 private:
  std::vector<StoredValue> values_;
  bool temporary_ = false;
};

class Update : public RowChange {
 public:
  bool bind(engine::Database& database, const UpdateStatement& statement, engine::Error& error) {
    if (!bindTable(database, statement.table, error))
      return false;
    const engine::Table& table = *database.findTable(tableName_);
    for (const Assignment& assignment : statement.assignments) {
      if (!bindStoredValue(table, assignment.column, assignment.value, values_, error))
        return false;
      if (table.columns()[values_.back().column].key()) {
        return fail(error, engine::kFunctionFailed, assignment.column.position,
                    "UPDATE cannot change key column " + quoteText(assignment.column.column));
      }
    }
    return bindWhere(database, statement.table, statement.where, statement.parameterCount, error);
  }

  bool run(engine::Database& database, std::span<const Field> parameters,
           engine::Error& error) override {
    engine::Table* target = table(database, error);
    if (!target)
      return false;
    std::vector<StoredCell> stored(values_.size());
    for (std::size_t i = 0; i < values_.size(); ++i) {
      if (!storedCell(database, *target, values_[i], parameters, stored[i], error))
        return false;
    }
    std::vector<std::uint32_t> rows;
    if (!pickRows(database, parameters, rows, error))
      return false;
    for (std::size_t i = 0; i < values_.size(); ++i) {
      const std::uint32_t column = values_[i].column;
      if (target->columns()[column].isBinary())
        removeStreams(database, *target, rows, static_cast<int>(column));
      for (std::uint32_t row : rows) {
        target->setCell(row, column, stored[i].cell);
        if (stored[i].data)
          database.setStream(target->streamName(database.strings(), row), *stored[i].data);
      }
    }
    return true;
  }

 private:
  std::vector<StoredValue> values_;
};

class Delete : public RowChange {
 public:
  bool bind(engine::Database& database, const DeleteStatement& statement, engine::Error& error) {
    return bindTable(database, statement.table, error) &&
           bindWhere(database, statement.table, statement.where, statement.parameterCount, error);
  }

  bool run(engine::Database& database, std::span<const Field> parameters,
           engine::Error& error) override {
    engine::Table* target = table(database, error);
    std::vector<std::uint32_t> rows;
    if (!target || !pickRows(database, parameters, rows, error))
      return false;
    removeStreams(database, *target, rows);
    target->removeRows(rows);
    return true;
  }
};

}  // namespace

std::unique_ptr<Change> bindInsert(engine::Database& database, const InsertStatement& statement,
                                   engine::Error& error) {
  return bindAs<Insert>(database, statement, error);
}

std::unique_ptr<Change> bindUpdate(engine::Database& database, const UpdateStatement& statement,
                                   engine::Error& error) {
  return bindAs<Update>(database, statement, error);
}

std::unique_ptr<Change> bindDelete(engine::Database& database, const DeleteStatement& statement,
                                   engine::Error& error) {
  return bindAs<Delete>(database, statement, error);
}

}  // namespace odlex::query
