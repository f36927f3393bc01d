// Every generated table in a fresh database: created on persist, one full row written,
// committed, reopened and read back equal. And packages that differ from the catalog: fewer
// columns than the catalog has, keys repeated in the file.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>

#include <filesystem>
#include <map>
#include <string>

#include "common/PathText.h"
#include "common/RowText.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/schema/Schema.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

TalString columnName(const schema::ColumnSchema& column) {
  return TalString(std::u16string(column.name));
}

MSIBinary dataFor(std::size_t column) {
  const std::string data = "data of column " + std::to_string(column);
  return MSIBinary(reinterpret_cast<const unsigned char*>(data.data()),
                   static_cast<unsigned long>(data.size()));
}

// A value for every column that its type holds: short texts, numbers that fit 16 bits.
void fill(MSIEntry& row) {
  for (std::size_t i = 0; i < row.GetColumnCount(); ++i) {
    const schema::ColumnSchema& column = row.GetSchema().columns[i];
    const engine::Column shape = column.engineColumn();
    if (shape.isBinary())
      ASSERT_TRUE(row.SetBinary(columnName(column), dataFor(i)));
    else if (shape.isInteger())
      ASSERT_TRUE(row.SetColumn(columnName(column), MSIRecordColumn::Integer(static_cast<int>(i))));
    else
      ASSERT_TRUE(row.SetColumn(columnName(column), MSIRecordColumn::String(TalString::FromUtf8(
                                                        "v" + std::to_string(i)))));
  }
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
    ASSERT_EQ(db.commit(), 0u);
  }
  MSIDatabase db(text(file), MSIDatabase::ePersistReadOnly);
  ASSERT_TRUE(db.isValid());
  for (const auto& [name, text] : written) {
    std::unique_ptr<MSITable> table = createTableObject(TalString(name));
    table->SetDatabase(db);
    ASSERT_TRUE(table->Populate()) << table->GetLastError().ToUtf8();
    ASSERT_EQ(table->GetTable().entries(), 1u) << TalString(name).ToUtf8();
    const auto& row = *static_cast<MSIEntry*>(*table->GetTable().begin());
    EXPECT_EQ(rowText(row), text);
    for (std::size_t i = 0; i < row.GetColumnCount(); ++i) {
      MSIBinary data;
      if (row.GetSchema().columns[i].engineColumn().isBinary()) {
        ASSERT_TRUE(row.GetBinary(columnName(row.GetSchema().columns[i]), data));
        EXPECT_EQ(data, dataFor(i)) << text;
      }
    }
  }
}

TEST(RowsCatalog, TypedSettersRoundTrip) {
  TempDir dir;
  const fs::path file = dir / "typed.msi";
  {
    MSIDatabase db(text(file), MSIDatabase::ePersistCreate);
    MSITFile files;
    files.SetDatabase(db);
    MSIEFile* full = files.Add(u"Full");
    full->SetComponent(u"Comp");
    full->SetFileName(u"FULL~1.EXE|full name.exe");
    full->SetFileSize(2147483647);
    full->SetVersion(u"1.2.3.4");
    full->SetAttributes(NullableSignedShort(-2));
    full->SetSequence(32767);
    MSIEFile* sparse = files.Add(u"Sparse");
    sparse->SetComponent(u"Comp");
    sparse->SetFileName(u"s.txt");
    sparse->SetFileSize(0);
    sparse->SetSequence(1);
    ASSERT_TRUE(files.Persist());
    ASSERT_EQ(db.commit(), 0u);
  }
  MSIDatabase db(text(file), MSIDatabase::ePersistReadOnly);
  MSITFile files;
  files.SetDatabase(db);
  ASSERT_TRUE(files.Populate());
  const MSIEFile* full = files.Find(u"Full");
  ASSERT_NE(full, nullptr);
  EXPECT_EQ(rowText(*full),
            "Full\tComp\tFULL~1.EXE|full name.exe\t2147483647\t1.2.3.4\t\t-2\t32767");
  const MSIEFile* sparse = files.Find(u"Sparse");
  ASSERT_NE(sparse, nullptr);
  EXPECT_EQ(rowText(*sparse), "Sparse\tComp\ts.txt\t0\t\t\t\t1");
  EXPECT_EQ(files.FindByFileSize(0), sparse);
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
  const engine::Table* table = db_.engineDatabase()->findTable(u"Media");
  ASSERT_EQ(table->columnCount(), 2u);
  ASSERT_EQ(table->rowCount(), 2u);

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

TEST(RowsCatalogErrors, TablesWithoutAnOpenDatabaseFailCleanly) {
  MSITProperty property;
  EXPECT_FALSE(property.Populate());
  EXPECT_FALSE(property.GetLastError().isNull());
  EXPECT_FALSE(property.Persist());
  MSIDatabase closed;
  property.SetDatabase(closed);
  EXPECT_FALSE(property.Populate());
  EXPECT_FALSE(property.Drop());
  MSITMedia media;
  EXPECT_EQ(property.AddEntry(media.CreateEntry()), nullptr) << "a row of another table";
}

}  // namespace
}  // namespace odlex::test
