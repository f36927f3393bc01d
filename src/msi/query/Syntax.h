#pragma once
// The parsed form of a statement, before its names are looked up in a database.

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "msi/query/Diagnostics.h"

namespace odlex::query {

// A column as written: `Column` or `Table.Column` (table empty when not qualified).
struct ColumnName {
  std::u16string table;
  std::u16string column;
  Position position;
};

struct TableName {
  std::u16string name;
  Position position;
};

enum class Comparison { kEqual, kNotEqual, kLess, kGreater, kLessEqual, kGreaterEqual };

// One side of a comparison.
struct Operand {
  enum class Kind { kColumn, kString, kInteger, kParameter };
  Kind kind = Kind::kColumn;
  ColumnName column;            // kColumn
  std::u16string text;          // kString; '' is the null string
  std::int32_t integer = 0;     // kInteger
  std::uint32_t parameter = 0;  // kParameter: 0 for the first '?' in the query
  Position position;
};

// A WHERE condition. AND and OR hold two or more children; a run of the same operator,
// also through parentheses, is one node, so the depth of the tree is bounded by the depth
// of the parentheses, never by the length of the query.
struct Condition {
  enum class Kind { kAnd, kOr, kCompare, kIsNull, kIsNotNull };
  Kind kind = Kind::kCompare;
  std::vector<Condition> children;             // kAnd, kOr
  Comparison comparison = Comparison::kEqual;  // kCompare
  Operand left;                                // kCompare, kIsNull, kIsNotNull (a column)
  Operand right;                               // kCompare
  Position position;
};

struct SelectStatement {
  bool distinct = false;
  bool allColumns = false;  // SELECT *
  std::vector<ColumnName> columns;
  std::vector<TableName> tables;
  std::optional<Condition> where;
  std::vector<ColumnName> orderBy;
  std::uint32_t parameterCount = 0;
};

// A value to store: 'string' ('' is null), integer or ?.
using Value = Operand;

struct InsertStatement {
  TableName table;
  std::vector<ColumnName> columns;
  std::vector<Value> values;  // one per column
  bool temporary = false;
  std::uint32_t parameterCount = 0;
};

struct Assignment {
  ColumnName column;
  Value value;
};

struct UpdateStatement {
  TableName table;
  std::vector<Assignment> assignments;
  std::optional<Condition> where;
  std::uint32_t parameterCount = 0;
};

struct DeleteStatement {
  TableName table;
  std::optional<Condition> where;
  std::uint32_t parameterCount = 0;
};

// A column as CREATE TABLE and ALTER TABLE ADD declare it.
struct ColumnDefinition {
  ColumnName name;
  std::uint16_t type = 0;  // the type word: size, text/integer/binary, nullable, flags
  bool hold = false;       // ALTER TABLE ... ADD ... HOLD
};

struct CreateStatement {
  TableName table;
  std::vector<ColumnDefinition> columns;  // as declared
  std::vector<ColumnName> primaryKey;
  bool hold = false;
};

struct DropStatement {
  TableName table;
};

struct AlterStatement {
  enum class Kind { kAddColumn, kHold, kFree };
  Kind kind = Kind::kHold;
  TableName table;
  ColumnDefinition column;  // kAddColumn
};

using Statement = std::variant<SelectStatement, InsertStatement, UpdateStatement, DeleteStatement,
                               CreateStatement, DropStatement, AlterStatement>;

}  // namespace odlex::query
