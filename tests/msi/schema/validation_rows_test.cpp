// Describing tables in _Validation: the rows carry the catalog's data, rewriting replaces rather
// than duplicates, an unknown name writes nothing, and msiinfo reads the result (its header is
// the catalog walk's, rows_catalog_test).

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/schema/Schema.h"

namespace odlex::schema {
namespace {

class ValidationRows : public ::testing::Test {
 protected:
  void SetUp() override {
    db_ = engine::Database::open(storage::FileSystem::real(), dir_ / "validation.msi",
                                 engine::Database::OpenMode::kCreate, error_);
    ASSERT_TRUE(db_) << error_.text;
  }

  std::uint32_t write(std::span<const std::u16string_view> tables) {
    return writeValidationRows(*db_, tables, error_);
  }

  // The row of _Validation describing table.column, or -1.
  std::ptrdiff_t rowOf(std::u16string_view table, std::u16string_view column) {
    const engine::Table& validation = *db_->findTable(u"_Validation");
    const std::array<std::uint32_t, 2> key = {db_->strings().find(table),
                                              db_->strings().find(column)};
    return validation.findRow(key);
  }

  test::TempDir dir_;
  engine::Error error_;
  std::unique_ptr<engine::Database> db_;
};

TEST_F(ValidationRows, DescribeEveryColumnAndReadBackThroughMsiinfo) {
  ASSERT_EQ(createTable(*db_, u"Component", error_), engine::kSuccess) << error_.text;
  const std::u16string_view tables[] = {u"Component", u"Shortcut"};
  ASSERT_EQ(write(tables), engine::kSuccess) << error_.text;
  ASSERT_EQ(db_->commit(error_), engine::kSuccess) << error_.text;

  const std::vector<std::string> rows = test::msiinfoRows(dir_ / "validation.msi", "_Validation");
  ASSERT_EQ(rows.size(), 6u + 16u);
  for (const char* row :
       {"Component\tDirectory_\tN\t\t\tDirectory\t1\tIdentifier\t\t"
        "Folder the component is installed into.",
        "Component\tKeyPath\tY\t\t\tFile;Registry;ODBCDataSource\t1\tIdentifier\t\t"
        "File, registry value or data source that marks the component installed.",
        "Shortcut\tIconIndex\tY\t-32767\t32767\t\t\t\t\tIndex of the icon within the icon file.",
        "Shortcut\tShowCmd\tY\t\t\t\t\t\t1;3;7\tWindow state: 1 normal, 3 maximized, 7 minimized."})
    EXPECT_EQ(std::count(rows.begin(), rows.end(), row), 1) << row;
}

TEST_F(ValidationRows, RewritingReplacesTheRowsOfTheSameColumns) {
  const std::u16string_view tables[] = {u"Feature"};
  ASSERT_EQ(write(tables), engine::kSuccess) << error_.text;
  engine::Table& validation = *db_->findTable(u"_Validation");
  ASSERT_EQ(validation.rowCount(), findTable(u"Feature")->columns.size());
  const std::ptrdiff_t title = rowOf(u"Feature", u"Title");
  ASSERT_GE(title, 0);
  const std::size_t description = static_cast<std::size_t>(validation.columnIndex(u"Description"));
  validation.setCell(static_cast<std::size_t>(title), description, db_->strings().intern(u"stale"));

  const std::u16string_view again[] = {u"Feature", u"FeatureComponents"};
  ASSERT_EQ(write(again), engine::kSuccess) << error_.text;
  EXPECT_EQ(validation.rowCount(), findTable(u"Feature")->columns.size() + 2);
  EXPECT_EQ(validation.text(db_->strings(), static_cast<std::size_t>(rowOf(u"Feature", u"Title")),
                            description),
            findTable(u"Feature")->findColumn(u"Title")->description);
}

TEST_F(ValidationRows, AnUnknownTableWritesNothing) {
  const std::u16string_view tables[] = {u"Component", u"NoSuchTable"};
  EXPECT_EQ(write(tables), engine::kInvalidTable);
  EXPECT_EQ(db_->findTable(u"_Validation"), nullptr);
}

}  // namespace
}  // namespace odlex::schema
