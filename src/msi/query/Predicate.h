#pragma once
// A WHERE condition compiled against the tables of a query. It is evaluated on the raw
// 32-bit cells of the rows: text is compared by string-pool id for = and <> (the pool holds
// each text once), so matching a key costs one integer comparison per row; only the
// ordering comparisons on text read the strings.
//
// Null semantics, as the installer tests for null with `Column = ''`:
//   =, <>  compare values with null as an ordinary value: '' (or a null parameter) equals a
//          null cell, and two null cells are equal;
//   <, >, <=, >=  are false when either side is null.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Result.h"
#include "msi/engine/StringPool.h"
#include "msi/query/Field.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

// A cell of the current row combination: the table's place in the FROM list and the
// column's index in that table.
struct CellRef {
  std::uint32_t source = 0;
  std::uint32_t column = 0;
};

enum class ValueKind { kInteger, kString, kBinary };
ValueKind valueKindOf(const engine::Column& column);

// Cell value of a string that is not in the pool: no cell ever holds it.
constexpr std::uint32_t kAbsentString = UINT32_MAX;

struct Predicate {
  using Kind = Condition::Kind;

  Kind kind = Kind::kCompare;
  std::vector<Predicate> children;  // kAnd, kOr
  Comparison comparison = Comparison::kEqual;
  ValueKind valueKind = ValueKind::kString;  // of `left`
  CellRef left;
  std::optional<CellRef> rightColumn;      // column-to-column comparison
  std::optional<std::uint32_t> parameter;  // the right side is the n-th '?'
  // The constant right side: a literal of the query or, once bound, a parameter's value.
  std::u16string text;
  std::int32_t integer = 0;
  // The constant as a raw cell, set by bindValues.
  std::uint32_t cell = 0;
  Position position;
};

// Fills in the parameters' values and resolves every constant to a raw cell (strings to
// their pool id). Fails with kDatatypeMismatch when a parameter's kind does not fit its
// column. `parameters` must hold at least as many fields as the query has '?'.
bool bindValues(Predicate& predicate, std::span<const Field> parameters,
                const engine::StringPool& strings, engine::Error& error);

// Whether the row combination satisfies the condition; `rows[i]` are the cells of the
// current row of the i-th table.
bool matches(const Predicate& predicate, std::span<const std::uint32_t* const> rows,
             const engine::StringPool& strings);

// The highest FROM-list place the condition reads.
std::uint32_t highestSource(const Predicate& predicate);

}  // namespace odlex::query
