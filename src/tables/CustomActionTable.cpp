// Custom actions: adding by key or with a key made by the table, lookup, and the split of an
// action's Type into its bit groups.

#include "odlex/tables/ODLEXTables.h"

void ODLEXTCustomAction::Add(const MSIECustomAction& row) {
  const auto type = static_cast<msidbCustomActionType>(static_cast<unsigned short>(row.GetType()));
  const TalString key = row.GetActionID();
  MSIECustomAction* made = key.u16().empty() ? GetTable().Add(type) : GetTable().Add(key, type);
  SetTempEntries(made);
  if (!made)
    return;
  Revive(*made);
  made->SetSource(row.GetSource());
  made->SetTarget(row.GetTarget());
}

MSIECustomAction& ODLEXTCustomAction::FindCustomActionWithID(const TalString& action) {
  return FindOrThrow(GetTable().Find(action), ODLEXDatabaseError::eCustomActionNotFound);
}

void ODLEXTCustomAction::GetSeparateTypes(unsigned short& executableType,
                                          unsigned short& sourceType,
                                          unsigned short& returnProcessing,
                                          unsigned short& scheduling, unsigned short& noImpersonate,
                                          const MSIECustomAction& row) {
  const auto type = static_cast<unsigned short>(row.GetType());
  executableType = type & 0x0007;
  sourceType = type & 0x0030;
  returnProcessing = type & 0x00C0;
  scheduling = type & 0x0700;
  noImpersonate = type & 0x0800;
}
