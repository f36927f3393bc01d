#pragma once
// Little-endian fields of an OLE property set: reads that fail instead of running past the
// end of the bytes, and appends/overwrites for building one.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace odlex::storage {

// The `width`-byte little-endian value at `offset`, or empty when it does not fit in `bytes`.
inline std::optional<std::uint64_t> readLittleEndian(std::span<const std::uint8_t> bytes,
                                                     std::size_t offset, std::size_t width) {
  if (offset > bytes.size() || bytes.size() - offset < width)
    return std::nullopt;
  std::uint64_t value = 0;
  for (std::size_t i = width; i-- > 0;)
    value = (value << 8) | bytes[offset + i];
  return value;
}

inline std::optional<std::uint16_t> readU16(std::span<const std::uint8_t> bytes,
                                            std::size_t offset) {
  const auto value = readLittleEndian(bytes, offset, 2);
  return value ? std::optional<std::uint16_t>(static_cast<std::uint16_t>(*value)) : std::nullopt;
}

inline std::optional<std::uint32_t> readU32(std::span<const std::uint8_t> bytes,
                                            std::size_t offset) {
  const auto value = readLittleEndian(bytes, offset, 4);
  return value ? std::optional<std::uint32_t>(static_cast<std::uint32_t>(*value)) : std::nullopt;
}

inline void appendLittleEndian(std::vector<std::uint8_t>& out, std::uint64_t value,
                               std::size_t width) {
  for (std::size_t i = 0; i < width; ++i)
    out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

inline void writeU32At(std::vector<std::uint8_t>& out, std::size_t offset, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i)
    out[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

}  // namespace odlex::storage
