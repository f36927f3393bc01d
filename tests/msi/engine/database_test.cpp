// The engine on its own: building tables in memory, saving, reopening, and refusing damaged
// files. Packages written by other tools are covered by the oracle tests.

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

#include "common/FaultyFileSystem.h"
#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "storage/CompoundFile.h"
#include "storage/StreamName.h"

namespace odlex::engine {
namespace {

using namespace column_type;
using OpenMode = Database::OpenMode;

// A Property-like table with a text key, a nullable integer and a binary column.
Table& addSampleTable(Database& db) {
  Error error;
  Table* table = db.createTable(
      u"Sample",
      {Column{u"Key", kText | kKey | 72}, Column{u"Number", kInteger16 | kNullable},
       Column{u"Wide", kInteger32 | kNullable}, Column{u"Data", kBinary | kNullable}},
      error);
  EXPECT_TRUE(table) << error.text;
  return *table;
}

void addSampleRow(Database& db, Table& table, std::u16string_view key, std::int32_t number,
                  std::int32_t wide) {
  std::size_t row = table.addRow();
  table.setCell(row, 0, db.strings().intern(key));
  table.setCell(row, 1, static_cast<std::uint32_t>(number));
  table.setCell(row, 2, static_cast<std::uint32_t>(wide));
}

TEST(DatabaseRoundTrip, TablesRowsStreamsAndNullsSurviveSaveAndReopen) {
  test::TempDir dir;
  auto db = openOrFail(dir / "new.msi", OpenMode::kCreate);
  Table& table = addSampleTable(*db);
  addSampleRow(*db, table, u"zeta", -32767, INT32_MAX);
  addSampleRow(*db, table, u"alpha", kNullInteger, -1);
  addSampleRow(*db, table, u"\u00e9t\u00e9", 32767, kNullInteger);
  table.setCell(1, 3, 1);
  db->setStream(table.streamName(db->strings(), 1), {1, 2, 3});
  db->setCodePage(1252);
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;

  auto back = openOrFail(dir / "new.msi", OpenMode::kReadOnly);
  ASSERT_EQ(back->tableCount(), 1u);
  EXPECT_EQ(back->codePage(), 1252u);
  const Table& read = back->table(0);
  ASSERT_EQ(read.rowCount(), 3u);
  ASSERT_EQ(read.columns().size(), 4u);
  EXPECT_EQ(read.columns()[1].type, kInteger16 | kNullable);
  // On disk rows are in key order: ids of "zeta", "alpha", "été" were given in that order.
  EXPECT_EQ(read.text(back->strings(), 0, 0), u"zeta");
  EXPECT_EQ(read.integer(0, 1), -32767);
  EXPECT_EQ(read.integer(0, 2), INT32_MAX);
  EXPECT_TRUE(read.isNull(1, 1));
  EXPECT_EQ(read.integer(1, 2), -1);
  EXPECT_EQ(read.text(back->strings(), 2, 0), u"\u00e9t\u00e9");
  EXPECT_TRUE(read.isNull(2, 2));
  EXPECT_FALSE(read.isNull(1, 3));
  EXPECT_TRUE(read.isNull(0, 3));
  std::vector<std::uint8_t> data;
  ASSERT_TRUE(back->readStream(u"Sample.alpha", data, error)) << error.text;
  EXPECT_EQ(data, (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST(DatabaseRoundTrip, AStreamSetFromAFileIsSavedWithTheFilesBytes) {
  test::TempDir dir;
  std::vector<std::uint8_t> bytes(300000);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::uint8_t>(i * 7 % 253);
  std::ofstream(dir / "cabinet", std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  auto db = openOrFail(dir / "new.msi", OpenMode::kCreate);
  std::string reason;
  // Replacing a stream set in memory, and adding a new one.
  db->setStream(u"replaced.cab", {9});
  for (const char16_t* name : {u"replaced.cab", u"added.cab"})
    db->setStreamSource(name,
                        storage::fileSource(storage::FileSystem::real(), dir / "cabinet", reason));
  Error error;
  // Before the save, the file's bytes are read from the file.
  std::vector<std::uint8_t> unsaved;
  ASSERT_TRUE(db->readStream(u"added.cab", unsaved, error)) << error.text;
  EXPECT_EQ(unsaved, bytes);
  EXPECT_EQ(db->streamSource(u"added.cab", error)->size(), bytes.size());
  EXPECT_FALSE(db->streamSource(u"absent.cab", error));
  EXPECT_EQ(error.code, kFileNotFound);
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  auto back = openOrFail(dir / "new.msi", OpenMode::kReadOnly);
  for (const char16_t* name : {u"replaced.cab", u"added.cab"}) {
    std::vector<std::uint8_t> data;
    ASSERT_TRUE(back->readStream(name, data, error)) << error.text;
    EXPECT_EQ(data, bytes);
  }
}

TEST(DatabaseRoundTrip, UnchangedDatabaseIsWrittenIdentically) {
  test::TempDir dir;
  auto db = openOrFail(dir / "a.msi", OpenMode::kCreate);
  Table& table = addSampleTable(*db);
  for (int i = 0; i < 100; ++i)
    addSampleRow(*db, table,
                 u"k" + std::u16string(1, u'0' + i % 10) + std::u16string(i / 10 + 1, u'x'), i, -i);
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  auto reopened = openOrFail(dir / "a.msi", OpenMode::kReadOnly);
  ASSERT_EQ(reopened->saveAs(dir / "b.msi", error), kSuccess) << error.text;
  EXPECT_EQ(test::readFileBytes(dir / "a.msi"), test::readFileBytes(dir / "b.msi"));
}

TEST(DatabaseRoundTrip, ManyStringsUseThreeByteReferencesAndLongStringsSurvive) {
  test::TempDir dir;
  auto db = openOrFail(dir / "big.msi", OpenMode::kCreate);
  Error error;
  Table* table = db->createTable(
      u"Big", {Column{u"Key", kText | kKey | 72}, Column{u"Value", kText | kNullable}}, error);
  ASSERT_TRUE(table);
  const int rows = 36000;  // two distinct strings a row: past 65,535 ids
  for (int i = 0; i < rows; ++i) {
    std::size_t row = table->addRow();
    std::string key = "key" + std::to_string(i), value = "value" + std::to_string(i);
    table->setCell(row, 0, db->strings().intern(std::u16string(key.begin(), key.end())));
    table->setCell(row, 1, db->strings().intern(std::u16string(value.begin(), value.end())));
  }
  const std::u16string longText(70000, u'x');
  std::size_t last = table->addRow();
  table->setCell(last, 0, db->strings().intern(u"zz-long"));
  table->setCell(last, 1, db->strings().intern(longText));
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;

  auto back = openOrFail(dir / "big.msi", OpenMode::kReadOnly);
  const Table& read = back->table(0);
  ASSERT_EQ(read.rowCount(), static_cast<std::size_t>(rows + 1));
  EXPECT_EQ(read.text(back->strings(), 0, 1), u"value0");
  EXPECT_EQ(read.text(back->strings(), rows - 1, 1), u"value" + std::u16string(u"35999"));
  EXPECT_EQ(read.text(back->strings(), rows, 1), longText);
}

TEST(DatabaseTables, TemporaryColumnsAreNeverWritten) {
  test::TempDir dir;
  auto db = openOrFail(dir / "t.msi", OpenMode::kCreate);
  Error error;
  Table* table = db->createTable(
      u"Held",
      {Column{u"Key", kText | kKey | 72}, Column{u"Scratch", kText | kNullable | kTemporary},
       Column{u"Kept", kInteger16}},
      error);
  ASSERT_TRUE(table) << error.text;
  std::size_t row = table->addRow();
  table->setCell(row, 0, db->strings().intern(u"k"));
  table->setCell(row, 1, db->strings().intern(u"only in memory"));
  table->setCell(row, 2, 7);
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;

  auto back = openOrFail(dir / "t.msi", OpenMode::kReadOnly);
  const Table& read = back->table(0);
  ASSERT_EQ(read.columnCount(), 2u);
  EXPECT_EQ(read.columns()[1].name, u"Kept");
  EXPECT_EQ(read.integer(0, 1), 7);
  EXPECT_EQ(back->strings().find(u"only in memory"), 0u);
}

TEST(DatabaseTables, CreateTableAndAddColumnRefuseBadDefinitions) {
  test::TempDir dir;
  auto db = openOrFail(dir / "x.msi", OpenMode::kCreate);
  Error error;
  EXPECT_FALSE(db->createTable(u"NoKey", {Column{u"A", kText}}, error));
  EXPECT_EQ(error.code, kInvalidParameter);
  EXPECT_FALSE(db->createTable(u"Dup", {Column{u"A", kText | kKey}, Column{u"A", kText}}, error));
  EXPECT_FALSE(db->createTable(
      u"Late", {Column{u"A", kText | kKey}, Column{u"B", kText}, Column{u"C", kText | kKey}},
      error));
  EXPECT_FALSE(db->createTable(u"Odd", {Column{u"A", kValid | kKey | 3}}, error));
  EXPECT_FALSE(db->createTable(
      u"TempKey", {Column{u"A", kText | kKey | kTemporary}, Column{u"B", kText}}, error))
      << "a temporary key is never written, so the saved table would have none";
  EXPECT_FALSE(db->createTable(u"_Columns", {Column{u"A", kText | kKey}}, error));
  EXPECT_FALSE(db->createTable(std::u16string(70, u'T'), {Column{u"A", kText | kKey}}, error));
  std::vector<Column> tooMany(33, Column{u"", kText | kKey});
  for (std::size_t i = 0; i < tooMany.size(); ++i)
    tooMany[i].name = u"C" + std::u16string(i + 1, u'x');
  EXPECT_FALSE(db->createTable(u"Wide", tooMany, error));
  Table* fine = db->createTable(u"Fine", {Column{u"A", kText | kKey}}, error);
  ASSERT_TRUE(fine);
  EXPECT_FALSE(db->createTable(u"Fine", {Column{u"A", kText | kKey}}, error));
  EXPECT_EQ(error.code, kAlreadyExists);

  for (const Column& refused :
       {Column{u"A", kText}, Column{u"K", kText | kKey}, Column{u"Odd", kValid | 3}}) {
    EXPECT_FALSE(db->addColumn(*fine, refused, error));
    EXPECT_EQ(error.code, kInvalidParameter);
  }
  for (std::size_t i = 1; i < tooMany.size(); ++i) {
    tooMany[i].type = kText;
    EXPECT_EQ(db->addColumn(*fine, tooMany[i], error), i < 32) << i;
  }
}

TEST(DatabaseTables, DropTableRemovesItsStreams) {
  test::TempDir dir;
  auto db = openOrFail(dir / "x.msi", OpenMode::kCreate);
  addSampleTable(*db);
  db->setStream(u"Sample.a", {1});
  db->setStream(u"Other.a", {2});
  EXPECT_TRUE(db->dropTable(u"Sample"));
  EXPECT_FALSE(db->dropTable(u"Sample"));
  EXPECT_EQ(db->streamNames(), std::vector<std::u16string>{u"Other.a"});
}

TEST(DatabaseTables, CatalogViewsDescribeTheDatabase) {
  test::TempDir dir;
  auto db = openOrFail(dir / "x.msi", OpenMode::kCreate);
  addSampleTable(*db);
  db->setStream(u"Sample.a", {1});
  auto columns = db->catalogView(u"_Columns");
  ASSERT_TRUE(columns);
  ASSERT_EQ(columns->rowCount(), 4u);
  EXPECT_EQ(columns->text(db->strings(), 3, 2), u"Data");
  EXPECT_EQ(columns->integer(3, 1), 4);
  auto streams = db->catalogView(u"_Streams");
  ASSERT_EQ(streams->rowCount(), 1u);
  EXPECT_EQ(streams->text(db->strings(), 0, 0), u"Sample.a");
  EXPECT_FALSE(db->catalogView(u"Sample"));
}

// Builds a valid package, then lets `tamper` change its container before writing it back.
std::filesystem::path tamperedPackage(const test::TempDir& dir,
                                      const std::function<void(storage::CompoundNode&)>& tamper) {
  auto db = openOrFail(dir / "good.msi", OpenMode::kCreate);
  Table& table = addSampleTable(*db);
  addSampleRow(*db, table, u"a", 1, 2);
  Error error;
  EXPECT_EQ(db->commit(error), kSuccess);
  std::string reason;
  auto reader = storage::CompoundFileReader::open(
      storage::FileSystem::real().openRead(dir / "good.msi", reason), reason);
  storage::CompoundNode root;
  root.isStorage = true;
  root.name = u"Root Entry";
  for (std::uint32_t child : reader->entries()[0].children) {
    storage::CompoundNode node;
    node.name = reader->entries()[child].name;
    EXPECT_TRUE(reader->readStream(child, node.data, reason));
    root.children.push_back(std::move(node));
  }
  tamper(root);
  std::vector<std::uint8_t> image;
  EXPECT_TRUE(storage::writeCompoundFile(root, image, reason));
  auto path = dir / "bad.msi";
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(image.data()),
             static_cast<std::streamsize>(image.size()));
  return path;
}

storage::CompoundNode& tableStream(storage::CompoundNode& root, std::u16string_view table) {
  auto name = *storage::encodeStreamName(table, true);
  for (auto& child : root.children) {
    if (child.name == name)
      return child;
  }
  throw std::runtime_error("no such stream");
}

void expectInvalid(const std::filesystem::path& path, std::string_view reason) {
  Error error;
  EXPECT_FALSE(Database::open(storage::FileSystem::real(), path, OpenMode::kReadOnly, error));
  EXPECT_EQ(error.code, kInstallPackageInvalid);
  EXPECT_NE(error.text.find(reason), std::string::npos) << error.text;
}

TEST(DatabaseBadInput, InconsistentDatabasesAreRefusedWithAReason) {
  test::TempDir dir;
  expectInvalid(
      tamperedPackage(dir, [](auto& root) { tableStream(root, u"Sample").data.pop_back(); }),
      "not a whole number");
  expectInvalid(
      tamperedPackage(dir, [](auto& root) { tableStream(root, u"Sample").data[0] = 0xFF; }),
      "beyond the string pool");
  expectInvalid(
      tamperedPackage(dir, [](auto& root) { tableStream(root, u"_StringPool").data.resize(6); }),
      "string pool");
  expectInvalid(
      tamperedPackage(dir, [](auto& root) { tableStream(root, u"_StringData").data.resize(2); }),
      "runs past the end");
  expectInvalid(
      tamperedPackage(dir, [](auto& root) { tableStream(root, u"_Tables").data.clear(); }),
      "which _Tables does not list");
  // The string pool starts with its code page (low three bytes); a long string takes a
  // (0, high length) entry and then a second one. In the sample package _Tables holds one
  // 2-byte string reference and _Columns its four rows column by column (Table, Number, Name,
  // Type: 8 bytes each), integers stored as value + 0x8000, 0 for null.
  using Bytes = std::vector<std::uint8_t>;
  const struct {
    const char16_t* stream;
    std::function<void(Bytes&)> tamper;
    const char* reason;
  } catalogDamage[] = {
      {u"_Tables",
       [](Bytes& b) {
         b = {0, 0};
       },
       "_Tables row 1 has no name"},
      {u"_Tables",
       [](Bytes& b) {
         b.insert(b.end(), {b[0], b[1]});
       },
       "listed twice in _Tables"},
      {u"_Tables",
       [](Bytes& b) {
         b.insert(b.end(), {std::uint8_t(b[0] - 1), b[1]});
       },
       "has no columns"},
      {u"_Columns", [](Bytes& b) { b[8] = b[9] = 0; }, "_Columns row 1 has a null field"},
      {u"_Columns", [](Bytes& b) { b[10] = 3; }, "column numbers are not 1 to 4"},
      {u"_Columns", [](Bytes& b) { b[26] = 3; }, "has an invalid type"},
      {u"_StringPool", [](Bytes& b) { b[0] = 1, b[1] = 0, b[2] = 0; }, "unsupported code page 1"},
      {u"_StringPool",
       [](Bytes& b) {
         b.insert(b.end(), {0, 0, 1, 0});
       },
       "has no length entry"},
  };
  for (const auto& damage : catalogDamage) {
    expectInvalid(
        tamperedPackage(dir,
                        [&](auto& root) { damage.tamper(tableStream(root, damage.stream).data); }),
        damage.reason);
  }
  expectInvalid(tamperedPackage(dir,
                                [](auto& root) {
                                  std::erase_if(root.children, [](auto& c) {
                                    return c.name ==
                                           *storage::encodeStreamName(u"_StringPool", true);
                                  });
                                }),
                "string pool is missing");
}

TEST(DatabaseBadInput, MissingEmptyAndForeignFiles) {
  test::TempDir dir;
  Error error;
  EXPECT_FALSE(
      Database::open(storage::FileSystem::real(), dir / "absent.msi", OpenMode::kReadOnly, error));
  EXPECT_EQ(error.code, kOpenFailed);
  std::ofstream(dir / "empty.msi").close();
  expectInvalid(dir / "empty.msi", "");
  std::ofstream(dir / "text.msi") << std::string(4096, 'x');
  expectInvalid(dir / "text.msi", "");
}

// A save that is refused, or that meets what the file cannot hold, writes nothing.
TEST(DatabaseSaving, RefusedSavesLeaveTheFileAsItWas) {
  test::TempDir dir;
  auto db = openOrFail(dir / "a.msi", OpenMode::kCreate);
  addSampleTable(*db);
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess);
  const auto before = test::readFileBytes(dir / "a.msi");
  const struct {
    const char* what;
    OpenMode mode;
    std::function<void(Database&)> edit;
    std::uint32_t result;
  } cases[] = {
      {"read-only", OpenMode::kReadOnly,
       [](Database& d) { addSampleRow(d, d.table(0), u"new", 1, 1); }, kAccessDenied},
      {"text outside the code page", OpenMode::kUpdate,
       [](Database& d) {
         d.setCodePage(1252);
         addSampleRow(d, d.table(0), u"\u4E2D", 1, 1);
       },
       kFunctionFailed},
      {"a stream name too long", OpenMode::kUpdate,
       [](Database& d) { d.setStream(std::u16string(80, u'S'), {1}); }, kFunctionFailed},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    auto opened = openOrFail(dir / "a.msi", c.mode);
    c.edit(*opened);
    EXPECT_EQ(opened->commit(error), c.result) << error.text;
    EXPECT_EQ(test::readFileBytes(dir / "a.msi"), before);
  }
}

TEST(DatabaseSaving, OpenIntoWritesOnlyTheOutput) {
  test::TempDir dir;
  auto db = openOrFail(dir / "in.msi", OpenMode::kCreate);
  addSampleTable(*db);
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess);
  auto before = test::readFileBytes(dir / "in.msi");
  auto copy =
      Database::openInto(storage::FileSystem::real(), dir / "in.msi", dir / "out.msi", error);
  ASSERT_TRUE(copy);
  addSampleRow(*copy, copy->table(0), u"new", 1, 1);
  ASSERT_EQ(copy->commit(error), kSuccess);
  EXPECT_EQ(test::readFileBytes(dir / "in.msi"), before);
  EXPECT_EQ(openOrFail(dir / "out.msi", OpenMode::kReadOnly)->table(0).rowCount(), 1u);
}

// Every file-system call of a save fails in turn, a full disk among them, for a commit in place
// and for a save to another file that exists (a rewrite): the file written is the old one until
// the save goes through, and no temporary file is left.
TEST(DatabaseSaving, AFailureAtAnyCallLeavesTheOldFileIntact) {
  for (const bool inPlace : {true, false}) {
    SCOPED_TRACE(inPlace ? "commit" : "save as");
    test::TempDir dir;
    auto original = openOrFail(dir / "a.msi", OpenMode::kCreate);
    addSampleRow(*original, addSampleTable(*original), u"old", 1, 1);
    Error error;
    ASSERT_EQ(original->commit(error), kSuccess);
    ASSERT_EQ(original->saveAs(dir / "b.msi", error), kSuccess);
    const auto target = dir / (inPlace ? "a.msi" : "b.msi");
    const auto before = test::readFileBytes(target);

    test::FaultyFileSystem faulty(storage::FileSystem::real());
    for (std::uint64_t call = 1;; ++call) {
      faulty.failAtCall(0);
      auto db = Database::open(faulty, dir / "a.msi", OpenMode::kUpdate, error);
      ASSERT_TRUE(db) << error.text;
      addSampleRow(*db, db->table(0), u"new", 2, 2);
      faulty.failAtCall(call);
      const std::uint32_t result = inPlace ? db->commit(error) : db->saveAs(target, error);
      if (!faulty.failed()) {
        EXPECT_EQ(result, kSuccess);
        break;
      }
      EXPECT_NE(result, kSuccess) << "call " << call;
      EXPECT_EQ(test::readFileBytes(target), before) << "call " << call;
      EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2)
          << "call " << call;
    }
    EXPECT_EQ(openOrFail(target, OpenMode::kReadOnly)->table(0).rowCount(), 2u);
  }
}

}  // namespace
}  // namespace odlex::engine
