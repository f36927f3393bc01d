#pragma once
// One table of the database as held in memory: its columns and its rows. A row is a run of
// 32-bit cells, one per column:
//   text columns    - the StringPool id (0 = null);
//   integer columns - the value as int32, kNullInteger (0x80000000) = null;
//   binary columns  - 0 = null, 1 = the row has a stream, named by streamName().
// Rows are kept in insertion order in memory and written in primary-key order.
//
// Every change to the columns or cells gives the table a new version, unique among all tables of
// the process, so that a reader can tell whether what it read is still what the table holds.
//
// Temporary data lives in memory only and is never written: temporary columns, rows marked
// temporary, and temporary tables (every column temporary). A table's hold count keeps its
// temporary columns alive; releasing the last hold drops them.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Column.h"

namespace odlex::engine {

class StringPool;

constexpr std::int32_t kNullInteger = INT32_MIN;

class Table {
 public:
  // Which table, and how many changes it had seen; equal versions mean equal contents.
  struct Version {
    std::uint64_t table = 0;
    std::uint64_t changes = 0;
    friend bool operator==(const Version&, const Version&) = default;
  };

  Table(std::u16string name, std::vector<Column> columns);

  Version version() const { return {identity_.value, changes_}; }

  const std::u16string& name() const { return name_; }
  const std::vector<Column>& columns() const { return columns_; }
  std::size_t columnCount() const { return columns_.size(); }
  // Number of leading key columns (at least 1 for a valid table).
  std::size_t keyCount() const { return keyCount_; }
  // Index of the column called `name`, or -1.
  int columnIndex(std::u16string_view name) const;
  // Whether the table lives in memory only: all of its columns are temporary.
  bool temporary() const;

  // Appends a column (never a key); every row gets a null cell in it.
  void addColumn(Column column);
  // Removes the temporary columns and their cells. REQUIRES: the table is not temporary().
  void removeTemporaryColumns();

  std::uint32_t holdCount() const { return holdCount_; }
  void hold() { ++holdCount_; }
  // Releases one hold; false when the table is not held.
  bool release();

  std::size_t rowCount() const { return columns_.empty() ? 0 : cells_.size() / columns_.size(); }
  std::span<const std::uint32_t> row(std::size_t index) const {
    return {cells_.data() + index * columns_.size(), columns_.size()};
  }
  std::span<std::uint32_t> row(std::size_t index) {
    ++changes_;
    return {cells_.data() + index * columns_.size(), columns_.size()};
  }
  std::uint32_t cell(std::size_t row, std::size_t column) const {
    return cells_[row * columns_.size() + column];
  }
  void setCell(std::size_t row, std::size_t column, std::uint32_t value) {
    ++changes_;
    cells_[row * columns_.size() + column] = value;
  }

  // Typed reads of one cell.
  bool isNull(std::size_t row, std::size_t column) const;
  std::int32_t integer(std::size_t row, std::size_t column) const {
    return static_cast<std::int32_t>(cell(row, column));
  }
  std::u16string_view text(const StringPool& pool, std::size_t row, std::size_t column) const;

  // Appends a row of nulls and returns its index.
  std::size_t addRow();
  // Appends a complete row of cells (columnCount() of them).
  void appendRow(std::span<const std::uint32_t> cells);
  void removeRow(std::size_t index);
  // Removes the rows at `indexes` (ascending, no repeats), keeping the order of the rest.
  void removeRows(std::span<const std::uint32_t> indexes);
  void clearRows() {
    ++changes_;
    cells_.clear();
    temporaryRows_.clear();
  }
  // Replaces every row with `cells` (columnCount() a row), none of them temporary.
  void assignRows(std::vector<std::uint32_t> cells) {
    ++changes_;
    cells_ = std::move(cells);
    temporaryRows_.clear();
  }
  // Makes the table `rows` rows long; new rows are all zero cells, to be filled in.
  void resizeRows(std::size_t rows);

  // Marks a row as living in memory only; it is left out when the table is written.
  void markTemporary(std::size_t row);
  bool temporaryRow(std::size_t row) const {
    return row < temporaryRows_.size() && temporaryRows_[row] != 0;
  }
  void reserveRows(std::size_t rows) { cells_.reserve(rows * columns_.size()); }

  // Index of the row whose key cells equal `key` (keyCount() cells), or -1. Linear: the
  // table-object layer keeps its own indexes for repeated lookups.
  std::ptrdiff_t findRow(std::span<const std::uint32_t> key) const;
  // Row indexes in key order as the installer orders rows on disk: raw cell values, text by
  // string id, integers by value with null first. The rows stay where they are.
  std::vector<std::size_t> keyOrder() const;
  // The rows that are written, in key order: all but the temporary ones.
  std::vector<std::size_t> savedOrder() const;

  // The name of the stream that holds the binary cell of `row`: the table name and the key
  // values joined with '.', integers in decimal.
  std::u16string streamName(const StringPool& pool, std::size_t row) const;

 private:
  std::u16string name_;
  std::vector<Column> columns_;
  std::size_t keyCount_ = 0;
  std::vector<std::uint32_t> cells_;
  // One flag a row once any row is temporary; empty while none is.
  std::vector<std::uint8_t> temporaryRows_;
  std::uint32_t holdCount_ = 0;
  // A number no other table has, copies included.
  struct Identity {
    std::uint64_t value = next();
    Identity() = default;
    Identity(const Identity&) : value(next()) {}
    Identity& operator=(const Identity&) {
      value = next();
      return *this;
    }
    static std::uint64_t next();
  };
  Identity identity_;
  std::uint64_t changes_ = 0;
};

}  // namespace odlex::engine
