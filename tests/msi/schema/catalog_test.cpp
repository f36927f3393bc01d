// The schema catalog on its own: lookups find exactly the named table, every table is well
// formed, and references between tables point at columns that exist. That it holds the table of
// every table object, with the schema versions the database allows, is checked by the database
// tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"

namespace odlex::schema {
namespace {

using engine::toUtf8;

std::vector<std::u16string_view> splitList(std::u16string_view list) {
  std::vector<std::u16string_view> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(u';'), list.size());
    parts.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

bool isIdentifier(std::u16string_view text) {
  if (text.empty() || (text[0] >= u'0' && text[0] <= u'9'))
    return false;
  return std::all_of(text.begin(), text.end(), [](char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_';
  });
}

TEST(Catalog, LookupIsExactAndFindsEveryEntry) {
  for (const TableSchema& table : allTables())
    EXPECT_EQ(findTable(table.name), &table);
  EXPECT_EQ(findTable(u"component"), nullptr);
  EXPECT_EQ(findTable(u"Component "), nullptr);
  EXPECT_EQ(findTable(u""), nullptr);
  EXPECT_EQ(findTable(u"NoSuchTable"), nullptr);
  const TableSchema& component = *findTable(u"Component");
  EXPECT_EQ(component.findColumn(u"KeyPath"), &component.columns[5]);
  EXPECT_EQ(component.findColumn(u"keypath"), nullptr);
}

// What the database and _Validation can hold: 1 to 32 columns with the keys first, names that
// fit _Validation's 32-character Table and Column cells, texts that fit its 255-character cells,
// and accessors that make distinct C++ names.
TEST(Catalog, EveryTableIsWellFormed) {
  for (const TableSchema& table : allTables()) {
    SCOPED_TRACE(toUtf8(table.name));
    EXPECT_LE(table.name.size(), 32u);
    ASSERT_FALSE(table.columns.empty());
    EXPECT_LE(table.columns.size(), 32u);
    EXPECT_TRUE(table.columns.front().key());
    std::set<std::u16string_view> names;
    std::set<std::u16string_view> accessors;
    bool keysEnded = false;
    for (const ColumnSchema& column : table.columns) {
      SCOPED_TRACE(toUtf8(column.name));
      EXPECT_TRUE(names.insert(column.name).second) << "duplicate column";
      EXPECT_TRUE(accessors.insert(column.accessor).second) << "duplicate accessor";
      EXPECT_TRUE(isIdentifier(column.accessor));
      EXPECT_FALSE(column.key() && keysEnded) << "key column after a non-key column";
      keysEnded = !column.key();
      EXPECT_LE(column.name.size(), 32u);
      EXPECT_FALSE(column.description.empty());
      EXPECT_LE(column.description.size(), 255u);
      EXPECT_LE(column.set.size(), 255u);
      EXPECT_LE(column.keyTable.size(), 255u);
      EXPECT_LE(column.category.size(), 32u);
      if (!column.engineColumn().isInteger()) {
        EXPECT_FALSE(column.minValue || column.maxValue) << "bounds on a non-integer column";
      }
      if (column.minValue && column.maxValue) {
        EXPECT_LE(*column.minValue, *column.maxValue);
      }
    }
  }
}

// A reference names tables of the catalog and a key column of each of them that holds the same
// kind of value (text or integer) as the referring column.
TEST(Catalog, ForeignKeysNameKeyColumnsOfCatalogTables) {
  for (const TableSchema& table : allTables()) {
    for (const ColumnSchema& column : table.columns) {
      SCOPED_TRACE(toUtf8(table.name) + "." + toUtf8(column.name));
      EXPECT_EQ(column.keyTable.empty(), column.keyColumn == 0);
      for (std::u16string_view target : splitList(column.keyTable)) {
        const TableSchema* referred = findTable(target);
        ASSERT_NE(referred, nullptr) << toUtf8(target) << " is not in the catalog";
        ASSERT_GE(column.keyColumn, 1);
        ASSERT_LE(static_cast<std::size_t>(column.keyColumn), referred->columns.size());
        const ColumnSchema& key = referred->columns[column.keyColumn - 1];
        EXPECT_TRUE(key.key()) << toUtf8(target) << "." << toUtf8(key.name) << " is not a key";
        EXPECT_EQ(key.engineColumn().isInteger(), column.engineColumn().isInteger());
      }
    }
  }
}

// The flags that mark system and merge-module tables.
TEST(Catalog, FlagsMarkSystemAndModuleTables) {
  const std::set<std::u16string_view> system = {u"_Tables",       u"_Columns",
                                                u"_Validation",   u"_Streams",
                                                u"_Storages",     u"_SummaryInformation",
                                                u"_TransformView"};
  for (const TableSchema& table : allTables()) {
    EXPECT_EQ(table.system(), system.contains(table.name)) << toUtf8(table.name);
    if (table.name.starts_with(u"Module") && table.name.ends_with(u"Sequence")) {
      EXPECT_TRUE(table.mergeModuleOnly()) << toUtf8(table.name);
    }
  }
  EXPECT_TRUE(findTable(u"_TransformView")->temporary());
  EXPECT_FALSE(findTable(u"ModuleSignature")->mergeModuleOnly());
}

}  // namespace
}  // namespace odlex::schema
