#pragma once
// The two shapes most table-object operations share: collecting the live rows of a table that
// match something, and following a row's reference into another table.

#include "odlex/msi/MSIRows.h"
#include "odlex/support/RWBTree.h"
#include "odlex/tables/ODLEXDatabaseError.h"

namespace odlex::tables {

// Inserts into `out` every row of `rows` (all of one table, of class Row) that is not marked
// deleted and for which `matches(row)` holds; returns `out`. Rows already in `out` stay.
template <class Row, class Matches>
RWBTree& collectLiveRows(const RWBTree& rows, RWBTree& out, Matches matches) {
  for (RWCollectable* item : rows) {
    const auto& row = static_cast<const Row&>(*item);
    if (!row.IsDeleted() && matches(row))
      out.insert(item);
  }
  return out;
}

// The live rows of `rows` (of class Row) whose column read by `column` equals `value`.
template <class Row>
RWBTree& collectRowsWithValue(const RWBTree& rows, RWBTree& out, TalString (Row::*column)() const,
                              const TalString& value) {
  return collectLiveRows<Row>(rows, out, [&](const Row& row) { return (row.*column)() == value; });
}

// The live rows of `rows` whose component reference names `component`.
RWBTree& collectRowsOfComponent(const RWBTree& rows, RWBTree& out, const MSIEComponent& component);

// `target`, the row that `row` of table `from` refers to, as found by a lookup of the other
// table; when the lookup found nothing, ODLEXDatabaseErrorWithEntry(from, row, notFound).
template <class Target>
Target& followReference(Target* target, ODLEXTObject::typeID from, const MSIEntry& row,
                        ODLEXDatabaseError::eCodeMeaning notFound) {
  if (!target)
    throw ODLEXDatabaseErrorWithEntry(from, row, notFound);
  return *target;
}

}  // namespace odlex::tables
