#pragma once
// Column type words of .idt files ("s72", "I2", "L0", "v0", ...) and the column type bits the
// database keeps in _Columns.Type.

#include <cstdint>
#include <string>
#include <string_view>

namespace odlex::idt {

// Parses a type word into column type bits (without the key bit). False for anything but
// s/S/l/L followed by a length 0-255, i/I followed by 2 or 4, and v/V followed by 0.
bool parseTypeWord(std::string_view word, std::uint16_t& type);

// The type word of a column (the key and temporary bits are not part of it).
std::string typeWord(std::uint16_t type);

}  // namespace odlex::idt
