#include "msi/engine/TableCodec.h"

#include <algorithm>

#include "msi/engine/ByteIo.h"
#include "msi/engine/Text.h"

namespace odlex::engine {

namespace {
unsigned storedWidth(const Column& column, unsigned referenceSize) {
  if (column.temporary())
    return 0;
  if (column.isBinary())
    return 2;
  if (column.isString())
    return referenceSize;
  return column.integerSize();
}
}  // namespace

std::size_t storedRowSize(const std::vector<Column>& columns, unsigned referenceSize) {
  std::size_t size = 0;
  for (const Column& column : columns)
    size += storedWidth(column, referenceSize);
  return size;
}

bool decodeTable(const std::vector<std::uint8_t>& stream, Table& table, unsigned referenceSize,
                 std::uint32_t poolSize, std::string& error) {
  const std::size_t rowSize = storedRowSize(table.columns(), referenceSize);
  const std::string where = "table " + toUtf8(table.name());
  if (stream.size() % rowSize != 0) {
    error = where + ": stream of " + std::to_string(stream.size()) +
            " bytes is not a whole number of " + std::to_string(rowSize) + "-byte rows";
    return false;
  }
  const std::size_t rows = stream.size() / rowSize;
  table.resizeRows(rows);
  const std::uint8_t* p = stream.data();
  for (std::size_t c = 0; c < table.columnCount(); ++c) {
    const Column& column = table.columns()[c];
    const unsigned width = storedWidth(column, referenceSize);
    for (std::size_t r = 0; r < rows; ++r, p += width) {
      std::uint32_t value;
      if (column.isInteger()) {
        std::uint32_t raw = width == 2 ? readLe16(p) : readLe32(p);
        if (raw == 0) {
          value = 0x80000000u;
        } else if (width == 2) {
          value = static_cast<std::uint32_t>(static_cast<std::int32_t>(raw) - 0x8000);
        } else {
          value = raw ^ 0x80000000u;
        }
      } else if (column.isBinary()) {
        value = readLe16(p);
      } else {
        value = width == 2 ? readLe16(p) : readLe24(p);
        if (value >= poolSize) {
          error = where + ", row " + std::to_string(r + 1) + ", column " + toUtf8(column.name) +
                  ": string reference " + std::to_string(value) + " is beyond the string pool (" +
                  std::to_string(poolSize) + " ids)";
          return false;
        }
      }
      table.setCell(r, c, value);
    }
  }
  return true;
}

void encodeTable(const Table& table, std::span<const std::size_t> order, unsigned referenceSize,
                 const std::vector<std::uint32_t>& remap, std::vector<std::uint8_t>& out) {
  out.clear();
  out.reserve(order.size() * storedRowSize(table.columns(), referenceSize));
  for (std::size_t c = 0; c < table.columnCount(); ++c) {
    const Column& column = table.columns()[c];
    const unsigned width = storedWidth(column, referenceSize);
    if (width == 0)
      continue;
    for (std::size_t r : order) {
      std::uint32_t value = table.cell(r, c);
      if (column.isInteger()) {
        auto v = static_cast<std::int32_t>(value);
        if (v == kNullInteger) {
          value = 0;
        } else if (width == 2) {
          value = static_cast<std::uint32_t>(v + 0x8000) & 0xFFFF;
        } else {
          value ^= 0x80000000u;
        }
      } else if (column.isString()) {
        value = value < remap.size() ? remap[value] : 0;
      } else {
        value = std::min<std::uint32_t>(value, 0xFFFF);  // 0 stays null
      }
      appendLe(out, value, width);
    }
  }
}

}  // namespace odlex::engine
