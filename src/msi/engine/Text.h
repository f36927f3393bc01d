#pragma once
// UTF-16 <-> UTF-8 for error texts, file names and the tool's output, using the support
// layer's conversion (ill-formed input becomes U+FFFD, never an error).

#include <odlex/support/Utf8.h>

#include <string>
#include <string_view>

namespace odlex::engine {

inline std::string toUtf8(std::u16string_view text) {
  return Utf16ToUtf8(text);
}
inline std::u16string fromUtf8(std::string_view text) {
  return Utf8ToUtf16(text);
}

}  // namespace odlex::engine
