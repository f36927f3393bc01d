#pragma once
// Cells of a transform record: the widths and encodings of a package's table streams (16-bit
// integers biased by 0x8000, 32-bit ones with the sign bit flipped, 0 meaning null; string
// references of 2 or 3 bytes; binary cells 2 bytes, non-zero when the row has a stream).

#include <cstdint>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Table.h"

namespace odlex::transform {

constexpr std::uint16_t kInsertMask = 1;
constexpr std::size_t kMaskColumns = 16;  // columns an update mask can name

// The catalog and stream pseudo-tables of a transform.
constexpr char16_t kTablesName[] = u"_Tables";
constexpr char16_t kColumnsName[] = u"_Columns";
constexpr char16_t kStreamsName[] = u"_Streams";
constexpr char16_t kSummaryStreamName[] = u"\u0005SummaryInformation";

inline unsigned cellWidth(const engine::Column& column, unsigned referenceSize) {
  if (column.isBinary())
    return 2;
  return column.isString() ? referenceSize : column.integerSize();
}

inline std::uint32_t encodeInteger(const engine::Column& column, std::int32_t value, bool isNull) {
  if (isNull)
    return 0;
  return column.integerSize() == 2 ? static_cast<std::uint32_t>(value + 0x8000) & 0xFFFF
                                   : static_cast<std::uint32_t>(value) ^ 0x80000000u;
}

// The integer a raw cell holds; false for null.
inline bool decodeInteger(const engine::Column& column, std::uint32_t raw, std::int32_t& value) {
  if (raw == 0)
    return false;
  value = column.integerSize() == 2 ? static_cast<std::int32_t>(raw) - 0x8000
                                    : static_cast<std::int32_t>(raw ^ 0x80000000u);
  return true;
}

}  // namespace odlex::transform
