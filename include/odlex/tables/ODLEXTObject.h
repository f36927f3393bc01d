#pragma once
// ODLEXTObject: the base of every table object. One table object stands for one installer table
// of one open database; it wraps the lower-layer table (an MSIT<Table>, which owns the rows) and
// adds the load/unload life cycle bound to a database, the table's attributes, a modified flag
// pushed up to the database, a change-log record on every persist, filtering of rows marked
// deleted, and the temporary entries through which the last added or changed row is handed
// back to the caller.
//
// The lower-layer table is made by the derived class (ODLEXTRowTable) when it is constructed and
// re-made empty by its Unload. Copies of a table object share the lower-layer table through one
// holder, so the last copy to go deletes it, and a copy made before an Unload and Load (a
// Reload, a Rollback) works on the table loaded after it rather than on rows already gone.
//
// Where this differs from the installer library's literal steps, to lose no data and hand out
// no dangling row:
//   - Load keeps the rows edited before it: a table bound without loading
//     (ODLEXDatabase::GetTableObject(type, false)) and edited keeps those rows, in place of the
//     file's rows with their keys, instead of losing them to the read.
//   - GetTempEntries never holds a row that is gone: rows destroyed by Unload, Reload,
//     Rollback or a Persist that drops deleted rows leave the temp entries.

#include <cstdint>
#include <memory>
#include <vector>

#include "odlex/support/RWBTree.h"
#include "odlex/support/RWCollectable.h"
#include "odlex/support/TalString.h"
#include "odlex/tables/ODLEXTableAttributes.h"

class MSIEntry;
class MSITable;
class ODLEXDatabase;
class ODLEXBaseChecker;
struct ODLEXSearchMatch;

class ODLEXTObject : public RWCollectable {
 public:
  // The table types: each is the class id of its table-object class. 4194 names no table.
  enum typeID : int {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) e##Table = id,
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
    eDatabaseClass = 387,      // ODLEXDatabase's class id
    eTableObjectClass = 4077,  // ODLEXTObject's own class id
    eNoTable = 4194,           // no table; also the end of a list of table types
    eRegistryKeyNodeClass = 4195,
  };

  ODLEXTObject();
  ODLEXTObject(const ODLEXTObject&);
  ODLEXTObject& operator=(const ODLEXTObject&);
  ~ODLEXTObject() override;

  RWCollectable* newSpecies() const override;
  RWCollectable* copy() const override;
  RWClassID isA() const override;
  static RWClassID classIsA() {
    return eTableObjectClass;
  }

  virtual bool IsMergeModule();
  // The lower-layer table's rows, deleted rows included (see FilterOutDeletedEntries). The rows
  // belong to the lower layer.
  virtual RWBTree& GetEntries();
  // Writes the rows back through the lower layer and records a change-log entry; nothing for an
  // unloaded or read-only table, or a not-in-merge-module table of a merge module.
  virtual void Persist();
  // Deletes the lower-layer table and forgets the database. Attributes and the modified flag
  // stay; the temp entries, whose rows are gone, are emptied.
  virtual void Unload();
  // Binds the object to `db` and reads the rows, keeping rows edited before (see above); a
  // second Load of a loaded object does nothing.
  virtual void Load(ODLEXDatabase& db);
  virtual bool IsLoaded();
  // Search and replace leave out rows for which this is true; no row by default.
  virtual bool SARExcludeEntry(const MSIEntry* entry);
  // How many live rows, not left out by SARExcludeEntry, have a column `checker` matches
  // (ODLEXCheckers.h); the temp entries become those rows. Each matching column is appended
  // to `matches` when given. 0 for a table without a lower-layer table.
  unsigned Search(const ODLEXBaseChecker& checker,
                  std::vector<ODLEXSearchMatch>* matches = nullptr);
  // Replaces `find` by `replace` in the searchable columns (ODLEXCheckers.h) of the live rows
  // not left out by SARExcludeEntry: every occurrence inside a value, or with
  // eSearchWholeValue only values equal to `find` as a whole; eSearchIgnoreCase compares under
  // case folding. A replacement the column cannot hold (too long, an empty value where one is
  // required, characters outside the database's code page) is not made. Returns how many
  // replacements were made; rows changed are marked modified, and the table when any was.
  // Nothing for a read-only table, a not-in-merge-module table of a merge module, or an empty
  // `find`.
  unsigned SearchAndReplace(const TalString& find, const TalString& replace, unsigned long flags);
  virtual eTableSets GetTableSet();

  bool IsModified();
  ODLEXDatabase& GetDatabase() {
    return *database_;
  }
  // The rows last added or changed through this object that its table still holds.
  RWBTree& GetTempEntries();
  void SetTempEntries(const RWBTree& entries);
  // The temp entries become exactly `entry` (nothing for null).
  void SetTempEntries(MSIEntry* entry);
  // Marks the table modified and tells the database Modify(flag); nothing for a read-only table
  // or a not-in-merge-module table of a merge module. The table is marked modified whatever
  // `flag` is.
  void Modify(bool flag);
  // Marks every live row modified.
  void ModifyEntries();
  // Removes the rows marked deleted from `entries` (the rows stay in their table). With
  // `askHost`, the host's permission callback is asked before each row; a refusal throws
  // ODLEXDatabaseError code 7, leaving `entries` partly filtered.
  void FilterOutDeletedEntries(RWBTree& entries, bool askHost);
  // How many rows of this table belong to one of `components` (a tree of Component rows).
  int GetCount(RWBTree& components);
  TalString GetTableName();
  const ODLEXTableAttributes& GetAttributes() const {
    return attributes_;
  }
  static TalString GenerateGUID();
  bool IsCharOK(char16_t c);
  bool IsStringOK(const TalString& text);

  // Table names are not mapped to types here: GetTableType answers eNoTable for every name, and
  // _mapInit does nothing. Callers compare names with the table names themselves.
  static typeID GetTableType(const TalString& name);
  static void _mapInit();

  // The lower-layer table, or null before a derived class made one: for the operations that
  // look rows up by a column's index (MSITable::FindEntriesBy) across table objects.
  MSITable* GetLowerTable() const {
    return holder_->table.get();
  }

 protected:
  void SetLowerTable(std::unique_ptr<MSITable> table);
  ODLEXTableAttributes& Attributes() {
    return attributes_;
  }

 private:
  // The database binds table objects without loading them (GetTableObject(type, false)) and
  // carries rows into the lower-layer tables of _Streams and _Storages when it opens into an
  // output file.
  friend class ODLEXDatabase;

  // The lower-layer table, shared by the copies of this object.
  struct LowerTableHolder {
    ~LowerTableHolder();
    std::unique_ptr<MSITable> table;
  };

  RWBTree tempEntries_;
  // The table's row epoch when the temp entries were last known to be held by it.
  std::uint64_t tempEntriesEpoch_ = 0;
  bool loaded_ = false;
  ODLEXDatabase* database_ = nullptr;
  std::shared_ptr<LowerTableHolder> holder_;
  ODLEXTableAttributes attributes_;
  bool modified_ = false;
};
