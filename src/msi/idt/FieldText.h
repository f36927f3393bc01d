#pragma once
// Integer and time fields of .idt files.

#include <cstdint>
#include <string>
#include <string_view>

namespace odlex::idt {

// Parses a decimal integer ("-12", "0", "32767") for a column of `size` bytes (2 or 4). The
// range excludes the smallest value of each size, which the database stores as null.
bool parseInteger(std::string_view field, unsigned size, std::int32_t& value);

// Parses an unsigned decimal of 1-9 digits (code page numbers).
bool parseSmallDecimal(std::string_view field, std::uint32_t& value);

// A FILETIME (100 ns units since 1601-01-01 UTC) as "YYYY/MM/DD hh:mm:ss".
std::string formatFileTime(std::uint64_t fileTime);
// Parses "YYYY/MM/DD", "YYYY/MM/DD hh:mm" or "YYYY/MM/DD hh:mm:ss" (UTC, years 1601-9999).
bool parseFileTime(std::string_view text, std::uint64_t& fileTime);

}  // namespace odlex::idt
