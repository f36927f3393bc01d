#pragma once
// Opening engine databases in the engine's tests: the test fails with the engine's code and text
// when a database does not open. And tables shown as text, to compare whole.

#include <gtest/gtest.h>

#include <odlex/support/Utf8.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "msi/engine/Database.h"

namespace odlex::engine {

inline std::unique_ptr<Database> openOrFail(const std::filesystem::path& path,
                                            Database::OpenMode mode) {
  Error error;
  auto db = Database::open(storage::FileSystem::real(), path, mode, error);
  EXPECT_TRUE(db) << error.code << " " << error.text;
  return db;
}

// Table `name` as .idt data lines in row order: fields joined by tabs, null as empty, a binary
// cell that holds data as "stream".
inline std::vector<std::string> tableLines(const Database& db, std::u16string_view name) {
  const Table* table = db.findTable(name);
  EXPECT_TRUE(table) << "no table " << Utf16ToUtf8(name);
  std::vector<std::string> lines;
  for (std::size_t row = 0; table && row < table->rowCount(); ++row) {
    std::string line;
    for (std::size_t column = 0; column < table->columnCount(); ++column) {
      const Column& shape = table->columns()[column];
      line += column > 0 ? "\t" : "";
      if (table->isNull(row, column))
        continue;
      line += shape.isBinary()    ? "stream"
              : shape.isInteger() ? std::to_string(table->integer(row, column))
                                  : Utf16ToUtf8(table->text(db.strings(), row, column));
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace odlex::engine
