// Values at the edges of what the file format holds, read from packages msibuild wrote and
// written for msiinfo to read: strings past 65,535 bytes and 16-bit integers at their limits.

#include <gtest/gtest.h>

#include <algorithm>

#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"

namespace odlex::engine {
namespace {

using namespace column_type;
using OpenMode = Database::OpenMode;

std::vector<std::string> sorted(std::vector<std::string> lines) {
  std::sort(lines.begin(), lines.end());
  return lines;
}

struct EdgeTable {
  const char* name;
  std::vector<Column> columns;
  std::string idtHeader;  // the two type lines and the key line
  // Rows in the order their strings are first met, so a long string has ids after it.
  std::vector<std::vector<std::string>> rows;
};

std::vector<EdgeTable> edgeTables() {
  const std::string longText(70000, 'L');
  return {
      {"Property",
       {Column{u"Property", kText | kKey | 72}, Column{u"Value", kText | kLocalizable}},
       "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\n",
       {{"Alpha", "first"}, {"Big", longText}, {"Zulu", "last"}, {"Yankee", "after"}}},
      {"Numbers",
       {Column{u"Key", kText | kKey | 72}, Column{u"Short", kInteger16 | kNullable},
        Column{u"Long", kInteger32 | kNullable}},
       "Key\tShort\tLong\r\ns72\tI2\tI4\r\nNumbers\tKey\r\n",
       {{"a", "32767", "2147483647"}, {"b", "-32767", "-2147483647"}, {"c", "", ""}}},
  };
}

TEST(EngineLimits, EdgeValuesReadFromMsibuildAndWrittenForMsiinfo) {
  test::TempDir dir;
  for (const EdgeTable& edge : edgeTables()) {
    SCOPED_TRACE(edge.name);
    std::string idt = edge.idtHeader;
    std::vector<std::string> expected;
    for (const auto& row : edge.rows) {
      std::string line;
      for (std::size_t i = 0; i < row.size(); ++i)
        line += (i > 0 ? "\t" : "") + row[i];
      idt += line + "\r\n";
      expected.push_back(std::move(line));
    }
    expected = sorted(std::move(expected));

    const auto idtPath = dir / (std::string(edge.name) + ".idt");
    test::writeFileBytes(idtPath, idt);
    const auto built = dir / (std::string(edge.name) + ".msi");
    const auto run = test::runProcess({"msibuild", built.string(), "-i", idtPath.string()});
    ASSERT_TRUE(run.ok()) << run.describe();
    EXPECT_EQ(sorted(tableLines(*openOrFail(built, OpenMode::kReadOnly), Utf8ToUtf16(edge.name))),
              expected);

    const auto written = dir / (std::string(edge.name) + "-written.msi");
    auto db = openOrFail(written, OpenMode::kCreate);
    Error error;
    Table* table = db->createTable(Utf8ToUtf16(edge.name), edge.columns, error);
    ASSERT_TRUE(table) << error.text;
    for (const auto& values : edge.rows) {
      const std::size_t row = table->addRow();
      for (std::size_t column = 0; column < values.size(); ++column) {
        if (values[column].empty())
          continue;
        table->setCell(row, column,
                       edge.columns[column].isInteger()
                           ? static_cast<std::uint32_t>(std::stoi(values[column]))
                           : db->strings().intern(Utf8ToUtf16(values[column])));
      }
    }
    ASSERT_EQ(db->commit(error), kSuccess) << error.text;
    EXPECT_EQ(sorted(test::msiinfoRows(written, edge.name)), expected);
  }
}

}  // namespace
}  // namespace odlex::engine
