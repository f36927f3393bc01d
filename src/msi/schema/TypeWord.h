#pragma once
// Column type words of the catalog data ("s72", "L0", "I2", "v0", ...) turned into the engine's
// column type bits at compile time, so that a malformed word in StandardTables.def stops the
// build instead of making a broken table.

#include <cstdint>
#include <string_view>

#include "msi/engine/Column.h"

namespace odlex::schema {

consteval std::uint16_t catalogColumnType(std::string_view word, bool key) {
  namespace ct = engine::column_type;
  if (word.size() < 2 || word.size() > 4)
    throw "a type word is a letter and a size";
  unsigned size = 0;
  for (char digit : word.substr(1)) {
    if (digit < '0' || digit > '9')
      throw "the size of a type word is a decimal number";
    size = size * 10 + static_cast<unsigned>(digit - '0');
  }
  if (size > 255)
    throw "text columns hold at most 255 characters";
  const char letter = word[0];
  const bool nullable = letter >= 'A' && letter <= 'Z';
  std::uint16_t type = 0;
  switch (nullable ? static_cast<char>(letter - 'A' + 'a') : letter) {
    case 's':
      type = static_cast<std::uint16_t>(ct::kText | size);
      break;
    case 'l':
      type = static_cast<std::uint16_t>(ct::kText | ct::kLocalizable | size);
      break;
    case 'i':
      if (size != 2 && size != 4)
        throw "integer columns are i2 or i4";
      type = size == 2 ? ct::kInteger16 : ct::kInteger32;
      break;
    case 'v':
      if (size != 0)
        throw "binary columns are v0";
      type = ct::kBinary;
      break;
    default:
      throw "a type word starts with s, l, i or v";
  }
  if (nullable)
    type |= ct::kNullable;
  if (key)
    type |= ct::kKey;
  return type;
}

}  // namespace odlex::schema
