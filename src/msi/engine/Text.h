#pragma once
// UTF-16 to UTF-8 for error texts and file names; unpaired surrogates become U+FFFD.

#include <string>
#include <string_view>

namespace odlex::engine {

std::string toUtf8(std::u16string_view text);
std::u16string fromUtf8(std::string_view text);

}  // namespace odlex::engine
