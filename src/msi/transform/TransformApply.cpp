// Applying a decoded transform. The changes are first made on copies of the tables they touch,
// collecting every conflict; only when none is left unsuppressed are the copies put in place, so
// a transform that fails changes nothing.

#include <map>
#include <set>

#include "msi/engine/Database.h"
#include "msi/engine/Text.h"
#include "msi/transform/Transform.h"
#include "storage/MemoryFileSystem.h"

namespace odlex::transform {

using engine::Column;
using engine::Database;
using engine::Error;
using engine::Table;

namespace {

// Whether `wanted` is `existing` with columns appended.
bool extendsColumns(const std::vector<Column>& existing, const std::vector<Column>& wanted) {
  if (wanted.size() < existing.size())
    return false;
  for (std::size_t c = 0; c < existing.size(); ++c) {
    if (existing[c].name != wanted[c].name || existing[c].type != wanted[c].type)
      return false;
  }
  return true;
}

std::unique_ptr<Table> withColumns(const Table& table, const std::vector<Column>& columns) {
  auto result = std::make_unique<Table>(table.name(), columns);
  result->reserveRows(table.rowCount());
  std::vector<std::uint32_t> cells(columns.size());
  for (std::size_t r = 0; r < table.rowCount(); ++r) {
    for (std::size_t c = 0; c < columns.size(); ++c)
      cells[c] = c < table.columnCount()  ? table.cell(r, c)
                 : columns[c].isInteger() ? 0x80000000u
                                          : 0;
    result->appendRow(cells);
  }
  return result;
}

class Applier {
 public:
  Applier(Database& db, std::uint32_t suppress, std::vector<Conflict>& conflicts)
      : db_(db), suppress_(suppress), conflicts_(conflicts) {
    Error error;
    scratch_ = Database::open(scratchFiles_, "scratch", Database::OpenMode::kCreate, error);
  }

  std::uint32_t run(const DecodedTransform& transform, Error& error) {
    if (transform.codePage != 0 && db_.codePage() != 0 && transform.codePage != db_.codePage())
      conflict(kChangeCodePage, "the transform's code page " + std::to_string(transform.codePage) +
                                    " is not the database's " + std::to_string(db_.codePage()));
    for (const TableEdit& edit : transform.changes.tables)
      prepareTable(edit);
    for (const TableEdit& edit : transform.changes.tables) {
      if (edit.state != TableEdit::kDropped && work_.contains(edit.name))
        applyRows(edit);
    }
    for (const StreamEdit& edit : transform.changes.streams)
      applyStream(edit);
    std::size_t failed = 0;
    for (const Conflict& item : conflicts_)
      failed += item.suppressed ? 0 : 1;
    if (failed > 0) {
      error =
          Error{engine::kTransformFailure, std::to_string(failed) +
                                               " change(s) of the transform could not be applied; "
                                               "the database is unchanged"};
      return error.code;
    }
    commit(transform);
    return engine::kSuccess;
  }

 private:
  struct Work {
    std::unique_ptr<Table> table;
    bool created = false;
  };

  void conflict(std::uint32_t condition, std::string text) {
    conflicts_.push_back(Conflict{condition, std::move(text), (suppress_ & condition) != 0});
  }

  void prepareTable(const TableEdit& edit) {
    const std::string name = "table " + engine::toUtf8(edit.name);
    Table* existing = drops_.contains(edit.name) ? nullptr : db_.findTable(edit.name);
    if (edit.state == TableEdit::kDropped) {
      if (existing)
        drops_.insert(edit.name);
      else
        conflict(kDeleteMissingTable, name + " is dropped but does not exist");
      return;
    }
    if (!existing) {
      if (edit.state == TableEdit::kChanged) {
        conflict(0, name + " is changed but does not exist");
        return;
      }
      // The name and columns are checked on a scratch database, so that putting the table in
      // place later cannot fail half-way.
      Error refused;
      if (!scratch_ || !scratch_->createTable(edit.name, edit.columns, refused)) {
        conflict(0, name + " cannot be made: " + refused.text);
        return;
      }
      work_[edit.name] = Work{std::make_unique<Table>(edit.name, edit.columns), true};
      return;
    }
    if (edit.state == TableEdit::kAdded)
      conflict(kAddExistingTable, name + " is added but exists");
    if (!extendsColumns(existing->columns(), edit.columns)) {
      conflict(0, name + ": the transform's columns do not match the table's");
      return;
    }
    work_[edit.name] =
        Work{edit.columns.size() > existing->columnCount() ? withColumns(*existing, edit.columns)
                                                           : std::make_unique<Table>(*existing),
             false};
  }

  std::uint32_t cellOf(const Column& column, const Value& value) {
    if (column.isBinary())
      return value.kind == Value::kStream ? 1 : 0;
    if (column.isString())
      return value.kind == Value::kText ? db_.strings().intern(value.text) : 0;
    return value.kind == Value::kInteger ? static_cast<std::uint32_t>(value.integer) : 0x80000000u;
  }

