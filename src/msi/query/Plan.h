#pragma once
// A SELECT statement with its names resolved against a database: which tables, which cells
// to return, how to filter and order. Made once by prepare, run by every execute.

#include <cstdint>
#include <string>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/query/Predicate.h"

namespace odlex::query {

struct PlanSource {
  std::u16string name;
  // The columns seen when the query was prepared; execute refuses a table that changed.
  std::vector<engine::Column> columns;
};

// A part of the WHERE condition that must hold for every result (one operand of the
// top-level AND), checked as soon as the tables up to `source` have a current row, so a
// join never builds the combinations that a condition on its first tables already excludes.
struct Conjunct {
  Predicate predicate;
  std::uint32_t source = 0;
};

struct Plan {
  std::vector<PlanSource> sources;
  std::vector<CellRef> output;
  std::vector<engine::Column> outputColumns;
  std::vector<CellRef> orderBy;
  std::vector<Conjunct> conjuncts;
  bool distinct = false;
  std::uint32_t parameterCount = 0;
};

}  // namespace odlex::query
