// Rows handed out by table objects stay valid, or leave visibly, across loads, reloads,
// rollbacks, saves, key changes and copies of the table object.

#include <functional>
#include <map>
#include <memory>
#include <tuple>

#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

MSIEError errorRow(short number, const char16_t* message) {
  MSIEError row(number);
  row.SetMessage(message);
  return row;
}

// The Error rows of the package at `path` as the file holds them.
std::map<int, std::string> savedErrors(const std::filesystem::path& path) {
  MSIDatabase db(text(path), MSIDatabase::ePersistReadOnly);
  MSITError table;
  table.SetDatabase(db);
  EXPECT_TRUE(table.Populate());
  std::map<int, std::string> rows;
  for (RWCollectable* item : table.GetTable()) {
    const auto& row = static_cast<const MSIEError&>(*item);
    rows[row.GetError()] = row.GetMessage().ToUtf8();
  }
  return rows;
}

class TableObjectLifetimeTest : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    db_ = &openPackage();
  }

  // Saves Error rows 1 and 2 and opens the package again.
  void saveTwoErrors() {
    db_->GetError().Add(errorRow(1, u"one"));
    db_->GetError().Add(errorRow(2, u"two"));
    ASSERT_TRUE(db_->SaveChanges());
    db_->RemoveFromList(false);
    db_ = &openPackage();
  }

  ODLEXDatabase* db_ = nullptr;
};

TEST_F(TableObjectLifetimeTest, TempEntriesLeaveWithTheirRows) {
  using DropRows = std::function<void(ODLEXDatabase&, MSIEError&)>;
  // The last way keeps the added row, so it comes last.
  const std::vector<std::tuple<const char*, DropRows, std::size_t>> ways = {
      {"unload", [](ODLEXDatabase& db, MSIEError&) { db.GetError().Unload(); }, 0},
      {"reload", [](ODLEXDatabase& db, MSIEError&) { db.Reload(); }, 0},
      {"rollback", [](ODLEXDatabase& db, MSIEError&) { db.Rollback(); }, 0},
      {"save a deleted row",
       [](ODLEXDatabase& db, MSIEError& row) {
         db.GetError().Delete(row);
         db.SaveChanges();
       },
       0},
      {"save another row deleted",
       [](ODLEXDatabase& db, MSIEError& row) {
         ODLEXTError& errors = db.GetError();
         MSIEError& other = addRow(errors, errorRow(8, u"other"));
         errors.SetTempEntries(&row);
         errors.Delete(other);
         db.SaveChanges();
       },
       1},
  };
  for (const auto& [name, dropRows, kept] : ways) {
    SCOPED_TRACE(name);
    MSIEError& added = addRow(db_->GetError(), errorRow(9, u"added"));
    dropRows(*db_, added);
    EXPECT_EQ(db_->GetError().GetTempEntries().entries(), kept);
  }
}

TEST_F(TableObjectLifetimeTest, RowsEditedBeforeTheTableIsLoadedAreKept) {
  saveTwoErrors();
  auto& bound = static_cast<ODLEXTError&>(db_->GetTableObject(ODLEXTObject::eError, false));
  ASSERT_FALSE(bound.IsLoaded());
  MSIEError& added = addRow(bound, errorRow(3, u"three"));
  MSIEError& replacing = addRow(bound, errorRow(2, u"second two"));
  db_->GetError();  // loads the table
  EXPECT_EQ(itemsOf(bound.GetEntries()).count(&added), 1u);
  EXPECT_EQ(replacing.GetMessage(), u"second two");
  ASSERT_TRUE(db_->SaveChanges());
  EXPECT_EQ(savedErrors(package()),
            (std::map<int, std::string>{{1, "one"}, {2, "second two"}, {3, "three"}}));
}

TEST_F(TableObjectLifetimeTest, KeyChangesToAKeyAnotherRowHoldsChangeNothing) {
  saveTwoErrors();
  ODLEXTError& errors = db_->GetError();
  ASSERT_TRUE(errors.Lookup(short{1}));
  MSIEError& one = *errors.Lookup(short{1});
  EXPECT_FALSE(errors.Change(one, errorRow(2, u"clash")));
  EXPECT_EQ(errors.GetTempEntries().entries(), 0u);
  EXPECT_FALSE(one.IsDeleted());
  EXPECT_FALSE(one.SetError(2));
  EXPECT_EQ(one.GetError(), 1);

  // Renaming every row while walking the table meets each row once, under its first key.
  std::vector<int> met;
  for (RWCollectable* item : errors.GetEntries()) {
    auto& row = static_cast<MSIEError&>(*item);
    met.push_back(row.GetError());
    EXPECT_TRUE(row.SetError(static_cast<short>(row.GetError() + 10)));
  }
  EXPECT_EQ(met, (std::vector<int>{1, 2}));
  ASSERT_TRUE(db_->SaveChanges());
  EXPECT_EQ(savedErrors(package()), (std::map<int, std::string>{{11, "one"}, {12, "two"}}));
}

TEST_F(TableObjectLifetimeTest, ACopyMadeBeforeAReloadEditsTheReloadedTable) {
  std::unique_ptr<ODLEXTError> copy(static_cast<ODLEXTError*>(db_->GetError().copy()));
  db_->Reload();
  copy->Add(errorRow(7, u"from the copy"));
  EXPECT_TRUE(db_->IsModified());
  ASSERT_TRUE(db_->SaveChanges());
  EXPECT_EQ(savedErrors(package()), (std::map<int, std::string>{{7, "from the copy"}}));
}

}  // namespace
}  // namespace odlex::test
