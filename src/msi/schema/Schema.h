#pragma once
// The schema catalog: the shape of every table the library knows (the installer's standard
// tables, the tables the database keeps about itself and the product's own tables), built at
// compile time from StandardTables.def. Creating a table takes its columns from here.

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Database.h"
#include "msi/engine/Result.h"

namespace odlex::schema {

// What a table is, beyond its columns.
enum TableFlag : std::uint32_t {
  kSystem = 1,           // kept by the database itself; never made with createTable
  kTemporary = 2,        // exists only while the database is open
  kMergeModuleOnly = 4,  // belongs in merge modules only
  kPcpOnly = 8,          // belongs in patch-creation files only
};

// In the catalog data: an integer column without a lower or upper bound.
inline constexpr std::int32_t kNoLimit = std::numeric_limits<std::int32_t>::min();

struct ColumnSchema {
  std::u16string_view name;
  std::u16string_view accessor;  // row access is Get<accessor> / Set<accessor>
  std::uint16_t type = 0;        // engine column type bits, kKey set on key columns
  std::u16string_view keyTable;  // tables the value refers to, ';'-separated; empty: none
  std::int16_t keyColumn = 0;    // 1-based column of keyTable referred to; 0: none
  std::u16string_view category;  // validation category ("Identifier", "Formatted", ...)
  std::u16string_view set;       // allowed values, ';'-separated; empty: any
  std::optional<std::int32_t> minValue;
  std::optional<std::int32_t> maxValue;
  std::u16string_view description;

  bool key() const { return (type & engine::column_type::kKey) != 0; }
  engine::Column engineColumn() const { return engine::Column{std::u16string(name), type}; }
};

struct TableSchema {
  std::u16string_view name;
  std::span<const ColumnSchema> columns;
  std::uint16_t sinceSchema = 0;  // first installer schema version that has the table
  std::uint32_t flags = 0;        // TableFlag bits

  bool system() const { return (flags & kSystem) != 0; }
  bool temporary() const { return (flags & kTemporary) != 0; }
  bool mergeModuleOnly() const { return (flags & kMergeModuleOnly) != 0; }
  bool pcpOnly() const { return (flags & kPcpOnly) != 0; }
  // The column called `name`, or null.
  const ColumnSchema* findColumn(std::u16string_view name) const;
};

// Every table of the catalog, in the order of StandardTables.def.
std::span<const TableSchema> allTables();
// The table called `name` (exact case), or null.
const TableSchema* findTable(std::u16string_view name);

// The table's columns as the engine takes them in createTable.
std::vector<engine::Column> engineColumns(const TableSchema& table);

// Adds the empty table `name` to the database with the catalog's columns. kInvalidTable for a
// name the catalog does not know or for a system table, kAlreadyExists when the database
// already has the table; otherwise the engine's result.
std::uint32_t createTable(engine::Database& db, std::u16string_view name, engine::Error& error);

}  // namespace odlex::schema
