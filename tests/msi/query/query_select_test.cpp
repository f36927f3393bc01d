// SELECT against tables built in memory: filtering, null handling, parameters, ordering,
// joins, catalog tables, and the result codes of faulty queries.

#include <gtest/gtest.h>

#include <odlex/support/Utf8.h>

#include <optional>
#include <string>
#include <vector>

#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/query/Diagnostics.h"
#include "msi/query/Query.h"
#include "msi/query/QueryText.h"
#include "storage/FileSystem.h"

namespace odlex::query {
namespace {

namespace type = engine::column_type;

class QueryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    engine::Error error;
    db_ = engine::Database::open(storage::FileSystem::real(), dir_ / "test.msi",
                                 engine::Database::OpenMode::kCreate, error);
    ASSERT_TRUE(db_) << error.text;
    item_ = db_->createTable(u"Item",
                             {{u"Key", type::kText | 72 | type::kKey},
                              {u"Name", type::kText | 64 | type::kNullable},
                              {u"Size", type::kInteger32 | type::kNullable},
                              {u"Flags", type::kInteger16 | type::kNullable},
                              {u"Data", type::kBinary | type::kNullable}},
                             error);
    ASSERT_TRUE(item_) << error.text;
    addItem("a", "Alpha", 10, 1, true);
    addItem("b", "beta", -5, 2, false);
    addItem("c", nullptr, std::nullopt, 1, false);
    addItem("d", "Alpha", 300, std::nullopt, true);
  }

  std::uint32_t text(const char* value) { return value ? db_->strings().intern(utf16(value)) : 0; }
  static std::uint32_t integer(std::optional<std::int32_t> value) {
    return static_cast<std::uint32_t>(value.value_or(engine::kNullInteger));
  }

  void addItem(const char* key, const char* name, std::optional<std::int32_t> size,
               std::optional<std::int32_t> flags, bool data) {
    std::vector<std::uint32_t> row{text(key), text(name), integer(size), integer(flags),
                                   data ? 1u : 0u};
    item_->appendRow(row);
  }

  // Each result row as its fields joined with '|'.
  std::vector<std::string> rows(std::string_view sql, const std::vector<Field>& parameters = {}) {
    engine::Error error;
    auto query = Query::prepare(*db_, utf16(sql), error);
    if (!query) {
      ADD_FAILURE() << sql << ": " << error.text;
      return {};
    }
    EXPECT_EQ(query->execute(parameters, error), engine::kSuccess) << sql << ": " << error.text;
    return fetchAll(*query);
  }

  static std::vector<std::string> fetchAll(Query& query) {
    std::vector<std::string> out;
    Record record;
    while (query.fetch(record) == engine::kSuccess)
      out.push_back(show(record));
    EXPECT_EQ(query.fetch(record), engine::kNoMoreItems);
    return out;
  }

  engine::Error prepareError(std::string_view sql) {
    engine::Error error;
    EXPECT_EQ(Query::prepare(*db_, utf16(sql), error), nullptr) << sql;
    return error;
  }

  engine::Error executeError(std::string_view sql, const std::vector<Field>& parameters) {
    engine::Error error;
    auto query = Query::prepare(*db_, utf16(sql), error);
    if (!query) {
      ADD_FAILURE() << sql << ": " << error.text;
      return error;
    }
    EXPECT_NE(query->execute(parameters, error), engine::kSuccess) << sql;
    Record record;
    EXPECT_EQ(query->fetch(record), engine::kInvalidHandleState);
    return error;
  }

  using Rows = std::vector<std::string>;

  test::TempDir dir_;
  std::unique_ptr<engine::Database> db_;
  engine::Table* item_ = nullptr;
};

