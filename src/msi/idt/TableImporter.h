#pragma once
// Imports the rows of an ordinary table's .idt file: every row is parsed, checked and its
// binary data read before the database is changed, so a bad file leaves the table as it was.
// Rows are staged as cells of a table of their own, text in a pool of their own, so staging
// costs no more memory than the imported table will.

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/engine/StringPool.h"
#include "msi/engine/Table.h"
#include "msi/idt/Idt.h"
#include "msi/idt/IdtHeader.h"
#include "msi/idt/IdtLines.h"

namespace odlex::idt {

class TableImporter {
 public:
  TableImporter(engine::Database& db, storage::FileSystem& fs, const std::filesystem::path& file,
                const IdtHeader& header, std::uint32_t codePage, const ImportOptions& options,
                engine::Error& error)
      : db_(db),
        fs_(fs),
        file_(file),
        header_(header),
        codePage_(codePage),
        options_(options),
        error_(error),
        staged_(header.table, header.columns) {}

  // Reads the rows from `lines` (positioned after the header). Empty lines are skipped.
  std::uint32_t run(LineCursor& lines);

 private:
  std::uint32_t fail(std::uint32_t code, std::size_t line, std::size_t field,
                     const std::string& reason);
  bool stageRow(std::string_view line, std::size_t lineNumber);
  bool stageCell(std::string_view field, std::size_t lineNumber, std::size_t row,
                 std::size_t column);
  bool readBinary(std::u16string_view fileName, std::size_t lineNumber, std::size_t column,
                  std::vector<std::uint8_t>& data);
  // Checks that merging is possible: the table is absent or has exactly these columns.
  bool checkMergeTarget();
  // Fails on the first row whose key repeats an earlier one.
  bool checkUniqueKeys();
  std::uint32_t commit();

  engine::Database& db_;
  storage::FileSystem& fs_;
  const std::filesystem::path& file_;
  const IdtHeader& header_;
  std::uint32_t codePage_;
  const ImportOptions& options_;
  engine::Error& error_;

  engine::StringPool stagedStrings_;
  engine::Table staged_;
  std::vector<std::size_t> lineOfRow_;
  // Binary data by staged row (a row has one stream, whatever its number of binary cells).
  std::vector<std::pair<std::size_t, std::vector<std::uint8_t>>> data_;
};

}  // namespace odlex::idt
