// Every generated table in a fresh database: created on persist, one full row written,
// committed, reopened and read back equal by the table objects and by msiinfo, which reads each
// table with the layout StandardTables.def writes. Packages that differ from the catalog: fewer
// columns than the catalog has, keys repeated in the file. And rows written back unchanged.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>

#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "common/CatalogText.h"
#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/PathText.h"
#include "common/RowText.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "msi/schema/Schema.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

TalString columnName(const schema::ColumnSchema& column) {
  return TalString(std::u16string(column.name));
}

MSIBinary dataFor(std::size_t column) {
  return bytes("data of column " + std::to_string(column));
}

// Every third nullable column is left null.
bool leftNull(const schema::ColumnSchema& column, std::size_t index) {
  return column.engineColumn().nullable() && index % 3 == 0;
}

// A value for every other column that its type holds: short texts, binary data, the largest
// number of the column's size or a negative one.
void fill(MSIEntry& row) {
  for (std::size_t i = 0; i < row.GetColumnCount(); ++i) {
    const schema::ColumnSchema& column = row.GetSchema().columns[i];
    const engine::Column shape = column.engineColumn();
    if (leftNull(column, i))
      continue;
    if (shape.isBinary())
      ASSERT_TRUE(row.SetBinary(columnName(column), dataFor(i)));
    else if (shape.isInteger())
      ASSERT_TRUE(row.SetColumn(
          columnName(column),
          MSIRecordColumn::Integer(i % 3 == 1 ? (shape.integerSize() == 2 ? 32767 : 2147483647)
                                              : -static_cast<int>(i))));
    else
      ASSERT_TRUE(row.SetColumn(columnName(column), MSIRecordColumn::String(TalString::FromUtf8(
                                                        "v" + std::to_string(i)))));
  }
}

// A row as text with its binary cells left out (msiinfo names a stream there, we name none).
std::string withoutBinaryCells(const std::string& line, const schema::TableSchema& table) {
  std::vector<std::string> cells = splitCells(line);
  for (std::size_t i = 0; i < cells.size() && i < table.columns.size(); ++i)
    if (table.columns[i].engineColumn().isBinary())
      cells[i].clear();
  return joinCells(cells);
}

