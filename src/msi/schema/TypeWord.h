#pragma once
// Column type words of the catalog data turned into the engine's column type bits at compile
// time, so that a malformed word in StandardTables.def stops the build instead of making a
// broken table.

#include <cstdint>
#include <string_view>

#include "msi/engine/TypeWord.h"

namespace odlex::schema {

consteval std::uint16_t catalogColumnType(std::string_view word, bool key) {
  const auto type = engine::parseTypeWord(word);
  if (!type)
    throw "not a column type word (s/l/i/v, upper case when nullable, and a size)";
  return static_cast<std::uint16_t>(*type | (key ? engine::column_type::kKey : 0));
}

}  // namespace odlex::schema
