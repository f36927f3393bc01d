#pragma once
// Messages for failed code-page conversions, naming the offending byte or character and
// where it sits, so a user can find it in their data.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace odlex::storage {

// `offset` counts bytes from the start of the input.
std::string invalidByteMessage(std::uint32_t codePage, std::string_view bytes, std::size_t offset);
// `position` counts UTF-16 units; a surrogate pair there is reported as one character.
std::string unencodableMessage(std::uint32_t codePage, std::u16string_view text,
                               std::size_t position);

}  // namespace odlex::storage
