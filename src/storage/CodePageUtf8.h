#pragma once
// Code page 65001: strict UTF-8 (no overlong forms, no encoded surrogates, nothing above
// U+10FFFF), and well-formed UTF-16 only (no lone surrogates).

#include <string>
#include <string_view>

namespace odlex::storage {

bool decodeUtf8(std::string_view bytes, std::u16string& out, std::string& error);
bool encodeUtf8(std::u16string_view text, std::string& out, std::string& error);

}  // namespace odlex::storage