// Text compares exactly, integers by value; null satisfies no comparison but IS NULL and = ''.
TEST_F(QueryTest, WhereKeepsTheRowsItsConditionHolds) {
  const std::pair<std::string, Rows> cases[] = {
      {"Name = 'Alpha'", {"a", "d"}},
      {"Name = 'alpha'", {}},
      {"Name = 'not in the pool'", {}},
      {"Name <> 'not in the pool'", {"a", "b", "c", "d"}},
      {"Name <> 'Alpha'", {"b", "c"}},
      // Ordering comparisons read the text; a null name satisfies none of them.
      {"Name < 'B'", {"a", "d"}},
      {"Name > 'Alpha'", {"b"}},
      {"Name >= 'Alpha'", {"a", "b", "d"}},
      {"Name <= 'Alpha'", {"a", "d"}},
      {"'c' < Key", {"d"}},
      {"Size = -5", {"b"}},
      {"Size <> 10", {"b", "c", "d"}},
      {"Size < 10", {"b"}},
      {"Size <= 10", {"a", "b"}},
      {"Size > -2147483647", {"a", "b", "d"}},
      {"Size >= 300", {"d"}},
      {"Flags = 1", {"a", "c"}},
      {"0 > Size", {"b"}},
      {"Size < Flags", {"b"}},
      {"Name IS NULL", {"c"}},
      {"Name = ''", {"c"}},
      {"Name <> ''", {"a", "b", "d"}},
      {"Size IS NULL", {"c"}},
      {"Flags IS NOT NULL", {"a", "b", "c"}},
      {"Data IS NULL", {"b", "c"}},
      {"Data IS NOT NULL", {"a", "d"}},
      {"Name = 'Alpha' AND Size > 100", {"d"}},
      {"Key = 'b' OR Flags IS NULL", {"b", "d"}},
      {"Flags = 1 AND (Size IS NULL OR Size > 100)", {"c"}},
      {"Flags = 1 AND Size IS NULL OR Size > 100", {"c", "d"}},
      {"((Key = 'a') OR (Key = 'c')) AND Flags = 1", {"a", "c"}},
  };
  for (const auto& [where, keys] : cases)
    EXPECT_EQ(rows("SELECT Key FROM Item WHERE " + where), keys) << where;
}

TEST_F(QueryTest, RejectsUnfitParameters) {
  EXPECT_EQ(executeError("SELECT Key FROM Item WHERE Name = ? AND Size = ?", {Field::null()}).code,
            engine::kInvalidField);
  engine::Error error =
      executeError("SELECT Key FROM Item WHERE Size = ?", {Field::ofString(u"1")});
  EXPECT_EQ(error.code, engine::kDatatypeMismatch);
  EXPECT_EQ(error.text,
            "line 1, column 35: parameter 1 must be an integer or null for this comparison");
  EXPECT_EQ(executeError("SELECT Key FROM Item WHERE Name = ?", {Field::ofInteger(1)}).code,
            engine::kDatatypeMismatch);
  EXPECT_EQ(executeError("SELECT Key FROM Item WHERE Name = ?", {Field::ofStream(u"Item.a")}).code,
            engine::kDatatypeMismatch);
}

TEST_F(QueryTest, OrdersWithNullsFirstAndStableTies) {
  EXPECT_EQ(rows("SELECT Key FROM Item ORDER BY Name"), (Rows{"c", "a", "d", "b"}));
  EXPECT_EQ(rows("SELECT Key FROM Item ORDER BY Size"), (Rows{"c", "b", "a", "d"}));
  EXPECT_EQ(rows("SELECT Key FROM Item ORDER BY Flags, Key"), (Rows{"d", "a", "c", "b"}));
  EXPECT_EQ(rows("SELECT Key FROM Item ORDER BY Name, Size"), (Rows{"c", "a", "d", "b"}));
  EXPECT_EQ(rows("SELECT Key FROM Item WHERE Size <> 300 ORDER BY Name, Size"),
            (Rows{"c", "a", "b"}));
  addItem("0", "Alpha", 5, 7, false);
  EXPECT_EQ(rows("SELECT Key FROM Item ORDER BY Name, Size"), (Rows{"c", "0", "a", "d", "b"}));
  EXPECT_EQ(rows("SELECT Key FROM Item ORDER BY Name"), (Rows{"c", "a", "d", "0", "b"}));
}

