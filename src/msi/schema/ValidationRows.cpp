// Describing catalog tables in the database's _Validation table, the installer's record of
// what each column may hold.

#include <array>

#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"

namespace odlex::schema {
namespace {

constexpr std::u16string_view kValidation = u"_Validation";

// Positions of the _Validation columns in the database's table, found by name so that a table
// written by another tool with its columns in another order is filled correctly.
enum Field {
  kTable,
  kColumn,
  kNullable,
  kMin,
  kMax,
  kKeyTable,
  kKeyColumn,
  kCategory,
  kSet,
  kDescription,
  kFieldCount
};
constexpr std::array<std::u16string_view, kFieldCount> kFieldNames = {
    u"Table",    u"Column",    u"Nullable", u"MinValue", u"MaxValue",
    u"KeyTable", u"KeyColumn", u"Category", u"Set",      u"Description"};

// The database's _Validation table, created from the catalog when missing.
engine::Table* validationTable(engine::Database& db, engine::Error& error) {
  if (engine::Table* existing = db.findTable(kValidation))
    return existing;
  return db.createTable(std::u16string(kValidation), engineColumns(*findTable(kValidation)), error);
}

bool locateFields(const engine::Table& table, std::array<std::size_t, kFieldCount>& fields,
                  engine::Error& error) {
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    const int index = table.columnIndex(kFieldNames[field]);
    if (index < 0) {
      error = {engine::kInvalidTable, "the database's _Validation table has no column " +
                                          engine::toUtf8(kFieldNames[field])};
      return false;
    }
    fields[field] = static_cast<std::size_t>(index);
  }
  return true;
}

std::uint32_t integerCell(const std::optional<std::int32_t>& value) {
  return static_cast<std::uint32_t>(value.value_or(engine::kNullInteger));
}

// Adds the row describing `column` of `table`, or overwrites the row already describing it.
void describeColumn(engine::Database& db, engine::Table& validation,
                    const std::array<std::size_t, kFieldCount>& fields, const TableSchema& table,
                    const ColumnSchema& column) {
  engine::StringPool& strings = db.strings();
  std::vector<std::uint32_t> cells(validation.columnCount(), 0);
  cells[fields[kTable]] = strings.intern(table.name);
  cells[fields[kColumn]] = strings.intern(column.name);
  cells[fields[kNullable]] = strings.intern(column.nullable() ? u"Y" : u"N");
  cells[fields[kMin]] = integerCell(column.minValue);
  cells[fields[kMax]] = integerCell(column.maxValue);
  cells[fields[kKeyTable]] = strings.intern(column.keyTable);
  cells[fields[kKeyColumn]] =
      integerCell(column.keyColumn ? std::optional<std::int32_t>(column.keyColumn) : std::nullopt);
  cells[fields[kCategory]] = strings.intern(column.category);
  cells[fields[kSet]] = strings.intern(column.set);
  cells[fields[kDescription]] = strings.intern(column.description);

  std::vector<std::uint32_t> key;
  for (std::size_t index = 0; index < validation.keyCount(); ++index)
    key.push_back(cells[index]);
  const std::ptrdiff_t existing = validation.findRow(key);
  if (existing < 0) {
    validation.appendRow(cells);
    return;
  }
  std::span<std::uint32_t> row = validation.row(static_cast<std::size_t>(existing));
  std::copy(cells.begin(), cells.end(), row.begin());
}

}  // namespace

std::uint32_t writeValidationRows(engine::Database& db, std::span<const std::u16string_view> tables,
                                  engine::Error& error) {
  std::vector<const TableSchema*> described;
  for (std::u16string_view name : tables) {
    const TableSchema* table = findTable(name);
    if (!table) {
      error = {engine::kInvalidTable,
               "table " + engine::toUtf8(name) + " is not a table the catalog knows"};
      return error.code;
    }
    described.push_back(table);
  }
  engine::Table* validation = validationTable(db, error);
  std::array<std::size_t, kFieldCount> fields{};
  if (!validation || !locateFields(*validation, fields, error))
    return error.code;
  for (const TableSchema* table : described) {
    for (const ColumnSchema& column : table->columns) {
      describeColumn(db, *validation, fields, *table, column);
    }
  }
  return engine::kSuccess;
}

}  // namespace odlex::schema
