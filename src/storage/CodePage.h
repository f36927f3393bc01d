#pragma once
// Conversion between an installer database's code page and UTF-16. Supported: 0 (neutral),
// 874, 932, 936, 949, 950, 1250-1258 and 65001 (UTF-8), each with the Windows table of
// that number as the C library's converter knows it. ASCII is the same in all of them.
//
// Neutral (0) reads and writes exactly like 1252. Windows would use the machine's ANSI code
// page, which a file cannot tell us; msitools (msibuild, wixl) store neutral databases'
// strings as 1252 and read them back as 1252 ("é" is byte 0xE9, "€" byte 0x80; text outside
// 1252 is lost), so doing the same reads their packages unchanged and lets them read ours.
//
// Code page 1252 also accepts the bytes 0x81, 0x8D, 0x8F, 0x90 and 0x9D, as the C1
// controls of the same value, as Windows' table for 1252 does.

#include <cstdint>
#include <string>
#include <string_view>

namespace odlex::storage {

bool isSupportedCodePage(std::uint32_t codePage);

// Bytes in `codePage` to UTF-16. Bytes that are not valid in the code page are an error.
bool decodeCodePage(std::uint32_t codePage, std::string_view bytes, std::u16string& out,
                    std::string& error);
// UTF-16 to bytes in `codePage`. A character the code page cannot hold is an error that
// names the character and its position.
bool encodeCodePage(std::uint32_t codePage, std::u16string_view text, std::string& out,
                    std::string& error);
// True when every character of `text` can be stored in `codePage`.
bool canEncode(std::uint32_t codePage, std::u16string_view text);

}  // namespace odlex::storage
