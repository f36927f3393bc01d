// Operations of the ControlEvent and RadioButton table objects.

#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectLiveRows;
using odlex::tables::collectRowsWithValue;

RWBTree& ODLEXTControlEvent::GetControlArgumentEntries(RWBTree& out, const MSIEControl& control,
                                                       const TalString& argument) {
  return collectLiveRows<MSIEControlEvent>(GetEntries(), out, [&](const MSIEControlEvent& row) {
    return row.GetDialog() == control.GetDialog() && row.GetControl() == control.GetControl() &&
           row.GetArgument() == argument;
  });
}

RWBTree& ODLEXTControlEvent::GetDialogEntries(RWBTree& out, const MSIEDialog& dialog) {
  return collectRowsWithValue(GetEntries(), out, &MSIEControlEvent::GetDialog, dialog.GetDialog());
}

bool ODLEXTRadioButton::Changed(const TalString& property) {
  for (RWCollectable* item : GetEntries()) {
    const auto& button = static_cast<const MSIERadioButton&>(*item);
    if (button.GetProperty() == property && button.IsModified())
      return true;
  }
  return false;
}
