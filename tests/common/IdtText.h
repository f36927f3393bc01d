#pragma once
// Comparing two exports of one table as .idt text: the three header lines (column names,
// column types, table name and key columns) must match exactly, the rows as a set.
//
// msiinfo always prints UTF-8; text that is not valid UTF-8 is taken to be in the package's
// code page and converted first. Binary cells name a stream (msiinfo) or a data file (odlex),
// so only whether such a cell is empty is compared.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace odlex::test {

// `text` itself when it is valid UTF-8, else `text` converted from `codePage` (1252 when 0).
std::string asUtf8(std::string_view text, std::uint32_t codePage);

// An .idt file written in UTF-8 (as msibuild reads it) rewritten the way the installer's own
// tool writes it: text in `codePage` and, when any character is not ASCII, the code page named
// at the start of the table line.
std::string inCodePage(std::string_view utf8Idt, std::uint32_t codePage);

// Whether two exports hold the same table, after dropping NUL bytes (msiinfo ends its
// _ForceCodepage export with one), taking a code page named on the table line out of the
// header, converting the text to UTF-8 (from that code page, else `codePage`, 1252 when 0,
// unless it already is UTF-8) and replacing every non-empty binary cell by "<binary>".
::testing::AssertionResult sameIdt(std::string_view expected, std::string_view actual,
                                   std::uint32_t codePage, std::string_view what);

// The code page a package's _ForceCodepage export names (0 when it names none).
std::uint32_t forcedCodePage(std::string_view forceCodepageExport);

// Indexes of the binary columns named by an .idt type line ("s72\tv0" -> {1}).
std::vector<std::size_t> binaryColumns(std::string_view typeLine);

// One row's cells (split on tabs; an empty line is one empty cell), and back.
std::vector<std::string> splitCells(std::string_view line);
std::string joinCells(const std::vector<std::string>& cells);

}  // namespace odlex::test
