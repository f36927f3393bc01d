#pragma once
// The sequence tables: the six of a package (InstallExecuteSequence, InstallUISequence,
// AdminExecuteSequence, AdminUISequence, AdvtExecuteSequence, AdvtUISequence) and the six of a
// merge module (ModuleInstallExecuteSequence, ...). They share one set of operations, declared by
// ODLEXSequence so that callers can work on any of them through one interface: find an action,
// the action that runs next or before it, and a free sequence number just after or before it,
// where a new action can go.
//
// Sequence numbers are the signed 16-bit values of the Sequence column; a null number (a merge
// module's action placed relative to its BaseAction) counts as -32768. Rows marked deleted are
// never returned, so their numbers count as free.

#include "odlex/msi/MSISequenceEntry.h"
#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXSequence : public ODLEXTObject {
 public:
  // The common row edits (ODLEXTRowTable.h). `values` may be a row of any sequence table or a
  // free-standing entry (MSISequenceEntry(action)): its columns are taken by name.
  virtual void Add(const MSISequenceEntry& values) = 0;
  virtual void Delete(MSISequenceEntry& row) = 0;
  virtual bool Change(MSISequenceEntry& row, const MSISequenceEntry& values) = 0;
  // The live row that runs next after `row`: of the rows numbered above row's number, the one
  // with the smallest number, the first in the table's (key) order among equals. Code 30 when
  // there is none.
  virtual MSISequenceEntry& GetNextSequence(const MSISequenceEntry& row);
  // The mirror: of the live rows numbered below row's, the one with the largest number, the
  // first in the table's order among equals. Code 30 when there is none.
  virtual MSISequenceEntry& GetPrevSequence(const MSISequenceEntry& row);
  // The live row of `action`; code 31 when there is none.
  virtual MSISequenceEntry& GetSequenceWithID(const TalString& action) = 0;
  // A free number just after `action`: its number + 1, or, when the next action holds that
  // number, the free number after the next action (and so on along the run of consecutive
  // numbers). 0 when `action` is not in the table or the run reaches the last action: the last
  // action has no number after it.
  virtual short GetGoodSequenceAfter(const TalString& action);
  // The mirror: its number - 1, skipping back over a run of consecutive numbers; 0 when
  // `action` is missing or the run reaches the first action.
  virtual short GetGoodSequenceBefore(const TalString& action);

 private:
  // The live row nearest to `row` in the direction `step` (+1 next, -1 previous); code 30 when
  // there is none.
  MSISequenceEntry& Adjacent(const MSISequenceEntry& row, int step);
  // GetGoodSequenceAfter (`step` +1) and GetGoodSequenceBefore (-1).
  short FreeNumberNextTo(const TalString& action, int step);
};

// The operations over one lower-layer sequence table class T (MSITInstallExecuteSequence, ...);
// the table classes derive from its instantiations and add nothing.
template <class T>
class _ODLEXSequence : public ODLEXTRowTable<typename ODLEXTableOfLowerTable<T>::Class,
                                             ODLEXTableOfLowerTable<T>::kType, ODLEXSequence> {
 public:
  void Add(const MSISequenceEntry& values) override { this->AddEntry(values); }
  void Delete(MSISequenceEntry& row) override { this->DeleteEntry(row); }
  bool Change(MSISequenceEntry& row, const MSISequenceEntry& values) override {
    return this->ChangeEntry(row, *this->GetTable().CreateEntry(values));
  }
  MSISequenceEntry& GetSequenceWithID(const TalString& action) override {
    return this->FindOrThrow(this->GetTable().Find(action), ODLEXDatabaseError::eActionNotFound);
  }
};

// The merge-module tables: the same operations. Their rows also place an action relative to a
// BaseAction (MSIModuleSequenceEntry), which the operations above do not follow.
template <class T>
class _ODLEXModuleSequence : public _ODLEXSequence<T> {};

#define ODLEX_SEQUENCE_TABLE(Table) \
  class ODLEXT##Table : public _ODLEXSequence<MSIT##Table> {};
#define ODLEX_MODULE_SEQUENCE_TABLE(Table) \
  class ODLEXT##Table : public _ODLEXModuleSequence<MSIT##Table> {};

ODLEX_SEQUENCE_TABLE(InstallExecuteSequence)
ODLEX_SEQUENCE_TABLE(InstallUISequence)
ODLEX_SEQUENCE_TABLE(AdminExecuteSequence)
ODLEX_SEQUENCE_TABLE(AdminUISequence)
ODLEX_SEQUENCE_TABLE(AdvtExecuteSequence)
ODLEX_SEQUENCE_TABLE(AdvtUISequence)
ODLEX_MODULE_SEQUENCE_TABLE(ModuleInstallExecuteSequence)
ODLEX_MODULE_SEQUENCE_TABLE(ModuleInstallUISequence)
ODLEX_MODULE_SEQUENCE_TABLE(ModuleAdminExecuteSequence)
ODLEX_MODULE_SEQUENCE_TABLE(ModuleAdminUISequence)
ODLEX_MODULE_SEQUENCE_TABLE(ModuleAdvtExecuteSequence)
ODLEX_MODULE_SEQUENCE_TABLE(ModuleAdvtUISequence)

#undef ODLEX_SEQUENCE_TABLE
#undef ODLEX_MODULE_SEQUENCE_TABLE