TEST_F(QueryTest, DistinctDropsRepeatedRows) {
  EXPECT_EQ(rows("SELECT DISTINCT Name FROM Item"), (Rows{"Alpha", "beta", "null"}));
  EXPECT_EQ(rows("SELECT DISTINCT Flags FROM Item ORDER BY Flags"), (Rows{"null", "1", "2"}));
  EXPECT_EQ(rows("SELECT DISTINCT Name, Data FROM Item"),
            (Rows{"Alpha|stream:Item.a", "beta|null", "null|null", "Alpha|stream:Item.d"}));
}

// A prepared query runs on the tables as they are at each execute: a string first held after
// the prepare is matched, the result is a copy taken at the execute, and a table dropped or made
// again with other columns is refused.
TEST_F(QueryTest, ResultIsTheTableAtExecute) {
  engine::Error error;
  auto query =
      Query::prepare(*db_, u"SELECT Key, Size FROM Item WHERE Flags = 1 OR Name = 'Gamma'", error);
  ASSERT_TRUE(query);
  Record record;
  EXPECT_EQ(query->fetch(record), engine::kInvalidHandleState);
  ASSERT_EQ(query->execute(error), engine::kSuccess);
  EXPECT_EQ(query->rowCount(), 2u);
  item_->setCell(0, 2, 999);
  item_->clearRows();
  EXPECT_EQ(fetchAll(*query), (Rows{"a|10", "c|null"}));
  addItem("e", "Gamma", 5, 2, false);
  ASSERT_EQ(query->execute(error), engine::kSuccess);
  EXPECT_EQ(fetchAll(*query), (Rows{"e|5"}));

  ASSERT_TRUE(db_->dropTable(u"Item"));
  EXPECT_EQ(query->execute(error), engine::kInvalidTable);
  EXPECT_EQ(query->fetch(record), engine::kInvalidHandleState);
  ASSERT_TRUE(db_->createTable(u"Item", {{u"Key", type::kInteger16 | type::kKey}}, error));
  EXPECT_EQ(query->execute(error), engine::kFunctionFailed);
}

TEST_F(QueryTest, JoinsTables) {
  engine::Error error;
  engine::Table* part = db_->createTable(
      u"Part", {{u"Part", type::kText | 72 | type::kKey}, {u"Item_", type::kText | 72}}, error);
  ASSERT_TRUE(part) << error.text;
  for (auto [name, owner] : {std::pair{"p1", "a"}, {"p2", "d"}, {"p3", "a"}, {"p4", "zz"}}) {
    part->appendRow(std::vector<std::uint32_t>{text(name), text(owner)});
  }
  EXPECT_EQ(rows("SELECT Part, Name FROM Item, Part WHERE Item.Key = Part.Item_ ORDER BY Part"),
            (Rows{"p1|Alpha", "p2|Alpha", "p3|Alpha"}));
  EXPECT_EQ(rows("SELECT `Part`.`Part`, Size FROM Part, Item WHERE Item_ = Key AND Size > 100"),
            (Rows{"p2|300"}));
  EXPECT_EQ(rows("SELECT DISTINCT Key FROM Item, Part WHERE Key = Item_"), (Rows{"a", "d"}));
  EXPECT_EQ(rows("SELECT * FROM Part, Item WHERE Part = 'p4' AND Key = 'b'"),
            (Rows{"p4|zz|b|beta|-5|2|null"}));
}

TEST_F(QueryTest, ReadsCatalogTables) {
  db_->setStream(u"Item.a", {1, 2, 3});
  db_->setStream(u"Readme", {4});
  EXPECT_EQ(rows("SELECT * FROM _Tables"), (Rows{"Item"}));
  EXPECT_EQ(rows("SELECT `Name`, `Number` FROM `_Columns` WHERE `Table` = 'Item' AND "
                 "`Number` >= 4 ORDER BY `Number`"),
            (Rows{"Flags|4", "Data|5"}));
  EXPECT_EQ(rows("SELECT Name, Data FROM _Streams WHERE Name = 'Readme'"),
            (Rows{"Readme|stream:Readme"}));
  EXPECT_EQ(rows("SELECT Name FROM _Storages"), Rows{});
}

