#pragma once
// The rows of the sequence tables. The six sequence tables of a package (InstallExecuteSequence,
// InstallUISequence, AdminExecuteSequence, AdminUISequence, AdvtExecuteSequence,
// AdvtUISequence) share the columns Action, Condition and Sequence; their row classes derive
// from MSISequenceEntry. The six tables of a merge module (ModuleInstallExecuteSequence, ...)
// add BaseAction and After; theirs derive from MSIModuleSequenceEntry.
//
// A free-standing entry made from an action name alone (MSISequenceEntry(action)) has the
// columns of InstallExecuteSequence (MSIModuleSequenceEntry: ModuleInstallExecuteSequence), and
// is handed to a table with MSITable::AddCopy, which copies it by column name.

#include "odlex/msi/MSIEntry.h"
#include "odlex/msi/Nullable.h"
#include "odlex/support/TalString.h"

class MSISequenceEntry : public MSIEntry {
 public:
  explicit MSISequenceEntry(const TalString& action);

  TalString GetAction() const;
  void SetAction(const TalString& action);
  TalString GetCondition() const;
  void SetCondition(const TalString& condition);
  // Null for a merge-module action placed relative to its BaseAction.
  NullableSignedShort GetSequence() const;
  void SetSequence(const NullableSignedShort& sequence);

 protected:
  explicit MSISequenceEntry(const odlex::schema::TableSchema& schema);
  // The catalog position of a column this table is known to have.
  std::size_t ColumnAt(const char16_t* name) const;
};

class MSIModuleSequenceEntry : public MSISequenceEntry {
 public:
  explicit MSIModuleSequenceEntry(const TalString& action);

  TalString GetBaseAction() const;
  void SetBaseAction(const TalString& action);
  // 1: after BaseAction, 0: before it; null when the row has a sequence number of its own.
  NullableSignedShort GetAfter() const;
  void SetAfter(const NullableSignedShort& after);

 protected:
  explicit MSIModuleSequenceEntry(const odlex::schema::TableSchema& schema);
};
