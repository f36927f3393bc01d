// The engine on its own: building tables in memory, saving, reopening, and refusing damaged
// files; a rewrite without edits keeps what the engine does not interpret; a string past 64 KiB
// read from msibuild and written for msiinfo. Other packages written by other tools are covered
// by the oracle tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>

#include "common/Container.h"
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
  db->setStream(u"\u0005System", {4});
  db->setCodePage(1252);
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;

  auto back = openOrFail(dir / "new.msi", OpenMode::kReadOnly);
  ASSERT_EQ(back->tableCount(), 1u);
  EXPECT_EQ(back->codePage(), 1252u);
  EXPECT_EQ(back->table(0).columns()[1].type, kInteger16 | kNullable);
  // On disk rows are in key order: ids of "zeta", "alpha", "été" were given in that order.
  EXPECT_EQ(tableLines(*back, u"Sample"),
            (std::vector<std::string>{"zeta\t-32767\t2147483647\t", "alpha\t\t-1\tstream",
                                      "\xc3\xa9t\xc3\xa9\t32767\t\t"}));
  std::vector<std::uint8_t> data;
  ASSERT_TRUE(back->readStream(u"Sample.alpha", data, error)) << error.text;
  EXPECT_EQ(data, (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_TRUE(test::rootStream(dir / "new.msi", u"\u0005System")) << "a system name is not packed";
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

TEST(DatabaseTables, TemporaryColumnsAndRowsAreNeverWritten) {
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
  const std::size_t temporary = table->addRow();
  table->setCell(temporary, 0, db->strings().intern(u"temporary row"));
  table->markTemporary(temporary);
  EXPECT_EQ(db->catalogView(u"_Columns")->rowCount(), 2u);
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;

  auto back = openOrFail(dir / "t.msi", OpenMode::kReadOnly);
  EXPECT_EQ(back->table(0).columns()[1].name, u"Kept");
  EXPECT_EQ(tableLines(*back, u"Held"), std::vector<std::string>{"k\t7"});
  EXPECT_EQ(back->strings().find(u"only in memory"), 0u);
  EXPECT_EQ(back->strings().find(u"temporary row"), 0u);
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
  EXPECT_FALSE(db->removeStream(u"Sample.a"));
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
  const auto path = dir / "bad.msi";
  EXPECT_TRUE(test::editContainer(dir / "good.msi", path, tamper, reason)) << reason;
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
      {u"_Columns", [](Bytes& b) { b[25] ^= 0x20; }, "the first column is not a key"},
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
                                  auto& pool = tableStream(root, u"_StringPool").data;
                                  pool[0] = 0xA4, pool[1] = 0x03, pool[2] = 0;  // code page 932
                                  // A lead byte that ends the text without its trail byte.
                                  tableStream(root, u"_StringData").data.back() = 0x93;
                                }),
                "is not valid in code page 932");
  expectInvalid(tamperedPackage(dir,
                                [](auto& root) {
                                  std::erase_if(root.children, [](auto& c) {
                                    return c.name ==
                                           *storage::encodeStreamName(u"_StringPool", true);
                                  });
                                }),
                "string pool is missing");
}

storage::CompoundNode stream(std::u16string name, std::vector<std::uint8_t> data) {
  storage::CompoundNode node;
  node.name = std::move(name);
  node.data = std::move(data);
  return node;
}

// A storage holding one stream "Inner" of `data`.
storage::CompoundNode storageHolding(std::vector<std::uint8_t> data) {
  storage::CompoundNode node;
  node.isStorage = true;
  node.children.push_back(stream(u"Inner", std::move(data)));
  return node;
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
      {"a storage name too long", OpenMode::kUpdate,
       [](Database& d) { d.setStorage(std::u16string(80, u'S'), storageHolding({1})); },
       kFunctionFailed},
      {"a stream past 4 GiB", OpenMode::kUpdate,
       [&dir](Database& d) {
         std::string reason;
         d.setStreamSource(u"Huge",
                           storage::fileSource(storage::FileSystem::real(), dir / "huge", reason));
       },
       kFunctionFailed},
      {"summary text with a NUL", OpenMode::kUpdate,
       [](Database& d) {
         storage::SummaryInformation info;
         info.properties[storage::kPidTitle] = {storage::SummaryValue::kString, 0,
                                                std::u16string(u"a\0b", 3)};
         d.setSummary(std::move(info));
       },
       kFunctionFailed},
  };
  // Sparse: the stream's size is what matters, not its bytes.
  { std::ofstream(dir / "huge", std::ios::binary); }
  std::filesystem::resize_file(dir / "huge", (4ull << 30) + 1);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    auto opened = openOrFail(dir / "a.msi", c.mode);
    c.edit(*opened);
    EXPECT_EQ(opened->commit(error), c.result) << error.text;
    EXPECT_EQ(test::readFileBytes(dir / "a.msi"), before);
  }
}

