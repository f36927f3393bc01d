#pragma once
// The message table of a Windows module (a PE file), read as data: the messages by number, as
// the module's first message-table resource (type 11) holds them in its first language.

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace odlex::signature {

// The messages of `image`; nothing, with the reason in `why`, when it is no PE file, has no
// message table, or a part of the table lies outside the file. Texts stored as ANSI are read as
// Latin-1; UTF-16 and UTF-8 texts as they are, up to their first null character.
std::optional<std::map<std::uint32_t, std::u16string>> peMessageTable(
    std::span<const unsigned char> image, std::string& why);

}  // namespace odlex::signature