TEST(RowsCatalog, EveryTableIsCreatedWrittenAndReadBack) {
  TempDir dir;
  const fs::path file = dir / "fresh.msi";
  std::map<std::u16string, std::string> written;  // table -> its row as text
  {
    MSIDatabase db(text(file), MSIDatabase::ePersistCreate);
    ASSERT_TRUE(db.isValid());
    for (const schema::TableSchema& catalog : schema::allTables()) {
      // The tables the database keeps about itself have table objects of their own shape.
      if (catalog.system() && catalog.name != u"_Validation")
        continue;
      std::unique_ptr<MSITable> table = createTableObject(TalString(std::u16string(catalog.name)));
      ASSERT_NE(table, nullptr) << TalString(std::u16string(catalog.name)).ToUtf8();
      EXPECT_EQ(table->GetName(), TalString(std::u16string(catalog.name)));
      table->SetDatabase(db);
      ASSERT_TRUE(table->Populate());
      EXPECT_EQ(table->GetTable().entries(), 0u);
      ASSERT_TRUE(table->Persist());
      EXPECT_EQ(db.engineDatabase()->findTable(catalog.name), nullptr)
          << "a table with no rows to write is not created";

      std::unique_ptr<MSIEntry> row = table->CreateEntry();
      fill(*row);
      written[std::u16string(catalog.name)] = rowText(*row);
      ASSERT_NE(table->AddEntry(std::move(row)), nullptr);
      ASSERT_TRUE(table->Persist()) << table->GetLastError().ToUtf8();
      EXPECT_NE(db.engineDatabase()->findTable(catalog.name), nullptr);
    }
    ASSERT_GT(written.size(), 100u);
    EXPECT_NE(createTableObject(u"_Streams"), nullptr);
    EXPECT_EQ(createTableObject(u"registry"), nullptr) << "names are case-sensitive";
    EXPECT_EQ(createTableObject(u"NoSuchTable"), nullptr);
    ASSERT_EQ(db.commit(), 0u);
  }
  const std::map<std::string, std::vector<std::string>> headers = catalogHeaders();
  MSIDatabase db(text(file), MSIDatabase::ePersistReadOnly);
  ASSERT_TRUE(db.isValid());
  for (const auto& [name, text] : written) {
    const std::string utf8Name = TalString(name).ToUtf8();
    SCOPED_TRACE(utf8Name);
    std::unique_ptr<MSITable> table = createTableObject(TalString(name));
    table->SetDatabase(db);
    ASSERT_TRUE(table->Populate()) << table->GetLastError().ToUtf8();
    ASSERT_EQ(table->GetTable().entries(), 1u);
    const auto& row = *static_cast<MSIEntry*>(*table->GetTable().begin());
    EXPECT_EQ(rowText(row), text);
    for (std::size_t i = 0; i < row.GetColumnCount(); ++i) {
      const schema::ColumnSchema& column = row.GetSchema().columns[i];
      MSIBinary data;
      if (column.engineColumn().isBinary()) {
        ASSERT_TRUE(row.GetBinary(columnName(column), data));
        EXPECT_EQ(data, leftNull(column, i) ? MSIBinary() : dataFor(i));
      }
    }

    const ProcessResult exported = msiinfoExport(file, utf8Name);
    ASSERT_TRUE(exported.ok()) << exported.describe();
    const std::vector<std::string> lines = splitLines(exported.out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_TRUE(linesEqual(headers.at(utf8Name), {lines.begin(), lines.begin() + 3}, utf8Name));
    EXPECT_EQ(withoutBinaryCells(lines[3], table->GetSchema()),
              withoutBinaryCells(text, table->GetSchema()));
  }
}

// A database whose Media table has only the first two of the catalog's columns, as an older
// package might, and a Property table that repeats a key.
class RowsOddPackage : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.open(text(dir_ / "odd.msi"), MSIDatabase::ePersistCreate);
    ASSERT_TRUE(db_.isValid());
    engine::Database& engine = *db_.engineDatabase();
    engine::Error error;
    const schema::TableSchema& media = *schema::findTable(u"Media");
    engine::Table* table = engine.createTable(
        u"Media", {media.columns[0].engineColumn(), media.columns[1].engineColumn()}, error);
    ASSERT_NE(table, nullptr) << error.text;
    const std::uint32_t row[] = {1, 10};
    table->appendRow(row);
    ASSERT_EQ(schema::createTable(engine, u"Property", error), 0u) << error.text;
    engine::Table* property = engine.findTable(u"Property");
    const std::uint32_t first[] = {engine.strings().intern(u"P"), engine.strings().intern(u"1")};
    const std::uint32_t second[] = {engine.strings().intern(u"P"), engine.strings().intern(u"2")};
    property->appendRow(first);
    property->appendRow(second);
  }

  TempDir dir_;
  MSIDatabase db_;
};

TEST_F(RowsOddPackage, MissingColumnsReadAsNullAndStayMissing) {
  MSITMedia media;
  media.SetDatabase(db_);
  ASSERT_TRUE(media.Populate()) << media.GetLastError().ToUtf8();
  MSIEMedia* disk = media.Find(1);
  ASSERT_NE(disk, nullptr);
  EXPECT_EQ(disk->GetLastSequence(), 10);
  EXPECT_EQ(disk->GetCabinet(), u"");
  disk->SetCabinet(u"lost.cab");
  media.Add(2)->SetLastSequence(20);
  ASSERT_TRUE(media.Persist());
  EXPECT_EQ(engine::tableLines(*db_.engineDatabase(), u"Media"),
            (std::vector<std::string>{"1\t10", "2\t20"}));

  MSITMedia again;
  again.SetDatabase(db_);
  ASSERT_TRUE(again.Populate());
  EXPECT_EQ(again.Find(2)->GetLastSequence(), 20);
  EXPECT_EQ(again.Find(1)->GetCabinet(), u"");
}

TEST_F(RowsOddPackage, RepeatedKeysAreReportedAndTheFirstRowKept) {
  MSITProperty property;
  property.SetDatabase(db_);
  EXPECT_FALSE(property.Populate());
  EXPECT_EQ(property.GetLastError().ToUtf8(),
            "table Property: 1 row(s) repeat the key of an earlier row and were left out");
  ASSERT_EQ(property.GetTable().entries(), 1u);
  EXPECT_EQ(property.Find(u"P")->GetValue(), u"1");
}

// Persist writes rows that did not change since they were read from the database's cells
// instead of their values: what reaches the database must be the same either way.
using Edit = std::function<void(MSITProperty&, engine::Database&)>;

