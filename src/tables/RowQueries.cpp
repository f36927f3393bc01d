// Collecting the rows of one component.

#include "tables/RowQueries.h"

namespace odlex::tables {

RWBTree& collectRowsOfComponent(const RWBTree& rows, RWBTree& out, const MSIEComponent& component) {
  const TalString key = component.GetComponentID();
  return collectLiveRows<MSIEntry>(
      rows, out, [&key](const MSIEntry& row) { return row.GetComponentKey() == key; });
}

}  // namespace odlex::tables
