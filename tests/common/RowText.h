#pragma once
// A row of a table object as msiinfo exports it, to compare whole rows at once: the catalog's
// columns joined with tabs, null as empty. And binary data made from text.

#include <odlex/msi/MSIEntry.h>

#include <string>
#include <string_view>

#include "msi/schema/Schema.h"

namespace odlex::test {

inline std::string rowText(const MSIEntry& row) {
  std::string line;
  for (std::size_t i = 0; i < row.GetColumnCount(); ++i) {
    MSIRecordColumn value;
    row.GetColumn(TalString(std::u16string(row.GetSchema().columns[i].name)), value);
    line += (i ? "\t" : "") + value.GetString().ToUtf8();
  }
  return line;
}

inline MSIBinary bytes(std::string_view data) {
  return MSIBinary(reinterpret_cast<const unsigned char*>(data.data()),
                   static_cast<unsigned long>(data.size()));
}

}  // namespace odlex::test
