#pragma once
// Helpers for the text of .idt files: code-page output appended in place, and names for
// error messages.

#include <cstdint>
#include <string>
#include <string_view>

namespace odlex::idt {

bool isAscii(std::string_view bytes);

// UTF-16 to bytes in `codePage`, appended to `out`; false with the converter's reason.
bool encodeText(std::uint32_t codePage, std::u16string_view text, std::string& out,
                std::string& reason);

// A name or value for an error message: printable ASCII kept, anything else as '?', at most
// 64 characters.
std::string forMessage(std::u16string_view text);

}  // namespace odlex::idt
