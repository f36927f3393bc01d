#pragma once
// The values a query takes as parameters and returns as rows.

#include <cstdint>
#include <string>
#include <vector>

namespace odlex::query {

// One value: null, an integer, a string, or a stream (a binary cell, named so that the data
// can be read with Database::readStream). The empty string is the null string.
struct Field {
  enum class Kind { kNull, kInteger, kString, kStream };

  Kind kind = Kind::kNull;
  std::int32_t integer = 0;
  std::u16string text;  // kString: the text; kStream: the stream name

  static Field null() { return {}; }
  static Field ofInteger(std::int32_t value) { return {Kind::kInteger, value, {}}; }
  // An empty text gives a null field.
  static Field ofString(std::u16string value) {
    return value.empty() ? Field{} : Field{Kind::kString, 0, std::move(value)};
  }
  static Field ofStream(std::u16string name) { return {Kind::kStream, 0, std::move(name)}; }

  bool isNull() const { return kind == Kind::kNull; }
  friend bool operator==(const Field&, const Field&) = default;
};

// One row of a result, one field per selected column.
using Record = std::vector<Field>;

}  // namespace odlex::query
