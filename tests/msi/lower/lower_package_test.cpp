// The lower-layer database, views and records on a package written by msibuild: opening in
// the three ways, committing, the error list, queries with parameters, nulls, integers and
// streams, table text files and standard tables.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRecord.h>
#include <odlex/msi/MSISchemaColumn.h>
#include <odlex/msi/MSIView.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/PackageTest.h"
#include "common/Packages.h"
#include "common/PathText.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// Works on a private copy of the msibuild package made from tests/oracle/fixtures/idt.
class LowerPackageTest : public PackageCopyTest {
 protected:
  void SetUp() override { copyPackage(PackageKind::kIdt); }

  // Every row of `sql` as its fields joined with '|' (null as "-", streams as "stream").
  std::vector<std::string> rows(MSIDatabase& db, const char16_t* sql, MSIRecord* params = nullptr) {
    MSIView view(db);
    EXPECT_EQ(view.Open(sql, true), 0u);
    EXPECT_EQ(view.Execute(params, true), 0u);
    std::vector<std::string> out;
    for (MSIRecord record; view.Fetch(record) == 0;) {
      std::string line;
      for (unsigned i = 1; i <= record.GetFieldCount(); ++i) {
        line += i > 1 ? "|" : "";
        line += record.IsNull(i)     ? "-"
                : record.IsStream(i) ? "stream"
                                     : record.GetString(i).ToUtf8();
      }
      out.push_back(line);
    }
    return out;
  }

  // The codes of the pending errors, oldest first, taking them off the list.
  static std::vector<unsigned> takeErrorCodes(MSIDatabase& db) {
    std::vector<unsigned> codes;
    while (TalError* error = db.GetError())
      codes.push_back(error->GetCode());
    return codes;
  }
};

TEST_F(LowerPackageTest, ReadOnlyOpenRefusesCommitAndEdits) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistReadOnly, eSchema110);
  ASSERT_TRUE(db.isValid());
  EXPECT_TRUE(db.isReadOnly());
  EXPECT_EQ(db.getPath(), text(package_));
  EXPECT_TRUE(db.getInPath().isNull());
  const std::string before = readFileBytes(package_);

  EXPECT_EQ(db.commit(), 5u);
  EXPECT_EQ(db.AddTable(u"Icon"), 5u);
  EXPECT_EQ(takeErrorCodes(db), (std::vector<unsigned>{5, 5}));
  db.close(true);
  EXPECT_FALSE(db.isValid());
  EXPECT_EQ(readFileBytes(package_), before);
}

TEST_F(LowerPackageTest, OpenIntoOutputNeverWritesTheSource) {
  const fs::path output = dir_ / "output.msi";
  const std::string before = readFileBytes(package_);
  MSIDatabase db;
  ASSERT_EQ(db.open(text(package_), text(output)), 0u);
  EXPECT_EQ(db.getInPath(), text(package_));
  EXPECT_EQ(db.getPath(), text(output));
  ASSERT_EQ(db.AddTable(u"Icon"), 0u);
  ASSERT_EQ(db.commit(), 0u);
  EXPECT_EQ(readFileBytes(package_), before);

  // Re-opening after that commit reads the output, which has the change (what the output holds
  // is the engine's test), and keeps the paths.
  db.close(false);
  ASSERT_EQ(db.open(), 0u);
  EXPECT_EQ(db.getInPath(), text(package_));
  EXPECT_EQ(db.AddTable(u"Icon"), 183u);
  EXPECT_EQ(readFileBytes(package_), before);
}

// Tables come from the catalog (their columns are the schema tests'); a table that is not
// committed is lost when the database is opened again.
TEST_F(LowerPackageTest, AddedTablesLastOnlyWhenCommitted) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistDirect);
  ASSERT_EQ(db.AddTable(u"Icon"), 0u);
  db.close(false);  // not committed: lost
  ASSERT_EQ(db.open(), 0u);
  ASSERT_EQ(db.AddTable(u"Icon"), 0u);
  EXPECT_EQ(db.AddTable(u"Icon"), 183u);
  EXPECT_EQ(db.AddTable(u"NotAStandardTable"), 1628u);
  EXPECT_EQ(takeErrorCodes(db), (std::vector<unsigned>{183, 1628}));
  EXPECT_EQ(db.close(true), 0u);
  ASSERT_EQ(db.open(), 0u);
  EXPECT_EQ(db.AddTable(u"Icon"), 183u);
  EXPECT_EQ(rows(db, u"SELECT `Name` FROM `_Tables` WHERE `Name` = 'Icon'"),
            std::vector<std::string>{"Icon"});
}