// The bytes of "Inner" in storage `name`, as the database reads them.
std::vector<std::uint8_t> innerOf(const Database& db, std::u16string_view name = u"Sub") {
  storage::CompoundNode read;
  Error error;
  EXPECT_TRUE(db.readStorage(name, read, error)) << error.text;
  return read.children.empty() ? std::vector<std::uint8_t>{} : read.children[0].data;
}

TEST(DatabaseStorages, AReplacedStorageIsReadAndSavedInPlaceOfTheOld) {
  test::TempDir dir;
  auto db = openOrFail(dir / "s.msi", OpenMode::kCreate);
  db->setStorage(u"Another", storageHolding({9}));
  db->setStorage(u"Sub", storageHolding({1}));
  Error error;
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  auto reopened = openOrFail(dir / "s.msi", OpenMode::kUpdate);
  EXPECT_EQ(innerOf(*reopened, u"Another"), std::vector<std::uint8_t>{9});
  EXPECT_EQ(innerOf(*reopened), std::vector<std::uint8_t>{1});
  reopened->setStorage(u"Sub", storageHolding({2}));
  EXPECT_EQ(innerOf(*reopened), std::vector<std::uint8_t>{2});
  ASSERT_EQ(reopened->commit(error), kSuccess) << error.text;
  EXPECT_EQ(reopened->storageNames(), (std::vector<std::u16string>{u"Another", u"Sub"}));
  EXPECT_EQ(innerOf(*openOrFail(dir / "s.msi", OpenMode::kReadOnly)), std::vector<std::uint8_t>{2});
}

// A read of a stream or storage still in the opened file that fails is reported, naming it.
TEST(DatabaseReading, AFailedReadOfTheOpenedFileIsAReadFault) {
  test::TempDir dir;
  auto made = openOrFail(dir / "r.msi", OpenMode::kCreate);
  made->setStream(u"Binary.Logo", std::vector<std::uint8_t>(5000, 7));
  made->setStorage(u"Sub", storageHolding({1}));
  Error error;
  ASSERT_EQ(made->commit(error), kSuccess) << error.text;
  test::FaultyFileSystem faulty(storage::FileSystem::real());
  auto db = Database::open(faulty, dir / "r.msi", OpenMode::kReadOnly, error);
  ASSERT_TRUE(db) << error.text;
  const struct {
    const char* name;
    std::function<bool(const Database&, Error&)> read;
  } reads[] = {
      {"Binary.Logo",
       [](const Database& d, Error& e) {
         std::vector<std::uint8_t> out;
         return d.readStream(u"Binary.Logo", out, e);
       }},
      {"Sub",
       [](const Database& d, Error& e) {
         storage::CompoundNode out;
         return d.readStorage(u"Sub", out, e);
       }},
  };
  for (const auto& r : reads) {
    faulty.failAtCall(1);
    EXPECT_FALSE(r.read(*db, error)) << r.name;
    EXPECT_EQ(error.code, kReadFault) << r.name;
    EXPECT_NE(error.text.find(r.name), std::string::npos) << error.text;
  }
}

