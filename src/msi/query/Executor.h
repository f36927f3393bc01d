#pragma once
// Runs a plan: looks its tables up again (a catalog table is snapshotted afresh), walks the
// row combinations of the FROM list in table order, keeps those that satisfy the WHERE
// condition, orders them and copies the selected cells into a result set.
//
// ORDER BY orders integers by value, text by its characters (UTF-16 code units) and binary
// cells by whether they are set, null first in each; rows that tie keep their table order.
//
// Result codes:
//   kInvalidTable     a table was dropped since the query was prepared;
//   kFunctionFailed   a table's columns changed since then, or a join would visit more than
//                     kMaxCombinations row combinations;
//   kDatatypeMismatch a parameter's kind does not fit the column it is compared with.

#include <cstdint>
#include <span>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/query/Field.h"
#include "msi/query/Plan.h"
#include "msi/query/ResultSet.h"

namespace odlex::query {

// Most row combinations one execute may look at: a single table gives one per row; a join
// whose tables are linked by `column = column` looks only at the rows that match.
constexpr std::uint64_t kMaxCombinations = std::uint64_t{1} << 24;

// `parameters` must hold at least plan.parameterCount fields.
bool runPlan(engine::Database& database, Plan& plan, std::span<const Field> parameters,
             ResultSet& result, engine::Error& error);

// The rows of the table of a one-table plan that satisfy its condition, in table order.
bool findRows(engine::Database& database, Plan& plan, std::span<const Field> parameters,
              std::vector<std::uint32_t>& rows, engine::Error& error);

}  // namespace odlex::query
