// The catalog data of StandardTables.def laid out as constant arrays, one column array per
// table and one table array, with a name index sorted at compile time.

#include <algorithm>
#include <array>
#include <numeric>

#include "msi/schema/Schema.h"
#include "msi/schema/TypeWord.h"

namespace odlex::schema {
namespace {

constexpr std::optional<std::int32_t> limit(std::int32_t value) {
  return value == kNoLimit ? std::nullopt : std::optional<std::int32_t>(value);
}

#define ODLEX_CATALOG_COLUMN(column, accessor, type, isKey, keyTable, keyColumn, category, set, \
                             min, max, description)                                             \
  ColumnSchema{u"" #column,    u"" #accessor, catalogColumnType(type, isKey),                   \
               u"" keyTable,   keyColumn,     u"" category,                                     \
               u"" set,        limit(min),    limit(max),                                       \
               u"" description},

#define ODLEX_TABLE(table, since, flags) constexpr ColumnSchema k##table##Columns[] = {
#define ODLEX_KEY(table, column, accessor, type, ...) \
  ODLEX_CATALOG_COLUMN(column, accessor, type, true, __VA_ARGS__)
#define ODLEX_COLUMN(table, column, accessor, type, ...) \
  ODLEX_CATALOG_COLUMN(column, accessor, type, false, __VA_ARGS__)
#define ODLEX_TABLE_END(table) \
  }                            \
  ;
#include "msi/schema/StandardTables.def"
#undef ODLEX_TABLE
#undef ODLEX_KEY
#undef ODLEX_COLUMN
#undef ODLEX_TABLE_END

constexpr TableSchema kTables[] = {
#define ODLEX_TABLE(table, since, flags) TableSchema{u"" #table, k##table##Columns, since, flags},
#define ODLEX_KEY(...)
#define ODLEX_COLUMN(...)
#define ODLEX_TABLE_END(table)
#include "msi/schema/StandardTables.def"
#undef ODLEX_TABLE
#undef ODLEX_KEY
#undef ODLEX_COLUMN
#undef ODLEX_TABLE_END
};

#undef ODLEX_CATALOG_COLUMN

// Indexes into kTables in name order.
constexpr auto kByName = [] {
  std::array<std::size_t, std::size(kTables)> order{};
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [](std::size_t a, std::size_t b) { return kTables[a].name < kTables[b].name; });
  return order;
}();

constexpr bool namesAreUnique() {
  for (std::size_t i = 1; i < kByName.size(); ++i) {
    if (kTables[kByName[i - 1]].name == kTables[kByName[i]].name)
      return false;
  }
  return true;
}
static_assert(namesAreUnique(), "StandardTables.def names a table twice");

}  // namespace

std::span<const TableSchema> allTables() {
  return kTables;
}

const TableSchema* findTable(std::u16string_view name) {
  auto found = std::lower_bound(
      kByName.begin(), kByName.end(), name,
      [](std::size_t index, std::u16string_view wanted) { return kTables[index].name < wanted; });
  if (found == kByName.end() || kTables[*found].name != name)
    return nullptr;
  return &kTables[*found];
}

const ColumnSchema* TableSchema::findColumn(std::u16string_view wanted) const {
  auto found = std::find_if(columns.begin(), columns.end(),
                            [wanted](const ColumnSchema& column) { return column.name == wanted; });
  return found == columns.end() ? nullptr : &*found;
}

std::vector<engine::Column> engineColumns(const TableSchema& table) {
  std::vector<engine::Column> columns;
  columns.reserve(table.columns.size());
  for (const ColumnSchema& column : table.columns)
    columns.push_back(column.engineColumn());
  return columns;
}

}  // namespace odlex::schema
