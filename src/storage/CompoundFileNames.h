#pragma once
// How the compound file directory orders and compares the names of siblings.

#include <string_view>

namespace odlex::storage::cfb {

// The upper-case form of one UTF-16 unit used to order and compare entry names: the simple
// (one unit to one unit) mapping for the cased scripts of the Basic Multilingual Plane.
char16_t upcaseUnit(char16_t unit);

// Orders sibling names as readers expect: shorter names first, then unit by unit on the
// upper-cased units. Returns <0, 0 or >0. Names equal under this order may not be siblings.
int compareEntryNames(std::u16string_view a, std::u16string_view b);

}  // namespace odlex::storage::cfb
