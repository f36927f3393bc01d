#pragma once
// Single-byte Windows code pages as lookup tables, built once per page from the C library's
// converter, so converting one short string costs a table lookup per character.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace odlex::storage {

class SingleByteTable {
 public:
  // The table of `codePage`, built on first use and kept for the life of the process. Fails
  // (null, `error` set) when the C library does not know `converterName`.
  static const SingleByteTable* get(std::uint32_t codePage, const char* converterName,
                                    std::string& error);

  bool decode(std::string_view bytes, std::u16string& out, std::string& error) const;
  bool encode(std::u16string_view text, std::string& out, std::string& error) const;
  bool canEncode(std::u16string_view text) const;

 private:
  static constexpr char16_t kUndefined = 0xFFFF;  // not a character, so never a real mapping

  SingleByteTable(std::uint32_t codePage, const char* converterName);

  std::uint32_t codePage_;
  std::array<char16_t, 256> toUnicode_;
  std::vector<std::int16_t> fromUnicode_;  // by UTF-16 unit: the byte, or -1
};

}  // namespace odlex::storage
