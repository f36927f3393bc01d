#pragma once
// Placing a merge module's actions (a Module*Sequence table) into the package's sequence table
// of the same kind. A module row either carries its own number, or names a BaseAction and
// whether it runs After (1) or before (0) it; the base is an action of the package, or another
// action of the module placed first.

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "package/merge/MergeLog.h"
#include "package/merge/TableRows.h"

namespace odlex::merge {

// The free number next to `number` in the direction `step` (+1 after, -1 before): the first
// number that no action holds, going from `number` along the run of consecutive numbers
// (as ODLEXSequence::GetGoodSequenceAfter/Before do, except that the last action of a table
// has room after it and the first before it). 0 when the run leaves 1..32767.
int freeNumberNextTo(const std::set<int>& taken, int number, int step);

struct PlacedAction {
  std::u16string action;
  Value condition;
  int number = 0;
};

// The module's rows of `moduleTable` placed among `packageRows` (the package's table, null
// when it has none): actions the package already sequences keep the package's row. Stops the
// merge (code 57) when a base action is in neither table, the bases form a cycle, or no free
// number is left; a row with neither number nor base is reported and left out.
std::vector<PlacedAction> placeActions(const TableRows& moduleTable, const TableRows* packageRows,
                                       MergeLog& log);

}  // namespace odlex::merge
