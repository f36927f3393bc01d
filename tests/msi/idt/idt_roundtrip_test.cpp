// Export and import against the in-memory engine: the exact text written, and export ->
// import -> export giving the same bytes for every column type, code page and the
// pseudo-tables.

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "msi/idt/FieldText.h"
#include "msi/idt/Idt.h"

namespace odlex::idt {
namespace {

namespace ct = engine::column_type;
using engine::Column;
using engine::Database;

class IdtRoundTrip : public ::testing::Test {
 protected:
  std::unique_ptr<Database> newDatabase(std::uint32_t codePage = 0) {
    engine::Error error;
    auto db = Database::open(fs_, dir_ / "new.msi", Database::OpenMode::kCreate, error);
    EXPECT_TRUE(db) << error.text;
    db->setCodePage(codePage);
    return db;
  }

  // A table with every column type: keys K (text) and N (short), then a nullable long, a
  // localizable text, a nullable text and a nullable binary column.
  engine::Table& makeAllTypes(Database& db) {
    engine::Error error;
    engine::Table* table = db.createTable(u"AllTypes",
                                          {{u"K", ct::kText | 72 | ct::kKey},
                                           {u"N", ct::kInteger16 | ct::kKey},
                                           {u"Long", ct::kInteger32 | ct::kNullable},
                                           {u"Loc", ct::kText | ct::kLocalizable},
                                           {u"Opt", ct::kText | 20 | ct::kNullable},
                                           {u"Data", ct::kBinary | ct::kNullable}},
                                          error);
    EXPECT_TRUE(table) << error.text;
    return *table;
  }

  void addRow(Database& db, engine::Table& table, std::u16string key, std::int32_t number,
              std::int32_t value, std::u16string loc, std::u16string opt,
              std::vector<std::uint8_t> data) {
    engine::StringPool& pool = db.strings();
    const std::size_t row = table.addRow();
    table.setCell(row, 0, pool.intern(key));
    table.setCell(row, 1, static_cast<std::uint32_t>(number));
    table.setCell(row, 2, static_cast<std::uint32_t>(value));
    table.setCell(row, 3, pool.intern(loc));
    table.setCell(row, 4, pool.intern(opt));
    if (!data.empty()) {
      table.setCell(row, 5, 1);
      db.setStream(table.streamName(pool, row), std::move(data));
    }
  }

  std::uint32_t exportTo(Database& db, std::u16string_view table,
                         const std::filesystem::path& file) {
    engine::Error error;
    const std::uint32_t result = exportTable(db, table, fs_, file, error);
    EXPECT_EQ(result, engine::kSuccess) << error.text;
    return result;
  }

  std::uint32_t importFrom(Database& db, const std::filesystem::path& file,
                           const ImportOptions& options = {}) {
    lastError_ = {};
    return importTable(db, fs_, file, lastError_, options);
  }

  // Exports `table`, imports the file into a fresh database and exports again: both exports
  // must be byte-identical, data files included. Returns the text.
  std::string roundTrip(Database& db, std::u16string_view table) {
    const std::filesystem::path first = dir_ / "first" / "table.idt";
    const std::filesystem::path second = dir_ / "second" / "table.idt";
    std::filesystem::create_directories(first.parent_path());
    std::filesystem::create_directories(second.parent_path());
    exportTo(db, table, first);
    auto copy = newDatabase(0);
    EXPECT_EQ(importFrom(*copy, first), engine::kSuccess) << lastError_.text;
    EXPECT_EQ(copy->codePage(), db.codePage());
    exportTo(*copy, table, second);
    const std::string text = test::readFileBytes(first);
    EXPECT_EQ(text, test::readFileBytes(second));
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir_ / "first")) {
      const auto relative = std::filesystem::relative(entry.path(), dir_ / "first");
      EXPECT_TRUE(std::filesystem::exists(dir_ / "second" / relative)) << relative;
      if (entry.is_regular_file()) {
        EXPECT_EQ(test::readFileBytes(entry.path()),
                  test::readFileBytes(dir_ / "second" / relative))
            << relative;
      }
    }
    return text;
  }

