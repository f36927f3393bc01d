#pragma once
// The difference of two databases, table by table and row by row, as a transform carries it
// and as a comparison of two packages shows it. Rows are matched by their primary key; cells
// are compared by value (text by its characters, not by string id, since the two databases
// have pools of their own), binary cells by the contents of their streams, read in bounded
// pieces so that a cabinet is never held in memory.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Result.h"
#include "storage/CompoundFile.h"

namespace odlex::engine {
class Database;
class Table;
}  // namespace odlex::engine

namespace odlex::transform {

// One cell's value, independent of any string pool.
struct Value {
  enum Kind : std::uint8_t { kNull, kInteger, kText, kStream } kind = kNull;
  std::int32_t integer = 0;
  std::u16string text;
  std::shared_ptr<const storage::StreamSource> stream;  // kStream: the cell's data

  static Value ofInteger(std::int32_t value);
  static Value ofText(std::u16string text);  // the empty text is null
  // A person's reading: decimal, the text, "[stream of N bytes]", or empty for null.
  std::u16string display() const;
};

// One changed row. Insert: every column present. Update: the key columns and the changed
// columns present. Delete: the key columns present.
struct RowEdit {
  enum Kind : std::uint8_t { kInsert, kUpdate, kDelete } kind = kInsert;
  std::vector<std::optional<Value>> cells;  // one per column of the table after the change
  std::vector<Value> before;                // update and delete: the row as it was, when known
};

struct TableEdit {
  enum State : std::uint8_t { kChanged, kAdded, kDropped } state = kChanged;
  std::u16string name;
  std::vector<engine::Column> columns;  // after the change (kDropped: as it was)
  std::size_t keyCount = 0;
  std::size_t addedColumns = 0;  // kChanged: how many trailing columns are new
  std::vector<RowEdit> rows;
};

// A stream outside every binary cell (a cabinet, say): added, changed or removed.
struct StreamEdit {
  enum Kind : std::uint8_t { kInsert, kUpdate, kDelete } kind = kInsert;
  std::u16string name;
  std::shared_ptr<const storage::StreamSource> data;  // insert and update
};

struct Difference {
  std::vector<TableEdit> tables;  // changed tables in the order of the target, dropped ones last
  std::vector<StreamEdit> streams;
  bool empty() const { return tables.empty() && streams.empty(); }
};

// How tables whose columns changed other than by new trailing non-key columns are treated:
// refused (a transform cannot carry them), or shown as dropped and added again.
enum class SchemaChanges { kRefuse, kReplaceTable };

// The changes that turn `base` into `target`. False with kFunctionFailed when a table's columns
// changed in a way `schema` refuses, or with the read error of a stream.
bool diffDatabases(const engine::Database& base, const engine::Database& target,
                   SchemaChanges schema, Difference& out, engine::Error& error);

// Values of one table row.
Value cellValue(const engine::Database& db, const engine::Table& table, std::size_t row,
                std::size_t column);
// The name of the stream that holds the binary cells of the row with these key values: the
// table name and the keys joined with '.'.
std::u16string streamNameOf(std::u16string_view table, const std::vector<std::optional<Value>>& row,
                            std::size_t keyCount);
// The key cells of a row as one string, each value tagged with its kind: equal strings, equal
// keys. From a table's row, or from the first keyCount values of a changed row.
std::u16string rowKey(const engine::Database& db, const engine::Table& table, std::size_t row);
std::u16string rowKey(const std::vector<std::optional<Value>>& row, std::size_t keyCount);
// The key values joined with tabs, as a transform view shows a row.
std::u16string keyText(const std::vector<std::optional<Value>>& row, std::size_t keyCount);
// Whether two streams hold the same bytes, compared a piece at a time.
bool sameStreamContents(const storage::StreamSource& a, const storage::StreamSource& b, bool& same,
                        engine::Error& error);

}  // namespace odlex::transform