  // Sets the carried cells of row `r`, noting the streams of binary cells.
  void setCells(Table& table, std::size_t r, const RowEdit& edit) {
    for (std::size_t c = 0; c < table.columnCount() && c < edit.cells.size(); ++c) {
      if (!edit.cells[c])
        continue;
      const Column& column = table.columns()[c];
      const bool hadStream = column.isBinary() && table.cell(r, c) != 0;
      table.setCell(r, c, cellOf(column, *edit.cells[c]));
      if (!column.isBinary())
        continue;
      const std::u16string name = table.streamName(db_.strings(), r);
      if (edit.cells[c]->kind == Value::kStream)
        streamChanges_.emplace_back(name, edit.cells[c]->stream);
      else if (hadStream)
        streamChanges_.emplace_back(name, nullptr);
    }
  }

  void removeStreams(const Table& table, std::size_t r) {
    for (std::size_t c = 0; c < table.columnCount(); ++c) {
      if (table.columns()[c].isBinary() && table.cell(r, c) != 0) {
        streamChanges_.emplace_back(table.streamName(db_.strings(), r), nullptr);
        return;
      }
    }
  }

  void applyRows(const TableEdit& edit) {
    Table& table = *work_[edit.name].table;
    std::map<std::u16string, std::size_t> rows;
    for (std::size_t r = 0; r < table.rowCount(); ++r)
      rows.emplace(rowKey(db_, table, r), r);
    std::vector<bool> removed(table.rowCount(), false);
    for (const RowEdit& row : edit.rows) {
      const std::u16string key = rowKey(row.cells, edit.keyCount);
      const auto found = rows.find(key);
      const std::string where = "table " + engine::toUtf8(edit.name) + ", row " +
                                engine::toUtf8(keyText(row.cells, edit.keyCount));
      switch (row.kind) {
        case RowEdit::kInsert:
          if (found != rows.end()) {
            conflict(kAddExistingRow, where + " is added but exists");
            setCells(table, found->second, row);
          } else {
            const std::size_t r = table.addRow();
            removed.push_back(false);
            setCells(table, r, row);
            rows.emplace(key, r);
          }
          break;
        case RowEdit::kUpdate:
          if (found == rows.end())
            conflict(kUpdateMissingRow, where + " is updated but does not exist");
          else
            setCells(table, found->second, row);
          break;
        case RowEdit::kDelete:
          if (found == rows.end()) {
            conflict(kDeleteMissingRow, where + " is deleted but does not exist");
          } else {
            removeStreams(table, found->second);
            removed[found->second] = true;
            rows.erase(found);
          }
          break;
      }
    }
    for (std::size_t r = table.rowCount(); r-- > 0;) {
      if (removed[r])
        table.removeRow(r);
    }
  }

  void applyStream(const StreamEdit& edit) {
    const std::string where = "stream " + engine::toUtf8(edit.name);
    const bool exists = db_.hasStream(edit.name);
    if (edit.kind == StreamEdit::kInsert && exists)
      conflict(kAddExistingRow, where + " is added but exists");
    if (edit.kind == StreamEdit::kUpdate && !exists) {
      conflict(kUpdateMissingRow, where + " is updated but does not exist");
      return;
    }
    if (edit.kind == StreamEdit::kDelete) {
      if (!exists)
        conflict(kDeleteMissingRow, where + " is deleted but does not exist");
      else
        streamChanges_.emplace_back(edit.name, nullptr);
      return;
    }
    streamChanges_.emplace_back(edit.name, edit.data ? edit.data : storage::memorySource({}));
  }

  void commit(const DecodedTransform& transform) {
    for (const std::u16string& name : drops_)
      db_.dropTable(name);
    for (auto& [name, work] : work_) {
      Table* table = db_.findTable(name);
      if (work.created) {
        Error ignored;  // checked on the scratch database
        table = db_.createTable(name, work.table->columns(), ignored);
      }
      if (table)
        *table = std::move(*work.table);
    }
    for (auto& [name, data] : streamChanges_) {
      if (data)
        db_.setStreamSource(name, std::move(data));
      else
        db_.removeStream(name);
    }
    if (db_.codePage() == 0)
      db_.setCodePage(transform.codePage);
  }

  Database& db_;
  storage::MemoryFileSystem scratchFiles_;
  std::unique_ptr<Database> scratch_;
  std::uint32_t suppress_;
  std::vector<Conflict>& conflicts_;
  std::set<std::u16string> drops_;
  std::map<std::u16string, Work> work_;
  std::vector<std::pair<std::u16string, std::shared_ptr<const storage::StreamSource>>>
      streamChanges_;
};

}  // namespace

std::uint32_t applyTransform(Database& db, const DecodedTransform& transform,
                             std::uint32_t suppress, std::vector<Conflict>& conflicts,
                             Error& error) {
  conflicts.clear();
  Applier applier(db, suppress | transform.errorConditions, conflicts);
  return applier.run(transform, error);
}

}  // namespace odlex::transform
