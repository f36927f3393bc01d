// Applying transforms built here byte by byte from the installer's documented layout (a string
// pool, per-table streams of masked records, _Tables/_Columns records, summary information), so
// that the reader is checked against the format rather than against our own writer.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "msi/engine/ByteIo.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "msi/transform/Transform.h"
#include "storage/MemoryFileSystem.h"
#include "storage/StreamName.h"
#include "storage/SummaryInformation.h"

namespace odlex::transform {
namespace {

namespace ct = engine::column_type;

// A transform assembled from raw records.
class HandTransform {
 public:
  std::uint32_t codePage = 1252;
  std::optional<std::uint32_t> characterCount;

  // A string reference cell.
  std::vector<std::uint8_t> str(const std::u16string& text) {
    std::size_t id = 1;
    while (id <= strings_.size() && strings_[id - 1] != text)
      ++id;
    if (id > strings_.size())
      strings_.push_back(text);
    return {static_cast<std::uint8_t>(id), static_cast<std::uint8_t>(id >> 8)};
  }
  static std::vector<std::uint8_t> i2(int value) {
    const auto raw = static_cast<std::uint16_t>(value + 0x8000);
    return {static_cast<std::uint8_t>(raw), static_cast<std::uint8_t>(raw >> 8)};
  }
  void record(const std::u16string& table, std::uint16_t mask,
              std::vector<std::vector<std::uint8_t>> cells) {
    std::vector<std::uint8_t>& bytes = tables_[table];
    engine::appendLe16(bytes, mask);
    for (const auto& cell : cells)
      bytes.insert(bytes.end(), cell.begin(), cell.end());
  }

  storage::CompoundNode tree() const {
    storage::CompoundNode root;
    root.isStorage = true;
    root.name = u"Root Entry";
    std::vector<std::uint8_t> pool, data;
    engine::appendLe(pool, codePage, 4);
    for (const std::u16string& text : strings_) {
      engine::appendLe16(pool, static_cast<std::uint16_t>(text.size()));
      engine::appendLe16(pool, 1);
      for (char16_t unit : text)
        data.push_back(static_cast<std::uint8_t>(unit));
    }
    add(root, *storage::encodeStreamName(u"_StringPool", true), pool);
    add(root, *storage::encodeStreamName(u"_StringData", true), data);
    for (const auto& [table, bytes] : tables_)
      add(root, *storage::encodeStreamName(table, true), bytes);
    if (characterCount) {
      storage::SummaryInformation summary;
      summary.properties[storage::kPidCharacterCount].integer =
          static_cast<std::int32_t>(*characterCount);
      std::vector<std::uint8_t> bytes;
      std::string error;
      EXPECT_TRUE(storage::writeSummaryInformation(summary, bytes, error)) << error;
      add(root, u"\u0005SummaryInformation", bytes);
    }
    return root;
  }

 private:
  static void add(storage::CompoundNode& root, std::u16string name,
                  std::vector<std::uint8_t> bytes) {
    storage::CompoundNode node;
    node.name = std::move(name);
    node.data = std::move(bytes);
    root.children.push_back(std::move(node));
  }

