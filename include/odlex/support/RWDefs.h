#pragma once
// Definitions shared by the string and collection classes.

#include <cstddef>

// "Not found" position returned by every search.
inline constexpr std::size_t RW_NPOS = static_cast<std::size_t>(-1);
