#pragma once
// The resources of a Windows module (a PE file), found as data: the resource tree of the
// module's resource directory walked from a type to its first name and that name's first
// language, down to the bytes of the resource.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace odlex::signature {

// The bytes of the first resource of `type` (11 message table, 16 version) of `image`, inside
// `image`; nothing, with the reason in `why`, when it is no PE file, has no such resource, or a
// part of the tree or the resource lies outside the file.
std::optional<std::span<const unsigned char>> peResource(std::span<const unsigned char> image,
                                                         std::uint32_t type, std::string& why);

}  // namespace odlex::signature
