#pragma once
// The control-character translation of .idt values: characters that would clash with the
// field and line separators are written as other control characters, and read back.

#include <string>
#include <string_view>

namespace odlex::idt {

// NUL->0x15, BS->0x1B, TAB->0x10, LF->0x19, FF->0x18, CR->0x11; everything else unchanged.
std::u16string escapeValue(std::u16string_view value);
// The reverse translation.
std::u16string unescapeValue(std::u16string_view field);

}  // namespace odlex::idt
