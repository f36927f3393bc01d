#pragma once
// A table stream on disk: column by column, each column's values for every row, rows in
// primary-key order. Widths: 16-bit integers 2 bytes (value + 0x8000, 0 = null), 32-bit
// integers 4 bytes (value ^ 0x80000000, 0 = null), text a string reference of 2 or 3
// bytes, binary cells 2 bytes. Temporary columns are not stored.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "msi/engine/Table.h"

namespace odlex::engine {

// Bytes one row takes on disk.
std::size_t storedRowSize(const std::vector<Column>& columns, unsigned referenceSize);

// Fills `table` (which has its columns, at least one and none of them temporary, and no rows)
// from `stream`.
// String references must be below `poolSize`.
bool decodeTable(const std::vector<std::uint8_t>& stream, Table& table, unsigned referenceSize,
                 std::uint32_t poolSize, std::string& error);

// Writes the rows of `table` in `order`, string ids translated through `remap`.
void encodeTable(const Table& table, std::span<const std::size_t> order, unsigned referenceSize,
                 const std::vector<std::uint32_t>& remap, std::vector<std::uint8_t>& out);

}  // namespace odlex::engine
