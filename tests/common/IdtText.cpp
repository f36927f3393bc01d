#include "common/IdtText.h"

#include <iconv.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "common/Oracle.h"

namespace odlex::test {
namespace {

bool isUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = lead < 0x80         ? 1
                         : (lead >> 5) == 6  ? 2
                         : (lead >> 4) == 14 ? 3
                         : (lead >> 3) == 30 ? 4
                                             : 0;
    if (length == 0 || i + length > text.size())
      return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
        return false;
    }
    i += length;
  }
  return true;
}

std::string iconvName(std::uint32_t codePage) {
  return "CP" + std::to_string(codePage == 0 ? 1252 : codePage);
}

// Converts with iconv; on any failure the text is returned unchanged, so the comparison
// that follows shows the raw bytes.
std::string convert(std::string_view text, const std::string& from, const std::string& to) {
  iconv_t converter = iconv_open(to.c_str(), from.c_str());
  if (converter == reinterpret_cast<iconv_t>(-1))
    return std::string(text);
  std::string in(text);
  std::string out(in.size() * 4 + 4, '\0');
  char* inPtr = in.data();
  char* outPtr = out.data();
  std::size_t inLeft = in.size();
  std::size_t outLeft = out.size();
  std::size_t done = iconv(converter, &inPtr, &inLeft, &outPtr, &outLeft);
  iconv_close(converter);
  if (done == static_cast<std::size_t>(-1))
    return std::string(text);
  out.resize(out.size() - outLeft);
  return out;
}

std::string codePageToUtf8(std::string_view text, std::uint32_t codePage) {
  return convert(text, iconvName(codePage), "UTF-8");
}

struct IdtTable {
  std::vector<std::string> header;  // the first three lines
  std::vector<std::string> rows;    // the remaining lines, sorted
};

IdtTable parseIdt(std::string_view text, std::uint32_t codePage) {
  std::string bytes(text);
  std::erase(bytes, '\0');
  std::vector<std::string> lines = splitLines(bytes);
  // A table line "1252\tTable\tKey" names the code page the file is written in.
  if (lines.size() >= 3) {
    std::vector<std::string> cells = splitCells(lines[2]);
    std::uint32_t tagged = 0;
    auto [end, failure] =
        std::from_chars(cells[0].data(), cells[0].data() + cells[0].size(), tagged);
    if (cells.size() >= 3 && failure == std::errc() && end == cells[0].data() + cells[0].size()) {
      codePage = tagged;
      lines[2].erase(0, cells[0].size() + 1);
    }
  }
  bool utf8 = isUtf8(bytes);
  for (std::string& line : lines) {
    if (!utf8)
      line = codePageToUtf8(line, codePage);
  }
  IdtTable table;
  std::size_t headerLines = std::min<std::size_t>(3, lines.size());
  table.header.assign(lines.begin(), lines.begin() + headerLines);
  std::vector<std::size_t> binary =
      table.header.size() > 1 ? binaryColumns(table.header[1]) : std::vector<std::size_t>{};
  for (std::size_t i = headerLines; i < lines.size(); ++i) {
    std::vector<std::string> cells = splitCells(lines[i]);
    for (std::size_t column : binary) {
      if (column < cells.size() && !cells[column].empty())
        cells[column] = "<binary>";
    }
    table.rows.push_back(joinCells(cells));
  }
  std::sort(table.rows.begin(), table.rows.end());
  return table;
}

}  // namespace

std::string joinCells(const std::vector<std::string>& cells) {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0)
      line += '\t';
    line += cells[i];
  }
  return line;
}

std::string inCodePage(std::string_view utf8Idt, std::uint32_t codePage) {
  bool ascii = std::all_of(utf8Idt.begin(), utf8Idt.end(),
                           [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (ascii)
    return std::string(utf8Idt);
  std::vector<std::string> lines = splitLines(utf8Idt);
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i == 2)
      text += std::to_string(codePage) + "\t";
    text += convert(lines[i], "UTF-8", iconvName(codePage)) + "\r\n";
  }
  return text;
}

std::vector<std::string> splitCells(std::string_view line) {
  std::vector<std::string> cells;
  while (true) {
    std::size_t tab = line.find('\t');
    cells.emplace_back(line.substr(0, tab));
    if (tab == std::string_view::npos)
      return cells;
    line.remove_prefix(tab + 1);
  }
}

std::vector<std::size_t> binaryColumns(std::string_view typeLine) {
  std::vector<std::size_t> columns;
  std::vector<std::string> types = splitCells(typeLine);
  for (std::size_t i = 0; i < types.size(); ++i) {
    if (!types[i].empty() && (types[i][0] == 'v' || types[i][0] == 'V'))
      columns.push_back(i);
  }
  return columns;
}

std::string asUtf8(std::string_view text, std::uint32_t codePage) {
  return isUtf8(text) ? std::string(text) : codePageToUtf8(text, codePage);
}

::testing::AssertionResult sameIdt(std::string_view expected, std::string_view actual,
                                   std::uint32_t codePage, std::string_view what) {
  IdtTable want = parseIdt(expected, codePage);
  IdtTable got = parseIdt(actual, codePage);
  std::string label(what);
  ::testing::AssertionResult header = linesEqual(want.header, got.header, label + " header");
  if (!header)
    return header;
  return linesEqual(want.rows, got.rows, label + " rows (sorted)");
}

std::uint32_t forcedCodePage(std::string_view forceCodepageExport) {
  std::vector<std::string> lines = splitLines(forceCodepageExport);
  if (lines.size() < 3)
    return 0;
  std::uint32_t codePage = 0;
  std::from_chars(lines[2].data(), lines[2].data() + lines[2].size(), codePage);
  return codePage;
}

}  // namespace odlex::test
