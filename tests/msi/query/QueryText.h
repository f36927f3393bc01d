#pragma once
// Text helpers of the query tests: statements written in ASCII, and fields and records shown as
// text.

#include <string>
#include <string_view>

#include <odlex/support/Utf8.h>
#include "msi/query/Field.h"

namespace odlex::query {

inline std::u16string utf16(std::string_view ascii) {
  return std::u16string(ascii.begin(), ascii.end());
}

// "null", the number, the text, or "stream:NAME".
inline std::string show(const Field& field) {
  switch (field.kind) {
    case Field::Kind::kNull:
      return "null";
    case Field::Kind::kInteger:
      return std::to_string(field.integer);
    case Field::Kind::kString:
      return Utf16ToUtf8(field.text);
    case Field::Kind::kStream:
      return "stream:" + Utf16ToUtf8(field.text);
  }
  return "?";
}

// The fields of a record joined with '|'.
inline std::string show(const Record& record) {
  std::string line;
  for (const Field& field : record)
    line += (line.empty() ? "" : "|") + show(field);
  return line;
}

}  // namespace odlex::query
