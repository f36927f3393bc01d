#pragma once
// A column of an installer table, described by the type word the database keeps in
// _Columns.Type.

#include <cstdint>
#include <string>

namespace odlex::engine {

namespace column_type {
constexpr std::uint16_t kSizeMask = 0x00FF;  // string length limit or integer byte size
constexpr std::uint16_t kValid = 0x0100;
constexpr std::uint16_t kLocalizable = 0x0200;
constexpr std::uint16_t kShortOrChar = 0x0400;  // set for 16-bit integers and for text
constexpr std::uint16_t kString = 0x0800;       // text and binary (stream) columns
constexpr std::uint16_t kNullable = 0x1000;
constexpr std::uint16_t kKey = 0x2000;
constexpr std::uint16_t kTemporary = 0x4000;

// Common complete words (without kNullable / kKey).
constexpr std::uint16_t kInteger16 = kValid | kShortOrChar | 2;   // "i2"
constexpr std::uint16_t kInteger32 = kValid | 4;                  // "i4"
constexpr std::uint16_t kText = kValid | kShortOrChar | kString;  // "s<n>" with the length added
constexpr std::uint16_t kBinary = kValid | kString;               // "v0": data in a stream
}  // namespace column_type

struct Column {
  std::u16string name;
  std::uint16_t type = column_type::kText;

  bool isBinary() const {
    return (type & ~(column_type::kNullable | column_type::kKey | column_type::kTemporary)) ==
           column_type::kBinary;
  }
  bool isString() const { return (type & column_type::kString) != 0 && !isBinary(); }
  bool isInteger() const { return (type & column_type::kString) == 0; }
  // 2 or 4 for integer columns.
  unsigned integerSize() const { return (type & column_type::kSizeMask) == 4 ? 4 : 2; }
  // Whether an integer column can hold `value` as a number: -32767..32767 for 16-bit columns,
  // every value but INT32_MIN for 32-bit ones. The lowest value of each size is how the file
  // marks null, so storing it would read back as null.
  bool holdsInteger(std::int64_t value) const {
    const std::int64_t limit = integerSize() == 2 ? INT16_MAX : INT32_MAX;
    return value >= -limit && value <= limit;
  }
  // Maximum text length; 0 means unlimited.
  unsigned maxLength() const { return type & column_type::kSizeMask; }
  bool nullable() const { return (type & column_type::kNullable) != 0; }
  bool key() const { return (type & column_type::kKey) != 0; }
  bool localizable() const { return (type & column_type::kLocalizable) != 0; }
  bool temporary() const { return (type & column_type::kTemporary) != 0; }
};

}  // namespace odlex::engine