TEST_F(LowerPackageTest, FailedOpensAreRecorded) {
  MSIDatabase db;
  EXPECT_EQ(db.open(), 6u);  // nothing to open again
  EXPECT_EQ(db.open(text(dir_ / "missing.msi"), MSIDatabase::ePersistReadOnly), 110u);
  writeFileBytes(dir_ / "junk.msi", "not a compound file");
  EXPECT_EQ(db.open(text(dir_ / "junk.msi"), MSIDatabase::ePersistDirect), 1620u);
  EXPECT_EQ(db.open(text(package_), static_cast<MSIDatabase::ePersistMode>(9)), 87u);
  ASSERT_EQ(db.open(text(package_), MSIDatabase::ePersistReadOnly), 0u);
  EXPECT_EQ(db.open(TalString(), text(dir_ / "out.msi")), 161u);
  EXPECT_FALSE(db.isValid());
  EXPECT_EQ(db.commit(), 6u);

  EXPECT_EQ(db.GetErrorCount(), 6u);
  TalError* first = db.GetError();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetCode(), 6u);
  TalError* second = db.GetError();
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(second->GetText().contains(u"missing.msi")) << second->GetText().ToUtf8();
  db.ClearErrors();
  EXPECT_EQ(db.GetError(), nullptr);
}

TEST_F(LowerPackageTest, VersionComesFromThePageCount) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistReadOnly);
  EXPECT_EQ(db.GetVersion(), eSchema200);
  MSIDatabase closed;
  EXPECT_EQ(closed.GetVersion(), eSchemaNone);

  // A database created here declares the schema it was constructed with.
  MSIDatabase fresh(text(dir_ / "created.msi"), MSIDatabase::ePersistCreate, eSchema405);
  ASSERT_EQ(fresh.commit(), 0u);
  fresh.close(false);
  ASSERT_EQ(fresh.open(), 0u);
  EXPECT_EQ(fresh.GetVersion(), eSchema405);
}

TEST_F(LowerPackageTest, QueriesWithParametersNullsAndIntegers) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistReadOnly);
  MSIRecord params;
  params.SetInteger(1, 2);
  params.SetString(2, u"0");
  EXPECT_EQ(rows(db,
                 u"SELECT `File`, `FileSize`, `Version`, `Attributes` FROM `File` "
                 u"WHERE `Sequence` >= ? AND `Language` <> ? ORDER BY `Sequence`",
                 &params),
            (std::vector<std::string>{"Readme|0|-|-", "Handbuch|4096|-|8192"}));

  MSIView view(db);
  ASSERT_EQ(view.Open(u"SELECT `FileSize`, `Attributes`, `Language` FROM `File` "
                      u"WHERE `File` = 'MainExe' OR `File` = 'Readme' ORDER BY `Sequence`",
                      true),
            0u);
  ASSERT_EQ(view.Execute(nullptr, true), 0u);
  MSIRecord main, readme, after;
  ASSERT_EQ(view.Fetch(main), 0u);
  EXPECT_EQ(main.GetInteger(1), 2147483647);
  EXPECT_EQ(main.GetInteger(2), 512);
  EXPECT_EQ(main.GetInteger(3), 1033);  // a text field that spells a number
  ASSERT_EQ(view.Fetch(readme), 0u);
  EXPECT_TRUE(readme.IsNull(2));
  EXPECT_EQ(readme.GetInteger(2), MSIRecord::NullInteger);
  EXPECT_EQ(readme.GetString(2), TalString());
  EXPECT_EQ(readme.GetInteger(0), MSIRecord::NullInteger);  // no field 0
  EXPECT_TRUE(readme.IsNull(9));
  EXPECT_EQ(view.Fetch(after), 259u);
}

// A stream field reads while its database is open; once the database is closed, or gone, the
// field is not read.
TEST_F(LowerPackageTest, StreamFieldsReadIntoBinaries) {
  auto db = std::make_unique<MSIDatabase>(text(package_), MSIDatabase::ePersistReadOnly);
  MSIView view(*db);
  ASSERT_EQ(view.Open(u"SELECT `Name`, `Data` FROM `Binary` ORDER BY `Name`", true), 0u);
  ASSERT_EQ(view.Execute(nullptr, true), 0u);
  std::vector<MSIRecord> records(2);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const char* name = i == 0 ? "large.ibd" : "small.ibd";
    ASSERT_EQ(view.Fetch(records[i]), 0u);
    ASSERT_TRUE(records[i].IsStream(2));
    MSIBinary data;
    ASSERT_EQ(records[i].GetStream(2, data), 0u);
    EXPECT_EQ(data, MSIBinary(text(fixturePath("idt/Binary") / name))) << name;
    EXPECT_TRUE(data.GetBinaryFile().isNull());
    MSIBinary notStream;
    EXPECT_EQ(records[i].GetStream(1, notStream), 1629u);
  }
  MSIBinary data;
  db->close(false);
  EXPECT_EQ(records[0].GetStream(2, data), 1609u);
  db.reset();
  EXPECT_EQ(records[1].GetStream(2, data), 1609u);
}

