#pragma once
// Builds the text of an .idt file: header lines, then rows, every value escaped and encoded in
// the database's code page, lines ending CR LF.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Column.h"

namespace odlex::idt {

class IdtWriter {
 public:
  explicit IdtWriter(std::uint32_t codePage) : codePage_(codePage) {}

  // False (with the converter's reason) when a name cannot be written in the code page.
  bool writeHeader(const std::vector<engine::Column>& columns, std::u16string_view table,
                   std::string& reason);
  // One row; an empty value is written as an empty field (null).
  bool writeRow(const std::vector<std::u16string>& values, std::string& reason);
  // The complete text. Line 3 starts with the code page when any character is not ASCII.
  std::string finish() const;

 private:
  bool appendLine(std::string& out, const std::vector<std::u16string_view>& values,
                  std::string& reason) const;

  std::uint32_t codePage_;
  std::string head_;       // lines 1 and 2
  std::string tableLine_;  // line 3 without a code page
  std::string body_;
};

}  // namespace odlex::idt
