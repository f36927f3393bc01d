#pragma once
// Column type words as table text files and the schema catalog write them ("s72", "L0",
// "I2", "i4", "v0"): a letter (s text, l localizable text, i integer, v binary; upper case
// when the column is nullable) and a size (text length limit 0-255 with 0 for none, 2 or 4
// for integers, 0 for binary), and the column type bits they stand for. Usable at compile
// time, so the schema catalog checks its words while it is built.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "msi/engine/Column.h"

namespace odlex::engine {

// The type bits of `word` (without the key bit), or nothing when it is not a type word. The
// size is decimal without leading zeros.
constexpr std::optional<std::uint16_t> parseTypeWord(std::string_view word) {
  namespace ct = column_type;
  if (word.size() < 2 || word.size() > 4 || (word.size() > 2 && word[1] == '0')) {
    return std::nullopt;
  }
  unsigned size = 0;
  for (char digit : word.substr(1)) {
    if (digit < '0' || digit > '9')
      return std::nullopt;
    size = size * 10 + static_cast<unsigned>(digit - '0');
  }
  const char letter = word[0];
  const bool nullable = letter >= 'A' && letter <= 'Z';
  std::uint16_t type = 0;
  switch (nullable ? static_cast<char>(letter - 'A' + 'a') : letter) {
    case 's':
    case 'l':
      if (size > 255)
        return std::nullopt;
      type = static_cast<std::uint16_t>(ct::kText | size);
      if (letter == 'l' || letter == 'L')
        type |= ct::kLocalizable;
      break;
    case 'i':
      if (size != 2 && size != 4)
        return std::nullopt;
      type = size == 2 ? ct::kInteger16 : ct::kInteger32;
      break;
    case 'v':
      if (size != 0)
        return std::nullopt;
      type = ct::kBinary;
      break;
    default:
      return std::nullopt;
  }
  if (nullable)
    type |= ct::kNullable;
  return type;
}

// The type word of a column type (the key and temporary bits are not part of it).
std::string typeWord(std::uint16_t type);

}  // namespace odlex::engine
