#pragma once
// Which of the common row edits (Add, Change, Delete of ODLEXTRowTable) a table class offers.

enum ODLEXTEdits : unsigned {
  kNoEdits = 0,
  kAddEdit = 1,
  kChangeEdit = 2,
  kDeleteEdit = 4,
};
