// CREATE TABLE, DROP TABLE and ALTER TABLE: statements that change the tables themselves.
//
// Temporary data: a table whose key columns are all TEMPORARY is a temporary table (all of
// its columns become temporary) and is never saved; a column added to a temporary table is
// temporary too. HOLD (on CREATE, ADD or alone) counts up a table's holds, FREE counts them
// down; releasing the last hold drops a temporary table, and removes the temporary columns of
// any other.

#include <algorithm>
#include <set>
#include <string>

#include "msi/engine/Column.h"
#include "msi/query/Change.h"
#include "msi/query/Diagnostics.h"

namespace odlex::query {
namespace {

namespace type = engine::column_type;

// The database's refusal of a table or column, as the result code of an execute.
bool refused(engine::Error& error) {
  if (error.code == engine::kInvalidParameter)
    error.code = engine::kFunctionFailed;
  return false;
}

bool writable(const engine::Database& database, engine::Error& error) {
  return !database.readOnly() ||
         failWith(error, engine::kFunctionFailed, "the database is open read-only");
}

engine::Table* existingTable(engine::Database& database, const std::u16string& name,
                             engine::Error& error) {
  engine::Table* table = database.findTable(name);
  if (!table)
    failWith(error, engine::kInvalidTable, "unknown table " + quoteText(name));
  return table;
}

bool requireTable(engine::Database& database, const TableName& name, engine::Error& error) {
  return database.findTable(name.name) != nullptr ||
         fail(error, engine::kInvalidTable, name.position, "unknown table " + quoteText(name.name));
}

class Create : public Change {
 public:
  bool bind(engine::Database&, const CreateStatement& statement, engine::Error& error) {
    name_ = statement.table.name;
    hold_ = statement.hold;
    std::set<std::u16string> declared;
    for (const ColumnDefinition& column : statement.columns) {
      if (!declared.insert(column.name.column).second) {
        return fail(error, engine::kBadQuerySyntax, column.name.position,
                    "column " + quoteText(column.name.column) + " is declared twice");
      }
    }
    std::set<std::u16string> keys;
    for (const ColumnName& key : statement.primaryKey) {
      auto definition = std::ranges::find_if(statement.columns, [&](const ColumnDefinition& c) {
        return c.name.column == key.column;
      });
      if (!key.table.empty() || definition == statement.columns.end()) {
        return fail(error, engine::kBadQuerySyntax, key.position,
                    "PRIMARY KEY names " + quoteText(key.column) + ", which is not a column");
      }
      if (!keys.insert(key.column).second) {
        return fail(error, engine::kBadQuerySyntax, key.position,
                    "PRIMARY KEY names " + quoteText(key.column) + " twice");
      }
      columns_.push_back({key.column, static_cast<std::uint16_t>(definition->type | type::kKey)});
    }
    for (const ColumnDefinition& column : statement.columns) {
      if (!keys.contains(column.name.column))
        columns_.push_back({column.name.column, column.type});
    }
    const bool temporaryKeys =
        std::all_of(columns_.begin(), columns_.begin() + static_cast<std::ptrdiff_t>(keys.size()),
                    [](const engine::Column& c) { return c.temporary(); });
    if (temporaryKeys) {
      for (engine::Column& column : columns_)
        column.type |= type::kTemporary;
    }
    return true;
  }

  bool run(engine::Database& database, std::span<const Field>, engine::Error& error) override {
    if (!writable(database, error))
      return false;
    engine::Table* table = database.createTable(name_, columns_, error);
    if (!table)
      return refused(error);
    if (hold_)
      table->hold();
    return true;
  }

 private:
  std::u16string name_;
  std::vector<engine::Column> columns_;  // keys first, in PRIMARY KEY order
  bool hold_ = false;
};

class Drop : public Change {
 public:
  bool bind(engine::Database& database, const DropStatement& statement, engine::Error& error) {
    name_ = statement.table.name;
    return requireTable(database, statement.table, error);
  }

  bool run(engine::Database& database, std::span<const Field>, engine::Error& error) override {
    return writable(database, error) && existingTable(database, name_, error) &&
           database.dropTable(name_);
  }

 private:
  std::u16string name_;
};

class Alter : public Change {
 public:
  bool bind(engine::Database& database, const AlterStatement& statement, engine::Error& error) {
    kind_ = statement.kind;
    name_ = statement.table.name;
    column_ = {statement.column.name.column, statement.column.type};
    hold_ = statement.column.hold || kind_ == AlterStatement::Kind::kHold;
    return requireTable(database, statement.table, error);
  }

  bool run(engine::Database& database, std::span<const Field>, engine::Error& error) override {
    engine::Table* table = existingTable(database, name_, error);
    if (!table)
      return false;
    if (kind_ == AlterStatement::Kind::kAddColumn && !addColumn(database, *table, error))
      return false;
    if (kind_ == AlterStatement::Kind::kFree)
      return free(database, *table, error);
    if (hold_)
      table->hold();
    return true;
  }

 private:
  bool addColumn(engine::Database& database, engine::Table& table, engine::Error& error) {
    if (!writable(database, error))
      return false;
    engine::Column column = column_;
    if (table.temporary())
      column.type |= type::kTemporary;
    if (!column.nullable() && table.rowCount() > 0) {
      return failWith(error, engine::kFunctionFailed,
                      "column " + quoteText(column.name) + " is NOT NULL, but the rows of table " +
                          quoteText(name_) + " would hold null in it");
    }
    return database.addColumn(table, std::move(column), error) || refused(error);
  }

  bool free(engine::Database& database, engine::Table& table, engine::Error& error) {
    if (!table.release())
      return failWith(error, engine::kFunctionFailed, "table " + quoteText(name_) + " is not held");
    if (table.holdCount() > 0)
      return true;
    if (table.temporary())
      database.dropTable(name_);
    else
      table.removeTemporaryColumns();
    return true;
  }

  AlterStatement::Kind kind_ = AlterStatement::Kind::kHold;
  std::u16string name_;
  engine::Column column_;
  bool hold_ = false;
};

}  // namespace

std::unique_ptr<Change> bindCreate(engine::Database& database, const CreateStatement& statement,
                                   engine::Error& error) {
  return bindAs<Create>(database, statement, error);
}

std::unique_ptr<Change> bindDrop(engine::Database& database, const DropStatement& statement,
                                 engine::Error& error) {
  return bindAs<Drop>(database, statement, error);
}

std::unique_ptr<Change> bindAlter(engine::Database& database, const AlterStatement& statement,
                                  engine::Error& error) {
  return bindAs<Alter>(database, statement, error);
}

}  // namespace odlex::query
