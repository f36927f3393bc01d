#include "msi/query/StoredValue.h"

#include <algorithm>

#include "msi/query/Diagnostics.h"

namespace odlex::query {
namespace {

// The value as a field: the literal, or the parameter it names.
Field fieldOf(const Value& value, std::span<const Field> parameters) {
  switch (value.kind) {
    case Operand::Kind::kString:
      return Field::ofString(value.text);
    case Operand::Kind::kInteger:
      return Field::ofInteger(value.integer);
    case Operand::Kind::kParameter:
      return parameters[value.parameter];
    case Operand::Kind::kColumn:
      break;
  }
  return Field::null();
}

std::string describeValue(const Value& value) {
  return value.kind == Operand::Kind::kParameter
             ? "parameter " + std::to_string(value.parameter + 1)
             : "the value at line " + std::to_string(value.position.line) + ", column " +
                   std::to_string(value.position.column);
}

}  // namespace

engine::Table* changeableTable(engine::Database& database, const TableName& name,
                               engine::Error& error) {
  engine::Table* table = database.findTable(name.name);
  if (!table) {
    fail(error, engine::kInvalidTable, name.position,
         "unknown table " + quoteText(name.name) +
             (name.name.starts_with(u"_") ? " (catalog tables cannot be changed by a query)" : ""));
  }
  return table;
}

bool bindStoredValue(const engine::Table& table, const ColumnName& name, const Value& value,
                     std::vector<StoredValue>& values, engine::Error& error) {
  if (!name.table.empty() && name.table != table.name()) {
    return fail(error, engine::kBadQuerySyntax, name.position,
                "column " + quoteText(name.column) + " is qualified by another table");
  }
  const int column = table.columnIndex(name.column);
  if (column < 0) {
    return fail(error, engine::kBadQuerySyntax, name.position,
                "unknown column " + quoteText(name.column));
  }
  if (std::ranges::any_of(values, [column](const StoredValue& v) {
        return v.column == static_cast<std::uint32_t>(column);
      })) {
    return fail(error, engine::kBadQuerySyntax, name.position,
                "column " + quoteText(name.column) + " is given twice");
  }
  const engine::Column& target = table.columns()[static_cast<std::size_t>(column)];
  // '' is null, which fits every column; binary data comes only from a stream parameter.
  const bool mismatch =
      (value.kind == Operand::Kind::kInteger && !target.isInteger()) ||
      (value.kind == Operand::Kind::kString && !target.isString() && !value.text.empty());
  if (mismatch) {
    return fail(error, engine::kBadQuerySyntax, value.position,
                std::string(value.kind == Operand::Kind::kInteger ? "an integer" : "a string") +
                    " cannot be stored in column " + quoteText(name.column));
  }
  values.push_back({static_cast<std::uint32_t>(column), value});
  return true;
}

engine::Table* tableAtExecute(engine::Database& database, const std::u16string& name,
                              const std::vector<engine::Column>& prepared, engine::Error& error) {
  if (database.readOnly()) {
    failWith(error, engine::kFunctionFailed, "the database is open read-only");
    return nullptr;
  }
  engine::Table* table = database.findTable(name);
  if (!table) {
    failWith(error, engine::kInvalidTable, "table " + quoteText(name) + " no longer exists");
    return nullptr;
  }
  const bool same = std::ranges::equal(table->columns(), prepared,
                                       [](const engine::Column& a, const engine::Column& b) {
                                         return a.name == b.name && a.type == b.type;
                                       });
  if (!same) {
    failWith(error, engine::kFunctionFailed,
             "the columns of table " + quoteText(name) + " changed since the query was prepared");
    return nullptr;
  }
  return table;
}

bool storedCell(engine::Database& database, const engine::Table& table, const StoredValue& stored,
                std::span<const Field> parameters, StoredCell& out, engine::Error& error) {
  const engine::Column& column = table.columns()[stored.column];
  const Field field = fieldOf(stored.value, parameters);
  const std::string where = "column " + quoteText(column.name) + " of table " +
                            quoteText(table.name()) + ": " + describeValue(stored.value);
  out = StoredCell{};
  if (field.isNull()) {
    if (!column.nullable())
      return failWith(error, engine::kFunctionFailed,
                      where + " is null, but the column is NOT NULL");
    out.cell = column.isInteger() ? static_cast<std::uint32_t>(engine::kNullInteger) : 0;
    return true;
  }
  if (column.isBinary()) {
    if (field.kind != Field::Kind::kStream)
      return failWith(error, engine::kDatatypeMismatch, where + " must be a stream");
    std::vector<std::uint8_t> data;
    if (!database.readStream(field.text, data, error)) {
      error.code = engine::kFunctionFailed;
      error.text = where + ": " + error.text;
      return false;
    }
    out.cell = 1;
    out.data = std::move(data);
    return true;
  }
  if (column.isInteger()) {
    if (field.kind != Field::Kind::kInteger)
      return failWith(error, engine::kDatatypeMismatch, where + " must be an integer");
    if (!column.holdsInteger(field.integer)) {
      return failWith(error, engine::kFunctionFailed,
                      where + " is out of range for a " + std::to_string(column.integerSize() * 8) +
                          "-bit column");
    }
    out.cell = static_cast<std::uint32_t>(field.integer);
    return true;
  }
  if (field.kind != Field::Kind::kString)
    return failWith(error, engine::kDatatypeMismatch, where + " must be a string");
  out.cell = database.strings().intern(field.text);
  return true;
}

}  // namespace odlex::query