// Unknown names and comparisons of mismatched types are refused at prepare, with their place
// (the text is checked where it is given).
TEST_F(QueryTest, RefusesUnknownNamesAndMismatchedTypes) {
  struct Case {
    const char* sql;
    std::uint32_t code;
    const char* text;
  };
  const auto syntax = engine::kBadQuerySyntax;
  const Case cases[] = {
      {"SELECT Key FROM Items", engine::kInvalidTable, "line 1, column 17: unknown table 'Items'"},
      {"SELECT Key FROM Item WHERE Nmae = 'x'", syntax, "line 1, column 28: unknown column 'Nmae'"},
      {"SELECT key FROM Item", syntax, ""},
      {"SELECT Other.Key FROM Item", syntax,
       "line 1, column 8: table 'Other' is not in the FROM list"},
      {"SELECT Key FROM Item, _Tables ORDER BY Name", syntax,
       "line 1, column 40: column 'Name' is ambiguous: qualify it with its table"},
      {"SELECT Key FROM Item, Item", syntax, ""},
      {"SELECT Key FROM Item WHERE Key = 'a' FORM", syntax, ""},
      {"SELECT Key FROM Item WHERE Size = '10'", syntax,
       "line 1, column 35: cannot compare integer column 'Size' with text value"},
      {"SELECT Key FROM Item WHERE Name = 1", syntax, ""},
      {"SELECT Key FROM Item WHERE Name = Size", syntax, ""},
      {"SELECT Key FROM Item WHERE Data = ?", syntax, ""},
      {"SELECT Key FROM Item WHERE Key = Data", syntax, ""},
      {"SELECT Key FROM Item WHERE 1 = 1", syntax, ""},
  };
  for (const Case& c : cases) {
    const engine::Error error = prepareError(c.sql);
    EXPECT_EQ(error.code, c.code) << c.sql;
    if (*c.text) {
      EXPECT_EQ(error.text, c.text);
    }
  }
}

TEST_F(QueryTest, FindsRowsAmongManyAndBoundsJoins) {
  engine::Error error;
  engine::Table* big = db_->createTable(
      u"Big", {{u"Key", type::kText | 72 | type::kKey}, {u"Value", type::kInteger32}}, error);
  engine::Table* link = db_->createTable(
      u"Link", {{u"Id", type::kInteger32 | type::kKey}, {u"Big_", type::kText | 72}}, error);
  ASSERT_TRUE(big && link);
  constexpr int kRows = 100000;
  big->reserveRows(kRows);
  for (int i = 0; i < kRows; ++i) {
    std::uint32_t key = text(("k" + std::to_string(i)).c_str());
    big->appendRow(std::vector<std::uint32_t>{key, static_cast<std::uint32_t>(i)});
    if (i % 50 == 0)
      link->appendRow(std::vector<std::uint32_t>{static_cast<std::uint32_t>(i), key});
  }
  EXPECT_EQ(rows("SELECT Value FROM Big WHERE Key = 'k77777'"), (Rows{"77777"}));
  EXPECT_EQ(rows("SELECT Key FROM Big WHERE Value >= 99998 ORDER BY Value"),
            (Rows{"k99998", "k99999"}));
  // 100,000 x 2,000 combinations, but the link narrows each Big row to its one Link row.
  EXPECT_EQ(rows("SELECT Id FROM Big, Link WHERE Big_ = Key AND Value > 99900"), (Rows{"99950"}));
  // Without a link the same join is refused rather than run for ever.
  EXPECT_EQ(executeError("SELECT Id FROM Big, Link WHERE Value < Id", {}).code,
            engine::kFunctionFailed);
}

}  // namespace
}  // namespace odlex::query