  storage::FileSystem& fs_ = storage::FileSystem::real();
  test::TempDir dir_;
  engine::Error lastError_;
};

TEST_F(IdtRoundTrip, WritesHeaderRowsSortedByKeyAndEscapes) {
  auto db = newDatabase();
  engine::Table& table = makeAllTypes(*db);
  addRow(*db, table, u"b", 2, engine::kNullInteger, u"line1\r\nline2\ttab", u"", {});
  addRow(*db, table, u"a", 10, -5, u"x", u"opt", {'B', 'I', 'N', 0, 1});
  addRow(*db, table, u"a", -3, 2147483647, u"y", u"", {});
  const std::string text = roundTrip(*db, u"AllTypes");
  EXPECT_EQ(text,
            "K\tN\tLong\tLoc\tOpt\tData\r\n"
            "s72\ti2\tI4\tl0\tS20\tV0\r\n"
            "AllTypes\tK\tN\r\n"
            "a\t-3\t2147483647\ty\t\t\r\n"
            "a\t10\t-5\tx\topt\ta.10.ibd\r\n"
            "b\t2\t\tline1\x11\x19line2\x10tab\t\t\r\n");
  EXPECT_EQ(test::readFileBytes(dir_ / "first" / "AllTypes" / "a.10.ibd"),
            std::string("BIN\0\1", 5));
}

// Non-ASCII text is written in the database's code page, double-byte or UTF-8, which the table
// line names.
TEST_F(IdtRoundTrip, MultiByteCodePages) {
  for (const std::uint32_t codePage : {932u, 65001u}) {
    SCOPED_TRACE(codePage);
    std::filesystem::remove_all(dir_ / "first");
    std::filesystem::remove_all(dir_ / "second");
    auto db = newDatabase(codePage);
    engine::Table& table = makeAllTypes(*db);
    addRow(*db, table, u"\u65E5\u672C", 1, 1, u"\u30C6\u30B9\u30C8\t\u8868", u"\uFF71", {7});
    const std::string text = roundTrip(*db, u"AllTypes");
    EXPECT_NE(text.find(std::to_string(codePage) + "\tAllTypes"), std::string::npos);
    // The binary file name is made from the key; non-ASCII characters become '_'.
    EXPECT_TRUE(std::filesystem::exists(dir_ / "first" / "AllTypes" / "__.1.ibd"));
  }
}

TEST_F(IdtRoundTrip, TextTheCodePageCannotHoldIsAnError) {
  auto db = newDatabase(1252);
  engine::Table& table = makeAllTypes(*db);
  addRow(*db, table, u"k", 1, 1, u"\u65E5", u"", {});
  ExportedTable exported;
  engine::Error error;
  EXPECT_EQ(exportTableText(*db, u"AllTypes", exported, error), engine::kFunctionFailed);
  EXPECT_NE(error.text.find("AllTypes"), std::string::npos) << error.text;
}

TEST_F(IdtRoundTrip, HostileKeysNeverNameFilesOutsideTheTableFolder) {
  auto db = newDatabase();
  engine::Error error;
  engine::Table* table = db->createTable(
      u"Binary", {{u"Name", ct::kText | 72 | ct::kKey}, {u"Data", ct::kBinary}}, error);
  ASSERT_TRUE(table) << error.text;
  const std::u16string keys[] = {u"../x", u"/etc/passwd", u"a\\..\\b", u"CON", u"..", u"con"};
  for (const std::u16string& key : keys) {
    const std::size_t row = table->addRow();
    table->setCell(row, 0, db->strings().intern(key));
    table->setCell(row, 1, 1);
    db->setStream(table->streamName(db->strings(), row), {'d'});
  }
  roundTrip(*db, u"Binary");
  std::set<std::string> written;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(dir_.path())) {
    if (!entry.is_regular_file())
      continue;
    const std::string name = std::filesystem::relative(entry.path(), dir_.path()).generic_string();
    EXPECT_TRUE(name.starts_with("first/") || name.starts_with("second/")) << name;
    if (name.starts_with("first/"))
      written.insert(name.substr(6));
  }
  // Names differing in case stay apart.
  EXPECT_EQ(written,
            (std::set<std::string>{"table.idt", "Binary/.._x.ibd", "Binary/_etc_passwd.ibd",
                                   "Binary/a_.._b.ibd", "Binary/_CON.ibd", "Binary/._.ibd",
                                   "Binary/_con~2.ibd"}));
}

