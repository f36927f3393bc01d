#pragma once
// Converting between the engine's cells of one table and the values of row objects, with the
// table's columns matched to the catalog's by name. A column one side lacks reads as null.
// A value the column's type cannot hold (text in an integer column that is not a number)
// also becomes null, so odd packages load without failing.

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "msi/engine/StringPool.h"
#include "msi/engine/Table.h"
#include "msi/schema/Schema.h"
#include "odlex/msi/MSIRecord.h"

namespace odlex::rows {

class ColumnMap {
 public:
  ColumnMap(const schema::TableSchema& schema, const engine::Table& table);

  // The value of catalog column `column` in engine row `row`; a binary cell as a stream field
  // naming the row's stream.
  MSIRecordColumn read(const engine::StringPool& pool, std::size_t row, std::size_t column) const;
  // Fills `cells` (one per engine column) with the engine cells of a row with these catalog
  // values; `hasBinary(column)` says whether a binary catalog column holds data.
  void write(engine::StringPool& pool, const std::vector<MSIRecordColumn>& values,
             const std::function<bool(std::size_t)>& hasBinary,
             std::span<std::uint32_t> cells) const;

  // Fills `cells` with what write gives for the values read from engine row `row` when they
  // are unchanged, taken from the row's own cells: its text needs no lookup in the pool.
  void writeUnchanged(const engine::StringPool& pool, std::size_t row,
                      std::span<std::uint32_t> cells) const;

  // The engine rows in the order of the keys of the row objects read from them, equal keys in
  // row order: null first, integers by value, text by UTF-16 code units. Empty when a key
  // column is binary, whose value (the stream name) only the row objects spell out.
  std::vector<std::size_t> keyOrder(const engine::StringPool& pool) const;

 private:
  const engine::Table& table_;
  std::vector<int> keyIndex_;      // by catalog key column: engine column, or -1
  std::vector<int> engineIndex_;   // by catalog column: engine column, or -1
  std::vector<int> catalogIndex_;  // by engine column: catalog column, or -1
};

}  // namespace odlex::rows
