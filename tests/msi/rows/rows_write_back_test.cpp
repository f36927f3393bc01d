// Persist writes rows that did not change since they were read from the database's cells
// instead of their values: what reaches the database must be the same either way.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "common/PathText.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"

namespace odlex::test {
namespace {

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