TEST_F(IdtRoundTrip, DataFilesWithUnsafeNamesAreNotWritten) {
  ExportedTable exported{"", "T", {{"../escape.ibd", storage::memorySource({1})}}};
  engine::Error error;
  EXPECT_EQ(writeBinaryFiles(fs_, exported, dir_ / "T", error), engine::kBadPathname);
  EXPECT_FALSE(std::filesystem::exists(dir_ / "escape.ibd"));
}

TEST_F(IdtRoundTrip, ForceCodepagePseudoTable) {
  auto db = newDatabase(932);
  const std::string text = roundTrip(*db, kForceCodepageTable);
  EXPECT_EQ(text, "\r\n\r\n932\t_ForceCodepage\r\n");
  test::writeFileBytes(dir_ / "cp.idt", "\r\n\r\n1251\t_ForceCodepage\r\n");
  EXPECT_EQ(importFrom(*db, dir_ / "cp.idt"), engine::kSuccess) << lastError_.text;
  EXPECT_EQ(db->codePage(), 1251u);
  // msiinfo ends the file with a NUL byte; what follows line 3 does not matter.
  test::writeFileBytes(dir_ / "cp.idt", std::string("\r\n\r\n1250\t_ForceCodepage\r\n\0", 25));
  EXPECT_EQ(importFrom(*db, dir_ / "cp.idt"), engine::kSuccess) << lastError_.text;
  EXPECT_EQ(db->codePage(), 1250u);
  test::writeFileBytes(dir_ / "cp.idt", "\r\n\r\n4242\t_ForceCodepage\r\n");
  EXPECT_EQ(importFrom(*db, dir_ / "cp.idt"), engine::kFunctionFailed);
  EXPECT_EQ(db->codePage(), 1250u);
}

TEST_F(IdtRoundTrip, SummaryInformationPseudoTable) {
  auto db = newDatabase(1252);
  storage::SummaryInformation info;
  info.properties[storage::kPidCodePage] = {storage::SummaryValue::kInteger, 1252, {}, 0};
  info.properties[storage::kPidTitle] = {storage::SummaryValue::kString, 0, u"Caf\u00E9\tDB", 0};
  info.properties[storage::kPidTemplate] = {storage::SummaryValue::kString, 0, u"Intel;1033", 0};
  std::uint64_t created = 0;
  ASSERT_TRUE(parseFileTime("1999/03/22 15:25:45", created));
  info.properties[storage::kPidCreateTime] = {storage::SummaryValue::kFileTime, 0, {}, created};
  info.properties[storage::kPidWordCount] = {storage::SummaryValue::kInteger, 2, {}, 0};
  db->setSummary(info);
  const std::string text = roundTrip(*db, kSummaryInformationTable);
  EXPECT_EQ(text,
            "PropertyId\tValue\r\n"
            "i2\tl255\r\n"
            "1252\t_SummaryInformation\tPropertyId\r\n"
            "1\t1252\r\n"
            "2\tCaf\xE9\x10"
            "DB\r\n"
            "7\tIntel;1033\r\n"
            "12\t1999/03/22 15:25:45\r\n"
            "15\t2\r\n");

  test::writeFileBytes(
      dir_ / "s.idt",
      "PropertyId\tValue\r\ni2\tl255\r\n_SummaryInformation\tPropertyId\r\n13\tyesterday\r\n");
  EXPECT_EQ(importFrom(*db, dir_ / "s.idt"), engine::kFunctionFailed);
  EXPECT_NE(lastError_.text.find("s.idt:4: field 2"), std::string::npos) << lastError_.text;
  test::writeFileBytes(
      dir_ / "s.idt",
      "PropertyId\tValue\r\ni2\tl255\r\n_SummaryInformation\tPropertyId\r\n17\tx\r\n");
  EXPECT_EQ(importFrom(*db, dir_ / "s.idt"), engine::kFunctionFailed);
  EXPECT_EQ(db->summary()->properties.size(), 5u) << "a failed import changes nothing";
}

