#pragma once
// Conversion through the C library's converter (iconv), for the multi-byte Windows pages and
// for building the single-byte tables. Converter handles are opened once per thread and
// code page and reset before every conversion, so each string converts on its own.

#include <cstdint>
#include <string>
#include <string_view>

namespace odlex::storage {

// `converterName` is the C library's name for `codePage`; the number is used in messages.

// False (with `error` set) when the C library does not know `converterName`.
bool checkConverter(std::uint32_t codePage, const char* converterName, std::string& error);

// Fails (with `error` set) on a byte sequence the page does not define, or when the C library
// does not know the converter.
bool iconvDecode(std::uint32_t codePage, const char* converterName, std::string_view bytes,
                 std::u16string& out, std::string& error);
// Fails on a character the page cannot hold, including those the C library would map one
// way only (to a look-alike that reads back as a different character).
bool iconvEncode(std::uint32_t codePage, const char* converterName, std::u16string_view text,
                 std::string& out, std::string& error);

}  // namespace odlex::storage