  std::vector<std::u16string> strings_;
  std::map<std::u16string, std::vector<std::uint8_t>> tables_;
};

// A database with Property rows KEEP=k, OLD=o, GONE=g.
std::unique_ptr<engine::Database> baseDatabase(storage::MemoryFileSystem& fs) {
  engine::Error error;
  auto db = engine::Database::open(fs, "base.msi", engine::Database::OpenMode::kCreate, error);
  engine::Table* table = db->createTable(
      u"Property", {{u"Property", ct::kText | ct::kKey | 72}, {u"Value", ct::kText}}, error);
  for (auto [name, value] : {std::pair{u"KEEP", u"k"}, {u"OLD", u"o"}, {u"GONE", u"g"}})
    table->appendRow(
        std::vector<std::uint32_t>{db->strings().intern(name), db->strings().intern(value)});
  return db;
}

// Table `name` as .idt data lines, sorted.
std::vector<std::string> rowsOf(const engine::Database& db, std::u16string_view name) {
  std::vector<std::string> rows = engine::tableLines(db, name);
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::uint32_t apply(engine::Database& db, const HandTransform& transform, std::uint32_t suppress,
                    std::vector<Conflict>& conflicts) {
  DecodedTransform decoded;
  engine::Error error;
  EXPECT_TRUE(decodeTransform(transform.tree(), db, decoded, error)) << error.text;
  return applyTransform(db, decoded, suppress, conflicts, error);
}

TEST(HandBuiltTransform, AddsUpdatesDeletesRowsAndAddsATable) {
  storage::MemoryFileSystem fs;
  auto db = baseDatabase(fs);
  HandTransform t;
  t.record(u"Property", 0x0201, {t.str(u"NEW"), t.str(u"v")});        // insert, 2 columns
  t.record(u"Property", 0x0002, {t.str(u"OLD"), t.str(u"changed")});  // update column 2
  t.record(u"Property", 0x0000, {t.str(u"GONE")});                    // delete
  t.record(u"_Tables", 0x0101, {t.str(u"Extra")});
  t.record(u"_Columns", 0x0401,
           {t.str(u"Extra"), t.i2(1), t.str(u"Id"), t.i2(ct::kText | ct::kKey | 32)});
  t.record(u"_Columns", 0x0401,
           {t.str(u"Extra"), t.i2(2), t.str(u"Count"), t.i2(ct::kInteger16 | ct::kNullable)});
  t.record(u"Extra", 0x0201, {t.str(u"a"), t.i2(5)});
  t.record(u"Extra", 0x0101, {t.str(u"b")});  // insert of the key alone: Count is null
  std::vector<Conflict> conflicts;
  ASSERT_EQ(apply(*db, t, 0, conflicts), engine::kSuccess);
  EXPECT_TRUE(conflicts.empty());
  EXPECT_EQ(rowsOf(*db, u"Property"),
            (std::vector<std::string>{"KEEP\tk", "NEW\tv", "OLD\tchanged"}));
  EXPECT_EQ(rowsOf(*db, u"Extra"), (std::vector<std::string>{"a\t5", "b\t"}));
}

// Error conditions only a hand-built transform meets: one the transform's own summary information
// suppresses, and a table added again without its columns. Unsuppressed, the transform fails and
// changes nothing; suppressed, it applies, with the condition listed as skipped. The conditions
// that transforms our writer makes can meet are
// TransformEngines.ApplyWithEachErrorConditionSuppressed's.
TEST(HandBuiltTransform, ErrorConditions) {
  struct Case {
    const char* name;
    std::uint32_t condition;
    bool suppressedByTransform;
    std::function<void(HandTransform&)> build;
    std::vector<std::string> propertyAfter;  // when suppressed
  };
  const std::vector<std::string> unchanged = {"GONE\tg", "KEEP\tk", "OLD\to"};
  const std::vector<Case> cases = {
      {"add existing row, named by the transform",
       kAddExistingRow,
       true,
       [](HandTransform& t) {
         t.record(u"Property", 0x0201, {t.str(u"KEEP"), t.str(u"new")});
       },
       {"GONE\tg", "KEEP\tnew", "OLD\to"}},
      {"add existing table", kAddExistingTable, false,
       [](HandTransform& t) { t.record(u"_Tables", 0x0101, {t.str(u"Property")}); }, unchanged},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    for (bool suppressed : {false, true}) {
      storage::MemoryFileSystem fs;
      auto db = baseDatabase(fs);
      HandTransform t;
      test.build(t);
      if (suppressed && test.suppressedByTransform)
        t.characterCount = test.condition;
      const std::uint32_t suppress = suppressed && !test.suppressedByTransform ? test.condition : 0;
      std::vector<Conflict> conflicts;
      const std::uint32_t result = apply(*db, t, suppress, conflicts);
      ASSERT_EQ(conflicts.size(), 1u);
      EXPECT_EQ(conflicts[0].condition, test.condition);
      EXPECT_EQ(conflicts[0].suppressed, suppressed);
      EXPECT_EQ(result, suppressed ? engine::kSuccess : engine::kTransformFailure);
      EXPECT_EQ(rowsOf(*db, u"Property"), suppressed ? test.propertyAfter : unchanged);
    }
  }
}

// Damaged transforms are refused with a reason, never read past their end.
TEST(HandBuiltTransform, DamagedRecordsAreRefused) {
  const std::vector<std::pair<const char*, std::function<void(HandTransform&)>>> cases = {
      {"record cut short", [](HandTransform& t) { t.record(u"Property", 0x0201, {t.str(u"A")}); }},
      {"insert of too many columns",
       [](HandTransform& t) {
         t.record(u"Property", 0x0301, {t.str(u"A"), t.str(u"B"), {0, 0}});
       }},
      {"string beyond the pool",
       [](HandTransform& t) {
         t.record(u"Property", 0, {{0x50, 0x00}});
       }},
      {"update of a column the table lacks",
       [](HandTransform& t) {
         t.record(u"Property", 0x0004, {t.str(u"A"), t.str(u"B")});
       }},
      {"unknown table", [](HandTransform& t) { t.record(u"Nope", 0, {t.str(u"A")}); }},
  };
  for (const auto& [name, build] : cases) {
    SCOPED_TRACE(name);
    storage::MemoryFileSystem fs;
    auto db = baseDatabase(fs);
    HandTransform t;
    build(t);
    DecodedTransform decoded;
    engine::Error error;
    EXPECT_FALSE(decodeTransform(t.tree(), *db, decoded, error));
    EXPECT_EQ(error.code, engine::kTransformFailure);
  }
}

}  // namespace
}  // namespace odlex::transform