TEST_F(IdtRoundTrip, ImportReplacesAnExistingTable) {
  auto db = newDatabase();
  engine::Table& table = makeAllTypes(*db);
  addRow(*db, table, u"old", 1, 1, u"x", u"", {'o'});
  test::writeFileBytes(dir_ / "t.idt", "K\tOther\r\ns72\tI2\r\nAllTypes\tK\r\nnew\t5\r\n");
  ASSERT_EQ(importFrom(*db, dir_ / "t.idt"), engine::kSuccess) << lastError_.text;
  EXPECT_EQ(engine::tableLines(*db, u"AllTypes"), std::vector<std::string>{"new\t5"});
  EXPECT_FALSE(db->hasStream(u"AllTypes.old.1")) << "the old table's data went with it";
}

TEST_F(IdtRoundTrip, MergeReplacesRowsWithTheSameKey) {
  auto db = newDatabase();
  engine::Table& table = makeAllTypes(*db);
  addRow(*db, table, u"a", 1, 1, u"old", u"", {'o'});
  addRow(*db, table, u"b", 1, 1, u"kept", u"", {});
  test::writeFileBytes(
      dir_ / "t.idt",
      "K\tN\tLong\tLoc\tOpt\tData\r\ns72\ti2\tI4\tl0\tS20\tV0\r\nAllTypes\tK\tN\r\n"
      "a\t1\t\tnew\t\t\r\nc\t1\t3\tadded\t\t\r\n");
  ImportOptions merge;
  merge.mode = ImportMode::kMergeRows;
  ASSERT_EQ(importFrom(*db, dir_ / "t.idt", merge), engine::kSuccess) << lastError_.text;
  ExportedTable exported;
  engine::Error error;
  ASSERT_EQ(exportTableText(*db, u"AllTypes", exported, error), engine::kSuccess);
  EXPECT_NE(exported.text.find("a\t1\t\tnew\t\t\r\nb\t1\t1\tkept\t\t\r\nc\t1\t3\tadded"),
            std::string::npos)
      << exported.text;
  EXPECT_FALSE(db->hasStream(u"AllTypes.a.1"));

  test::writeFileBytes(dir_ / "u.idt", "K\tN\r\ns72\ti4\r\nAllTypes\tK\r\na\t1\r\n");
  EXPECT_EQ(importFrom(*db, dir_ / "u.idt", merge), engine::kDatatypeMismatch);
}

TEST_F(IdtRoundTrip, CatalogTablesExportButDoNotImport) {
  auto db = newDatabase();
  makeAllTypes(*db);
  ExportedTable exported;
  engine::Error error;
  ASSERT_EQ(exportTableText(*db, u"_Tables", exported, error), engine::kSuccess) << error.text;
  EXPECT_NE(exported.text.find("\r\nAllTypes\r\n"), std::string::npos) << exported.text;
  EXPECT_EQ(exportTableText(*db, u"Missing", exported, error), engine::kInvalidTable);
  test::writeFileBytes(dir_ / "t.idt", exported.text);
  EXPECT_EQ(importFrom(*db, dir_ / "t.idt"), engine::kInvalidTable);
}

}  // namespace
}  // namespace odlex::idt