TEST_F(LowerPackageTest, QueryFailuresAreRecordedWhenAsked) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistReadOnly);
  MSIView view(db);
  MSIRecord record;
  EXPECT_EQ(view.Fetch(record), 1609u);  // never executed
  EXPECT_EQ(view.Open(u"SELECT FROM WHERE", true), 1615u);
  EXPECT_EQ(view.Open(u"SELECT * FROM `NoSuchTable`", true), 1628u);
  EXPECT_EQ(view.Open(u"SELECT * FROM `NoSuchTable`", false), 1628u);
  ASSERT_EQ(view.Open(u"SELECT * FROM `Property` WHERE `Property` = ?", true), 0u);
  EXPECT_EQ(view.Execute(nullptr, true), 1616u);
  MSIRecord wrongType;
  wrongType.SetInteger(1, 7);
  EXPECT_EQ(view.Execute(&wrongType, true), 1629u);

  TalError* error = db.GetError();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->GetCode(), 1615u);
  EXPECT_TRUE(error->GetText().contains(u"SELECT FROM WHERE")) << error->GetText().ToUtf8();
  EXPECT_EQ(takeErrorCodes(db), (std::vector<unsigned>{1628, 1616, 1629}));

  // A view made before the database was opened again refuses to run on the new one.
  ASSERT_EQ(view.Open(u"SELECT * FROM `Property`", true), 0u);
  ASSERT_EQ(db.open(), 0u);
  EXPECT_EQ(view.Execute(nullptr, true), 1609u);
}

// What export and import write is the table-file tests'; here the lower layer's error list.
TEST_F(LowerPackageTest, ExportAndImportFailuresAreRecorded) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistDirect);
  EXPECT_EQ(db.Export(u"NoSuchTable", text(dir_ / "x.idt")), 1628u);
  EXPECT_EQ(db.Import(text(dir_ / "missing.idt")), 2u);
  EXPECT_EQ(takeErrorCodes(db), (std::vector<unsigned>{1628, 2}));
}

TEST_F(LowerPackageTest, SchemaColumnsOfCatalogAndCustomTables) {
  MSIDatabase db(text(package_), MSIDatabase::ePersistReadOnly);
  std::vector<MSISchemaColumn> file;
  ASSERT_EQ(MSISchemaColumn::GetTableColumns(db, u"File", file), 0u);
  ASSERT_EQ(file.size(), 8u);
  EXPECT_EQ(file[0].Type(), 1);  // File: text key
  EXPECT_TRUE(file[0].IsKey());
  EXPECT_FALSE(file[0].IsForeignKey());
  EXPECT_TRUE(file[1].IsForeignKey());  // Component_
  EXPECT_EQ(file[1].GetKeyTable(), TalString(u"Component"));
  EXPECT_TRUE(file[2].IsLocalizable());  // FileName
  EXPECT_EQ(file[2].GetSize(), 255u);
  EXPECT_EQ(file[3].Type(), MSISchemaColumn::typeLong);  // FileSize
  EXPECT_FALSE(file[3].IsNullable());
  EXPECT_EQ(file[6].Type(), MSISchemaColumn::typeShort);  // Attributes
  EXPECT_TRUE(file[6].IsNullable());

  std::vector<MSISchemaColumn> binary;
  ASSERT_EQ(MSISchemaColumn::GetTableColumns(db, u"Binary", binary), 0u);
  EXPECT_EQ(binary[1].Type(), MSISchemaColumn::typeBinary);

  // OdlexTypes is not in the catalog: described from the database alone.
  std::vector<MSISchemaColumn> custom;
  ASSERT_EQ(MSISchemaColumn::GetTableColumns(db, u"OdlexTypes", custom), 0u);
  ASSERT_EQ(custom.size(), 6u);
  EXPECT_EQ(custom[3].Type(), MSISchemaColumn::typeString);
  EXPECT_EQ(custom[3].GetSize(), 0u);
  EXPECT_FALSE(custom[3].IsForeignKey());
  EXPECT_TRUE(custom[4].IsLocalizable());
  EXPECT_EQ(MSISchemaColumn::GetTableColumns(db, u"Nope", custom), 1628u);
}

}  // namespace
}  // namespace odlex::test