// Rows marked temporary stay marked as rows are added and removed around them, so a save leaves
// out exactly those rows.
TEST(DatabaseTables, TemporaryRowsStayMarkedAsOtherRowsMove) {
  const struct {
    const char* what;
    std::function<void(Table&)> edit;
    std::vector<std::int32_t> saved;  // the keys of the rows written
  } cases[] = {
      {"rows added after it",
       [](Table& t) {
         t.setCell(t.addRow(), 0, 9);
         t.appendRow(std::vector<std::uint32_t>{8});
         t.markTemporary(4);
       },
       {1, 3, 9}},
      {"the row before it removed", [](Table& t) { t.removeRow(0); }, {3}},
      {"a row with a key already there",
       [](Table& t) { t.appendRow(std::vector<std::uint32_t>{1}); },
       {1, 1, 3}},
      {"the rows around it removed",
       [](Table& t) {
         t.removeRows(std::vector<std::uint32_t>{0, 2});
       },
       {}},
      {"the table cut short before it, then a row added",
       [](Table& t) {
         t.resizeRows(1);
         t.setCell(t.addRow(), 0, 9);
       },
       {1, 9}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Table table(u"T", {Column{u"K", kInteger32 | kKey}});
    for (const std::uint32_t key : {1, 2, 3})
      table.appendRow(std::vector<std::uint32_t>{key});
    table.markTemporary(1);
    c.edit(table);
    std::vector<std::int32_t> saved;
    for (const std::size_t row : table.savedOrder())
      saved.push_back(table.integer(row, 0));
    EXPECT_EQ(saved, c.saved);
  }
}

// A rewrite without edits writes the file it read byte for byte, including what the engine does
// not interpret: signature streams, embedded storages and stray table streams. A table created
// over a stray table stream replaces the stream.
TEST(DatabasePreservation, ARewriteWithoutEditsIsTheSameFile) {
  test::TempDir dir;
  auto db = openOrFail(dir / "plain.msi", OpenMode::kCreate);
  Error error;
  Table* table = db->createTable(
      u"Property", {Column{u"Property", kText | kKey | 72}, Column{u"Value", kInteger16}}, error);
  ASSERT_TRUE(table) << error.text;
  // Keys whose strings are met out of key order, so string ids and key order differ.
  for (int i = 0; i < 100; ++i) {
    const std::u16string key =
        u"k" + std::u16string(1, u'0' + i % 10) + std::u16string(i / 10 + 1, u'x');
    table->appendRow(
        std::vector<std::uint32_t>{db->strings().intern(key), static_cast<std::uint32_t>(i)});
  }
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  std::string reason;
  const auto addUninterpretedEntries = [](storage::CompoundNode& root) {
    root.children.push_back(
        stream(u"\u0005DigitalSignature", std::vector<std::uint8_t>(5000, 0xAB)));
    root.children.push_back(stream(u"\u0005MsiDigitalSignatureEx", {1, 2, 3}));
    root.children.push_back(stream(*storage::encodeStreamName(u"Orphan", true), {9, 9}));
    root.children.push_back(stream(*storage::encodeStreamName(u"Binary.Logo", false), {7}));
    root.children.push_back(stream(u"Binary.Logo", {8}));  // the same name, not packed
    storage::CompoundNode transform = storageHolding({4, 5, 6});
    transform.name = *storage::encodeStreamName(u"Patch1", false);
    transform.clsid = {0x82, 0x10, 0x0C};
    transform.stateBits = 3;
    root.children.push_back(transform);
  };
  ASSERT_TRUE(
      test::editContainer(dir / "plain.msi", dir / "rich.msi", addUninterpretedEntries, reason))
      << reason;

  auto rich = openOrFail(dir / "rich.msi", OpenMode::kUpdate);
  EXPECT_EQ(rich->storageNames(), std::vector<std::u16string>{u"Patch1"});
  EXPECT_TRUE(rich->hasStream(u"Binary.Logo"));
  ASSERT_EQ(rich->saveAs(dir / "copy.msi", error), kSuccess) << error.text;
  EXPECT_EQ(test::readFileBytes(dir / "copy.msi"), test::readFileBytes(dir / "rich.msi"));

  Table* orphan = rich->createTable(
      u"Orphan", {Column{u"Key", kText | kKey | 72}, Column{u"N", kInteger16}}, error);
  ASSERT_TRUE(orphan) << error.text;
  orphan->appendRow(std::vector<std::uint32_t>{rich->strings().intern(u"k"), 5});
  ASSERT_EQ(rich->commit(error), kSuccess) << error.text;
  EXPECT_EQ(test::msiinfoRows(dir / "rich.msi", "Orphan"), std::vector<std::string>{"k\t5"});
}

std::vector<std::string> sorted(std::vector<std::string> lines) {
  std::sort(lines.begin(), lines.end());
  return lines;
}

// A string past 65,535 bytes takes a long entry in the string pool: read from a package msibuild
// wrote, and written for msiinfo to read. Integers at their limits are the oracle walks': the
// OdlexTypes fixture that ExportCommand reads and RewriteCommand writes, and RowsCatalog.
TEST(EngineLimits, AStringPast64KibReadFromMsibuildAndWrittenForMsiinfo) {
  test::TempDir dir;
  // Rows in the order their strings are first met, so the long string has ids after it.
  const std::vector<std::string> rows = {"Alpha\tfirst", "Big\t" + std::string(70000, 'L'),
                                         "Zulu\tlast", "Yankee\tafter"};
  std::string idt = "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\n";
  for (const std::string& row : rows)
    idt += row + "\r\n";
  test::writeFileBytes(dir / "Property.idt", idt);
  const auto built = dir / "built.msi";
  const auto run =
      test::runProcess({"msibuild", built.string(), "-i", (dir / "Property.idt").string()});
  ASSERT_TRUE(run.ok()) << run.describe();
  EXPECT_EQ(sorted(tableLines(*openOrFail(built, OpenMode::kReadOnly), u"Property")), sorted(rows));

  auto db = openOrFail(dir / "written.msi", OpenMode::kCreate);
  Error error;
  Table* table = db->createTable(
      u"Property", {Column{u"Property", kText | kKey | 72}, Column{u"Value", kText | kLocalizable}},
      error);
  ASSERT_TRUE(table) << error.text;
  for (const std::string& row : rows) {
    const std::size_t tab = row.find('\t');
    table->appendRow(
        std::vector<std::uint32_t>{db->strings().intern(Utf8ToUtf16(row.substr(0, tab))),
                                   db->strings().intern(Utf8ToUtf16(row.substr(tab + 1)))});
  }
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  EXPECT_EQ(sorted(test::msiinfoRows(dir / "written.msi", "Property")), sorted(rows));
}

}  // namespace
}  // namespace odlex::engine
