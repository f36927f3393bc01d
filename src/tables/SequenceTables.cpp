// Stepping through a sequence table and finding free sequence numbers, shared by the twelve
// sequence tables.

#include "odlex/tables/ODLEXSequence.h"

namespace {

short numberOf(const MSISequenceEntry& row) {
  return row.GetSequence();
}

}  // namespace

MSISequenceEntry& ODLEXSequence::Adjacent(const MSISequenceEntry& row, int step) {
  const short from = numberOf(row);
  MSISequenceEntry* nearest = nullptr;
  for (RWCollectable* item : GetEntries()) {
    auto* candidate = static_cast<MSISequenceEntry*>(item);
    if (!candidate || candidate->IsDeleted())
      continue;
    const int distance = (numberOf(*candidate) - from) * step;
    // Only a strictly nearer row replaces the one kept: the first met wins a tie.
    if (distance > 0 && (!nearest || distance < (numberOf(*nearest) - from) * step))
      nearest = candidate;
  }
  if (!nearest)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eNoAdjacentAction);
  return *nearest;
}

MSISequenceEntry& ODLEXSequence::GetNextSequence(const MSISequenceEntry& row) {
  return Adjacent(row, 1);
}

MSISequenceEntry& ODLEXSequence::GetPrevSequence(const MSISequenceEntry& row) {
  return Adjacent(row, -1);
}

short ODLEXSequence::FreeNumberNextTo(const TalString& action, int step) {
  try {
    // Iterative form of following the run of consecutive numbers action by action.
    const MSISequenceEntry* row = &GetSequenceWithID(action);
    while (true) {
      const MSISequenceEntry& adjacent = Adjacent(*row, step);
      const auto candidate = static_cast<short>(numberOf(*row) + step);
      if (candidate != numberOf(adjacent))
        return candidate;
      row = &adjacent;
    }
  } catch (const ODLEXDatabaseError&) {
    return 0;
  }
}

short ODLEXSequence::GetGoodSequenceAfter(const TalString& action) {
  return FreeNumberNextTo(action, 1);
}

short ODLEXSequence::GetGoodSequenceBefore(const TalString& action) {
  return FreeNumberNextTo(action, -1);
}
