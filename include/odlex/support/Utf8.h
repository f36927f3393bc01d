#pragma once
// Conversion between UTF-8 and UTF-16. Never throws on bad input: an ill-formed UTF-8
// sequence becomes U+FFFD (one per maximal ill-formed subpart), and so does a lone surrogate
// on the way back.

#include <string>
#include <string_view>

namespace odlex {

std::u16string Utf8ToUtf16(std::string_view utf8);
std::string Utf16ToUtf8(std::u16string_view utf16);

}  // namespace odlex
