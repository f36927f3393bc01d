#pragma once
// Table objects of the user-interface tables with operations of their own: ControlEvent and
// RadioButton.
//
// Collectors ("Get<Rows>(RWBTree& out, ...)") insert the matching rows that are not marked
// deleted into `out`, keep whatever `out` already held, and return `out`.

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTControlEvent : public ODLEXTRowTable<ODLEXTControlEvent, ODLEXTObject::eControlEvent> {
 public:
  // The events that the control `control` publishes with the argument `argument`, under any
  // condition: for example every NewDialog event of a Next button that leads to one dialog.
  RWBTree& GetControlArgumentEntries(RWBTree& out, const MSIEControl& control,
                                     const TalString& argument);
  // The events published by all the controls of `dialog`.
  RWBTree& GetDialogEntries(RWBTree& out, const MSIEDialog& dialog);
};

class ODLEXTRadioButton : public ODLEXTRowTable<ODLEXTRadioButton, ODLEXTObject::eRadioButton> {
 public:
  // Whether the radio button group of `property` was changed since the table was read or last
  // written: a button of the group was added or deleted (deleted rows count until the table
  // is written) or one of its rows was marked modified. Never throws.
  bool Changed(const TalString& property);
};
