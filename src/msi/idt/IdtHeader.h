#pragma once
// The three header lines of an .idt file: column names, column type words, and the table
// name with its key columns (optionally preceded by the code page the file is written in).

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Result.h"

namespace odlex::idt {

// The database allows at most this many columns in a table.
inline constexpr std::size_t kMaxColumns = 32;

struct IdtHeader {
  std::u16string table;
  // Names and type bits, key columns (which lead) carrying column_type::kKey.
  std::vector<engine::Column> columns;
  // The code page named on line 3, or 0 when the line names none.
  std::uint32_t taggedCodePage = 0;
};

// True for the layout of _ForceCodepage.idt (two empty lines, then "<n>\t_ForceCodepage"),
// with the number in `codePage`; the number is checked by the caller.
bool isForceCodepageFile(const std::vector<std::string_view>& lines, std::string_view& codePage);

// Parses lines 1-3 (`lines` holds the first three lines of the file, or fewer). `defaultCodePage`
// decodes names when line 3 names no code page. Errors are kFunctionFailed with the file and line
// in the text.
std::uint32_t parseHeader(const std::vector<std::string_view>& lines,
                          const std::filesystem::path& file, std::uint32_t defaultCodePage,
                          IdtHeader& header, engine::Error& error);

}  // namespace odlex::idt
