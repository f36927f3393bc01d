// Values at the edges of what the file format holds, read from packages msibuild wrote and
// written for msiinfo to read: strings past 65,535 bytes, 16-bit integers at their limits, and
// table-marked streams that no table owns.

#include <gtest/gtest.h>

#include <algorithm>

#include "common/Container.h"
#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "odlex/support/Utf8.h"
#include "storage/CompoundFile.h"
#include "storage/StreamName.h"

namespace odlex::engine {
namespace {

using namespace column_type;
using OpenMode = Database::OpenMode;

// One table as rows of text fields (null as empty), through the engine.
std::vector<std::vector<std::string>> engineRows(const Database& db, std::u16string_view name) {
  const Table* table = db.findTable(name);
  EXPECT_TRUE(table) << "no table";
  std::vector<std::vector<std::string>> rows;
  if (!table)
    return rows;
  for (std::size_t row = 0; row < table->rowCount(); ++row) {
    std::vector<std::string> fields;
    for (std::size_t column = 0; column < table->columnCount(); ++column) {
      if (table->isNull(row, column))
        fields.emplace_back();
      else if (table->columns()[column].isInteger())
        fields.push_back(std::to_string(table->integer(row, column)));
      else
        fields.push_back(Utf16ToUtf8(table->text(db.strings(), row, column)));
    }
    rows.push_back(std::move(fields));
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

// The rows of an .idt body (after its three header lines), sorted like the engine's key order.
std::vector<std::vector<std::string>> idtRows(const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  const auto lines = test::splitLines(text);
  for (std::size_t i = 3; i < lines.size(); ++i) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t tab; (tab = lines[i].find('\t', start)) != std::string::npos; start = tab + 1)
      fields.push_back(lines[i].substr(start, tab - start));
    fields.push_back(lines[i].substr(start));
    rows.push_back(std::move(fields));
  }
  std::sort(rows.begin(), rows.end());
  return rows;
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

std::vector<std::vector<std::string>> sorted(std::vector<std::vector<std::string>> rows) {
  std::sort(rows.begin(), rows.end());
  return rows;
}

TEST(EngineLimits, MsibuildPackagesReadAsWritten) {
  test::TempDir dir;
  for (const EdgeTable& table : edgeTables()) {
    SCOPED_TRACE(table.name);
    std::string idt = table.idtHeader;
    for (const auto& row : table.rows) {
      for (std::size_t i = 0; i < row.size(); ++i)
        idt += row[i] + (i + 1 < row.size() ? "\t" : "\r\n");
    }
    const auto idtPath = dir / (std::string(table.name) + ".idt");
    test::writeFileBytes(idtPath, idt);
    const auto package = dir / (std::string(table.name) + ".msi");
    const auto built = test::runProcess({"msibuild", package.string(), "-i", idtPath.string()});
    ASSERT_TRUE(built.ok()) << built.describe();
    auto db = openOrFail(package, OpenMode::kReadOnly);
    ASSERT_TRUE(db);
    EXPECT_EQ(engineRows(*db, Utf8ToUtf16(table.name)), sorted(table.rows));
  }
}

TEST(EngineLimits, WrittenPackagesReadAsWrittenInMsiinfo) {
  test::TempDir dir;
  for (const EdgeTable& edge : edgeTables()) {
    SCOPED_TRACE(edge.name);
    const auto package = dir / (std::string(edge.name) + ".msi");
    auto db = openOrFail(package, OpenMode::kCreate);
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
    const auto exported = test::msiinfoExport(package, edge.name, dir.path());
    ASSERT_TRUE(exported.ok()) << exported.describe();
    EXPECT_EQ(idtRows(exported.out), sorted(edge.rows));
  }
}

// A package holding a table-marked stream "Orphan" that _Tables does not list.
std::filesystem::path packageWithOrphanStream(const test::TempDir& dir) {
  auto db = openOrFail(dir / "base.msi", OpenMode::kCreate);
  Error error;
  EXPECT_TRUE(db->createTable(u"Kept", {Column{u"Key", kText | kKey | 72}}, error));
  EXPECT_EQ(db->commit(error), kSuccess) << error.text;
  const auto path = dir / "orphan.msi";
  std::string reason;
  const auto addOrphan = [](storage::CompoundNode& root) {
    storage::CompoundNode orphan;
    orphan.name = *storage::encodeStreamName(u"Orphan", true);
    orphan.data = {1, 0, 2, 0};
    root.children.push_back(orphan);
  };
  EXPECT_TRUE(test::editContainer(dir / "base.msi", path, addOrphan, reason)) << reason;
  return path;
}

TEST(EngineLimits, ATableCreatedOverAnOrphanStreamReplacesIt) {
  test::TempDir dir;
  const auto path = packageWithOrphanStream(dir);
  auto db = openOrFail(path, OpenMode::kUpdate);
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess) << "the orphan stream is kept: " << error.text;
  Table* table = db->createTable(
      u"Orphan", {Column{u"Key", kText | kKey | 72}, Column{u"N", kInteger16}}, error);
  ASSERT_TRUE(table) << error.text;
  const std::size_t row = table->addRow();
  table->setCell(row, 0, db->strings().intern(u"k"));
  table->setCell(row, 1, 5);
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  const auto exported = test::msiinfoExport(path, "Orphan", dir.path());
  ASSERT_TRUE(exported.ok()) << exported.describe();
  EXPECT_EQ(idtRows(exported.out), (std::vector<std::vector<std::string>>{{"k", "5"}}));
}

}  // namespace
}  // namespace odlex::engine
