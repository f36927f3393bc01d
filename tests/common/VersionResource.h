#pragma once
// VS_VERSIONINFO resources made in a test: blocks of a length, a value length, a type, a UTF-16
// key and a value, aligned to 4 bytes, as a Windows module's version resource holds them.

#include <cstdint>
#include <string>
#include <vector>

namespace odlex::test {

inline std::string versionBlock(const std::string& key, const std::string& value,
                                const std::string& children = {}) {
  auto pad = [](std::string& bytes) { bytes.resize((bytes.size() + 3) & ~std::size_t{3}, '\0'); };
  std::string block(6, '\0');
  for (const char c : key)
    block += std::string{c, '\0'};
  block += std::string(2, '\0');
  pad(block);
  block += value;
  pad(block);
  block += children;
  block[0] = static_cast<char>(block.size() & 0xFF);
  block[1] = static_cast<char>(block.size() >> 8);
  block[2] = static_cast<char>(value.size() & 0xFF);
  block[3] = static_cast<char>(value.size() >> 8);
  pad(block);
  return block;
}

inline std::string littleEndian32(std::uint32_t value) {
  return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF),
          static_cast<char>(value >> 16 & 0xFF), static_cast<char>(value >> 24)};
}

// A version resource of the file version `high`.`low` (each two 16-bit parts) whose translation
// table lists `translations` (language in the low half, code page in the high half); without a
// VarFileInfo block when there are none.
inline std::string versionResource(std::uint32_t high, std::uint32_t low,
                                   const std::vector<std::uint32_t>& translations) {
  std::string fixed = littleEndian32(0xFEEF04BD) + littleEndian32(0x10000) + littleEndian32(high) +
                      littleEndian32(low) + std::string(36, '\0');
  std::string table;
  for (const std::uint32_t translation : translations)
    table += littleEndian32(translation);
  const std::string var = translations.empty()
                              ? std::string()
                              : versionBlock("VarFileInfo", "", versionBlock("Translation", table));
  return versionBlock("VS_VERSION_INFO", fixed, var);
}

}  // namespace odlex::test
