#pragma once
// The name under which a font installer registers a TrueType or OpenType font: the full font
// name (name ID 4) of the font's `name` table.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "storage/FileSystem.h"

namespace odlex::signature {

// The largest part of a `name` table that is read: its records and strings can lie no further
// out (16-bit counts and offsets), so a longer table holds nothing more that is used.
inline constexpr std::uint32_t kMaxNameTable = 6 + 12 * 0xFFFF + 2 * 0xFFFF;

// The full name of the font in `font`, an sfnt file (TrueType 0x00010000 or "true", OpenType
// "OTTO"), or of the first font of a TrueType collection ("ttcf"). Of the full-name records,
// the first Windows Unicode (platform 3, encoding 1) record in US English (0x409) is taken,
// else the first other Windows record of a Unicode or symbol encoding (0, 1, 10), else the
// first Macintosh Roman one (platform 1, encoding 0), English (language 0) first. Trailing
// null characters are dropped; a record that is empty, lies outside the table or (Windows)
// has an odd length is passed over. Nothing, with the reason in `why`, when the file is no
// font, its tables lie outside it, or no record gives a name.
std::optional<std::u16string> fontName(storage::ReadableFile& font, std::string& why);

// The same for the file at `path`, read through storage::FileSystem::current(); only the
// file's headers and its name table are read. Nothing, with the reason, when it cannot be read.
std::optional<std::u16string> fileFontName(const std::filesystem::path& path, std::string& why);

}  // namespace odlex::signature