struct WriteBackCase {
  const char* name;
  Edit beforeLoad;  // on the database, before the table object reads it
  Edit edit;        // between reading and writing back
  std::map<std::string, std::string> expected;
};

void PrintTo(const WriteBackCase& test, std::ostream* out) {
  *out << test.name;
}

// The engine row of `key` in the Property table.
std::size_t rowOf(engine::Database& engine, const char16_t* key) {
  engine::Table& table = *engine.findTable(u"Property");
  for (std::size_t row = 0; row < table.rowCount(); ++row) {
    if (table.text(engine.strings(), row, 0) == key)
      return row;
  }
  ADD_FAILURE() << "no row";
  return 0;
}

void nothing(MSITProperty&, engine::Database&) {}

const WriteBackCase kCases[] = {
    {"NothingChanged", nothing, nothing, {{"A", "1"}, {"B", "2"}, {"C", "3"}}},
    {"ChangedAndChangedBack",
     nothing,
     [](MSITProperty& table, engine::Database&) {
       table.Find(u"A")->SetValue(u"x");
       table.Find(u"A")->SetValue(u"1");
     },
     {{"A", "1"}, {"B", "2"}, {"C", "3"}}},
    {"DeletedAndAddedAgain",
     nothing,
     [](MSITProperty& table, engine::Database&) {
       table.Find(u"B")->Delete();
       table.Add(u"B")->SetValue(u"again");
     },
     {{"A", "1"}, {"B", "again"}, {"C", "3"}}},
    // The rows hold what was read: the database's later change is overwritten.
    {"DatabaseTableChangedAfterTheRead",
     nothing,
     [](MSITProperty& table, engine::Database& engine) {
       engine.findTable(u"Property")
           ->setCell(rowOf(engine, u"B"), 1, engine.strings().intern(u"elsewhere"));
       table.Find(u"C")->SetValue(u"z");
     },
     {{"A", "1"}, {"B", "2"}, {"C", "z"}}},
    // A loaded pool may hold a text twice; the row written back names the first. The pool is
    // loaded again as a reader loads one, with "2" repeated at its end.
    {"TextHeldTwiceInThePool",
     [](MSITProperty&, engine::Database& engine) {
       engine::StringPool& pool = engine.strings();
       std::vector<std::u16string> texts;
       for (std::uint32_t id = 1; id < pool.size(); ++id)
         texts.emplace_back(pool.get(id));
       pool.clear();
       for (const std::u16string& text : texts)
         pool.appendLoaded(text);
       pool.appendLoaded(u"2");
       engine.findTable(u"Property")->setCell(rowOf(engine, u"B"), 1, pool.size() - 1);
     },
     nothing,
     {{"A", "1"}, {"B", "2"}, {"C", "3"}}},
};

class RowsWriteBack : public ::testing::TestWithParam<WriteBackCase> {};

TEST_P(RowsWriteBack, UnchangedRowsReachTheDatabaseAsTheirValues) {
  TempDir dir;
  MSIDatabase db;
  db.open(text(dir / "rows.msi"), MSIDatabase::ePersistCreate);
  ASSERT_TRUE(db.isValid());
  engine::Database& engine = *db.engineDatabase();
  {
    MSITProperty made;
    made.SetDatabase(db);
    for (const auto& [key, value] : {std::pair{u"A", u"1"}, {u"B", u"2"}, {u"C", u"3"}})
      made.Add(key)->SetValue(value);
    ASSERT_TRUE(made.Persist());
  }
  MSITProperty table;
  table.SetDatabase(db);
  GetParam().beforeLoad(table, engine);
  ASSERT_TRUE(table.Populate());
  GetParam().edit(table, engine);
  ASSERT_TRUE(table.Persist()) << table.GetLastError().ToUtf8();

  const engine::Table& written = *engine.findTable(u"Property");
  std::map<std::string, std::string> rows;
  for (std::size_t row = 0; row < written.rowCount(); ++row) {
    for (std::size_t column = 0; column < 2; ++column) {
      const std::u16string_view value = written.text(engine.strings(), row, column);
      EXPECT_EQ(written.cell(row, column), engine.strings().find(value)) << "as intern names it";
    }
    rows[TalString(std::u16string(written.text(engine.strings(), row, 0))).ToUtf8()] =
        TalString(std::u16string(written.text(engine.strings(), row, 1))).ToUtf8();
  }
  EXPECT_EQ(rows, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, RowsWriteBack, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace odlex::test
