#pragma once
// Little-endian reads and writes of the fixed-width values in installer streams.

#include <cstdint>
#include <vector>

namespace odlex::engine {

inline std::uint16_t readLe16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t readLe24(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0] | (p[1] << 8) | (p[2] << 16));
}
inline std::uint32_t readLe32(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
inline void writeLe32(std::uint8_t* p, std::uint32_t v) {
  for (int i = 0; i < 4; ++i)
    p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline void appendLe(std::vector<std::uint8_t>& out, std::uint32_t v, unsigned bytes) {
  for (unsigned i = 0; i < bytes; ++i)
    out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}
inline void appendLe16(std::vector<std::uint8_t>& out, std::uint16_t v) {
  appendLe(out, v, 2);
}

}  // namespace odlex::engine
