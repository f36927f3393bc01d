#pragma once
// Table objects of the product's own tables: ZrTextFile (edits of text files made at install
// time), ZrRemoveTextFile (the matching removals), ZrKeyword (named settings stored in the
// package), ZrChangeLog (the audit trail of edits), and the read-only descriptions of the
// standard actions and properties with the schema versions each applies to.
//
// Collectors ("Get<Rows>(RWBTree& out, ...)") insert the matching rows that are not marked
// deleted into `out` and keep whatever `out` already held. Both text-file tables lose a
// component's rows when the component is deleted (Delete(const MSIEComponent&), the component
// cascade's step).

#include "odlex/msi/eSchemaVersion.h"
#include "odlex/tables/ODLEXTRowTable.h"

// The bits of a ZrTextFile row's Action: what the edit does.
enum msidbZrTextFileAction : long {
  msidbZrTextFileActionReplace = 1,       // replace FindText by ReplaceText
  msidbZrTextFileActionAppend = 2,        // append ReplaceText to the file
  msidbZrTextFileActionCreate = 4,        // create the file when it is missing
  msidbZrTextFileActionUndoOnRemove = 8,  // undo the edit when the product is removed
};

// What both text-file tables share: their rows of a component, and a Persist that schedules the
// product's actions that carry the edits out.
template <class Derived, ODLEXTObject::typeID type>
class ODLEXTTextFileTable : public ODLEXTRowTable<Derived, type> {
 public:
  // When the table holds a live row, schedules the product's actions (Derived::ScheduleActions)
  // before writing the rows.
  void Persist() override;

 protected:
  void CollectOfComponent(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTZrTextFile : public ODLEXTTextFileTable<ODLEXTZrTextFile, ODLEXTObject::eZrTextFile> {
 public:
  using ODLEXTRowTable::Change;

  void GetZrTextFiles(RWBTree& out, const MSIEComponent& component);
  // The rows of `in` that edit the file `fileName` of the folder property `dirProperty`, added
  // to `out`; returns how many were added.
  static unsigned GetZrTextFiles(RWBTree& out, const RWBTree& in, const TalString& fileName,
                                 const TalString& dirProperty);
  // Changes each row of `rows` to the row of `values` with the same key (Change(row, values));
  // rows without a counterpart stay. True when any row changed.
  bool Change(RWBTree& rows, const RWBTree& values);
  // Sets / clears the `bits` of each row's Action; the rows are marked modified.
  static void SetEntriesAction(RWBTree& rows, msidbZrTextFileAction bits);
  static void ResetEntriesAction(RWBTree& rows, msidbZrTextFileAction bits);

  // ZrTextFileInstallChanges, then ZrTextFileInitialize (ODLEXTCustomAction).
  void ScheduleActions();
};

class ODLEXTZrRemoveTextFile
    : public ODLEXTTextFileTable<ODLEXTZrRemoveTextFile, ODLEXTObject::eZrRemoveTextFile> {
 public:
  void GetZrRemoveTextFiles(RWBTree& out, const MSIEComponent& component);

  // ZrRemoveTextFileInstallChanges, then ZrTextFileInitialize (ODLEXTCustomAction).
  void ScheduleActions();
};

class ODLEXTZrKeyword : public ODLEXTRowTable<ODLEXTZrKeyword, ODLEXTObject::eZrKeyword> {
 public:
  using ODLEXTRowTable::Delete;

  // Every row of `keyword` (all its indexes), added to `out`; returns how many were added.
  unsigned GetWithKeyword(RWBTree& out, const TalString& keyword);
  // The row (keyword, index); code 65 when there is none.
  MSIEZrKeyword& GetEntry(const TalString& keyword, unsigned short index);
  // Whether the two rows have the same Operator (both null counts as the same).
  static bool IsOperatorSame(const MSIEZrKeyword& a, const MSIEZrKeyword& b);
  // Deletes every row of `keyword`.
  void Delete(const TalString& keyword);
};

class ODLEXTZrChangeLog : public ODLEXTRowTable<ODLEXTZrChangeLog, ODLEXTObject::eZrChangeLog> {
 public:
  // The entry with key `entry` ("Entry00000001"); code 80 when there is none.
  MSIEZrChangeLog& Find(const TalString& entry);
};

// The descriptions of standard actions or properties, each applying from schema version
// VerFirst to VerLast, both included.
template <class Derived, ODLEXTObject::typeID type>
class ODLEXTVersionedInformation : public ODLEXTRowTable<Derived, type> {
 public:
  using ODLEXTObject::GetEntries;
  // The live rows whose range holds `version`, added to `out`; returns `out`.
  RWBTree& GetEntries(RWBTree& out, eSchemaVersion version);
};

class ODLEXT_ZrActionInformation
    : public ODLEXTVersionedInformation<ODLEXT_ZrActionInformation,
                                        ODLEXTObject::e_ZrActionInformation> {};

class ODLEXT_ZrPropertyInformation
    : public ODLEXTVersionedInformation<ODLEXT_ZrPropertyInformation,
                                        ODLEXTObject::e_ZrPropertyInformation> {};
