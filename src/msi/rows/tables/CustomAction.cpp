// Custom actions added by key and type, or with a key made by the table.

#include "odlex/msi/MSIRows.h"

MSIECustomAction::MSIECustomAction(const TalString& action, msidbCustomActionType type)
    : MSIECustomAction(action) {
  SetType(static_cast<short>(type));
}

MSIECustomAction* MSITCustomAction::Add(const TalString& key, msidbCustomActionType type) {
  MSIECustomAction* row = Add(key);
  if (row)
    row->SetType(static_cast<short>(type));
  return row;
}

MSIECustomAction* MSITCustomAction::Add(msidbCustomActionType type) {
  return Add(MakeUniqueKey(TalString(u"CustomAction")), type);
}
