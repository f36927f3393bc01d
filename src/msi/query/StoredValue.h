#pragma once
// Turning the values of INSERT and UPDATE into the cells of a column, and finding the table
// they change.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/query/Field.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

// A value bound to the column it is stored in.
struct StoredValue {
  std::uint32_t column = 0;
  Value value;
};

// Looks `name` up among the tables a statement may change; kInvalidTable when absent.
engine::Table* changeableTable(engine::Database& database, const TableName& name,
                               engine::Error& error);

// Resolves `name` (unqualified, or qualified by `table`) to a column index of `table`;
// kBadQuerySyntax when it is not one, or when its kind does not fit a literal `value`.
bool bindStoredValue(const engine::Table& table, const ColumnName& name, const Value& value,
                     std::vector<StoredValue>& values, engine::Error& error);

// At execute: the table again, refused when dropped (kInvalidTable), read-only or changed in
// its columns since prepare (kFunctionFailed).
engine::Table* tableAtExecute(engine::Database& database, const std::u16string& name,
                              const std::vector<engine::Column>& prepared, engine::Error& error);

// What a value puts into a row: the cell and, for a binary column given a stream, that
// stream's data, read before anything is changed.
struct StoredCell {
  std::uint32_t cell = 0;
  std::optional<std::vector<std::uint8_t>> data;
};

// The cell holding `stored.value` in its column of `table`, parameters filled in. A binary
// column takes a null value or a stream parameter naming a stream of the database, whose data
// the row gets a copy of.
bool storedCell(engine::Database& database, const engine::Table& table, const StoredValue& stored,
                std::span<const Field> parameters, StoredCell& out, engine::Error& error);

}  // namespace odlex::query
