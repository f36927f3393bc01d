#pragma once
// The parsed form of a SELECT statement, before its names are looked up in a database.

#include <cstdint>
#include <optional>
#include <string>
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

}  // namespace odlex::query
