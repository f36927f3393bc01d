#pragma once
// The catalog's tables as StandardTables.def writes them, type words untouched, so that what an
// independent reader shows is compared with the source text rather than with our own parse.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace odlex::test {

// The three header lines of an .idt export of every table (column names, type words, the table
// name and its key columns), by table name.
inline std::map<std::string, std::vector<std::string>> catalogHeaders() {
  struct WrittenColumn {
    std::string_view table;
    std::string_view column;
    std::string_view word;
    bool key;
  };
  static constexpr WrittenColumn kColumns[] = {
#define ODLEX_TABLE(table, since, flags)
#define ODLEX_KEY(table, column, accessor, type, ...) {#table, #column, type, true},
#define ODLEX_COLUMN(table, column, accessor, type, ...) {#table, #column, type, false},
#define ODLEX_TABLE_END(table)
#include "msi/schema/StandardTables.def"
#undef ODLEX_TABLE
#undef ODLEX_KEY
#undef ODLEX_COLUMN
#undef ODLEX_TABLE_END
  };
  std::map<std::string, std::vector<std::string>> headers;
  for (const WrittenColumn& column : kColumns) {
    std::vector<std::string>& lines = headers[std::string(column.table)];
    if (lines.empty())
      lines = {"", "", std::string(column.table)};
    lines[0] += (lines[0].empty() ? "" : "\t") + std::string(column.column);
    lines[1] += (lines[1].empty() ? "" : "\t") + std::string(column.word);
    if (column.key)
      lines[2] += "\t" + std::string(column.column);
  }
  return headers;
}

}  // namespace odlex::test
