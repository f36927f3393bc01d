#pragma once
// MSITable: the rows of one installer table, loaded from a database (Populate), edited as row
// objects, and handed back (Persist). The per-table classes MSIT<Table> derive from it and add
// typed Add/Find/FindBy<Column> operations.
//
// The table owns its rows. GetTable() gives them as an RWBTree in primary-key order; rows that
// are marked deleted stay there until Persist destroys them.
//
// Populate matches the database's columns to the catalog's by name, so a package written with
// an older schema (fewer columns) loads; catalog columns the database lacks read as null, and
// database columns the catalog lacks are not loaded. A table the database does not have
// populates empty. Rows of the file whose key repeats an earlier row's are left out and make
// Populate return false with a message in GetLastError(); the other rows are loaded.
//
// Persist replaces the database table's rows with the live rows, creating the table from the
// catalog when it is missing and there are rows to write. Database columns the catalog lacks
// are written as null. Binary data is written to the streams named "Table.key1.key2..."; the
// streams of deleted rows, and of rows whose key changed, are removed. Afterwards no row is
// modified and the table is clean. Changes reach the file when the database is committed.
//
// Lookups do not scan: Find searches the tree with a probe row; FindBy<Column> uses an index of
// that column built on first use and dropped whenever a row changes.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "odlex/msi/MSIEntry.h"
#include "odlex/support/RWBTree.h"
#include "odlex/support/TalString.h"

class MSIDatabase;
namespace odlex::engine {
class Database;
class Table;
}  // namespace odlex::engine

class MSITable {
 public:
  explicit MSITable(const odlex::schema::TableSchema& schema);
  MSITable(const MSITable&) = delete;
  MSITable& operator=(const MSITable&) = delete;
  virtual ~MSITable();

  void SetDatabase(MSIDatabase& database) { database_ = &database; }
  MSIDatabase* GetDatabase() const { return database_; }
  const odlex::schema::TableSchema& GetSchema() const { return *schema_; }
  TalString GetName() const;

  // The rows, in primary-key order (deleted rows included until Persist).
  RWBTree& GetTable() { return rows_; }
  const RWBTree& GetTable() const { return rows_; }

  // Replaces the rows held with those of the database. False when no open database is set
  // or the file repeats a key (see above).
  virtual bool Populate();
  // As Populate, but the rows edited since the last Populate or Persist (added, changed or
  // deleted) stay, as the same row objects, in place of the database's rows with their keys;
  // the table is then dirty when any stayed.
  bool PopulateKeepingEdits();
  // Writes the live rows back into the database (see above). False when no open, writable
  // database is set, or the engine refuses the table.
  virtual bool Persist();
  // Some row was added, changed or deleted since the last Populate or Persist.
  bool IsDirty() const { return dirty_; }
  // Whether Persist would change the database: the table is dirty, or the rows held are not,
  // one for one and unchanged, those of the database table of its name as it is now (which
  // another writer may have changed). A table whose rows are not those of a database table of
  // its name (the catalog tables, streams, storages, summary information) has unsaved changes
  // exactly when it is dirty.
  bool HasUnsavedChanges() const;
  // Changes whenever rows this table held are destroyed (Populate, Persist, Drop, ...), and
  // differs between tables: holders of row pointers check it to tell whether theirs may be
  // gone.
  std::uint64_t GetRowEpoch() const { return rowEpoch_; }
  // Marks the table dirty, or with false clean: the rows held are then taken as written.
  void MakeDirty(bool dirty = true) { dirty_ = dirty; }
  // Removes the table (and the streams of its binary cells) from the database and forgets the
  // rows. False when no open database is set.
  bool Drop();
  // Releases the table for other users of the database. Rows are held in memory only, so there
  // is nothing to release: the rows stay as they are.
  void Unlock() {}
  // What went wrong in the last operation of the table that failed (Populate, Persist and Drop
  // returning false, an Add refused for a reason other than a held key).
  const TalString& GetLastError() const { return lastError_; }

  // A new GUID in the installer's text form.
  static TalString GenerateGUID();

  // Generic row access, for code that walks tables without knowing their classes.
  // A new row of this table, every column null, not yet in the table.
  std::unique_ptr<MSIEntry> CreateEntry() const { return NewEntry(); }
  // A new row of this table holding the values of `values`, a row of any table, copied column by
  // column where the names and kinds match (the rest stay null); not yet in the table.
  std::unique_ptr<MSIEntry> CreateEntry(const MSIEntry& values) const;
  // Takes a new row of this table (from CreateEntry) into the table. A row whose key is already
  // held by a live row is refused: the result is null and `entry` is destroyed. A deleted row
  // with that key is replaced.
  MSIEntry* AddEntry(std::unique_ptr<MSIEntry> entry);
  // CreateEntry(values), then as AddEntry. This is how a free-standing entry (MSISequenceEntry, a
  // template row) is handed to a table.
  MSIEntry* AddCopy(const MSIEntry& values);
  // The live row whose key equals the probe's, or null.
  MSIEntry* FindEntry(const MSIEntry& probe) const;
  // The first live row, in key order, whose catalog column `column` equals `value`, or null.
  MSIEntry* FindEntryBy(std::size_t column, const MSIRecordColumn& value) const;
  // Every live row, in key order, whose catalog column `column` equals `value`. Like
  // FindEntryBy it reads an index of the column, built on first use and kept while rows are
  // only marked (modified, deleted or revived), so a run of lookups and deletions costs one pass
  // over the table and then time in proportion to the rows found.
  std::vector<MSIEntry*> FindEntriesBy(std::size_t column, const MSIRecordColumn& value) const;

 protected:
  // A new row of this table with every column null.
  virtual std::unique_ptr<MSIEntry> NewEntry() const = 0;
  // For tables keyed by one text column: "<prefix><n>", the first such key that no row holds
  // (deleted rows included, so a key is never reused before Persist). `width` pads n with
  // zeros. Numbers are tried from just past the last key made, so making many keys stays cheap.
  TalString MakeUniqueKey(const TalString& prefix, int width = 0);
  // Records a failure of an operation of this table: GetLastError() and, when a database is
  // set, the database's error list (with the table's name as the context).
  void ReportError(unsigned code, const TalString& text);
  // The data of a binary cell that names `name`: the database stream of that name, empty when
  // it cannot be read. A table whose data lives elsewhere (sub-storages) overrides it.
  virtual MSIBinary ReadStream(const TalString& name) const;
  // For tables whose rows are not those of a database table of their name (the catalog
  // tables, streams, storages, summary information): replaces the rows held with `rows` (made
  // by NewEntry), loaded as they are: unmodified, the table clean. A row repeating an earlier
  // row's key is left out.
  void LoadRows(std::vector<std::unique_ptr<MSIEntry>> rows);
  // Ends a Persist that wrote the rows by other means: destroys the deleted rows and leaves
  // every row unmodified and the table clean.
  void ClearChanges();
  // Counts changes to the rows held (loads, adds, edits, deletes), so that a derived table can
  // tell when a lookup structure of its own has gone stale.
  std::uint64_t GetChangeCount() const { return changes_; }

 private:
  friend class MSIEntry;

  void clearRows();
  // A row was added, removed or given another value: the column indexes are dropped.
  void rowChanged();
  // A row was only marked (modified, deleted, revived): the indexes, which hold deleted rows
  // too, stay valid.
  void rowMarked();
  // A cell's value as FindBy indexes it: its kind, then its number or its text, read in place.
  struct IndexKey {
    int kind = 0;
    int number = 0;
    std::u16string_view text;
    static IndexKey of(const MSIRecordColumn& cell);
    friend auto operator<=>(const IndexKey&, const IndexKey&) = default;
  };
  using ColumnIndex = std::vector<std::pair<IndexKey, MSIEntry*>>;
  // The index of `column`: every row held, deleted ones included, by value, then in key order.
  // Its texts are read in the rows, so it is dropped whenever a value changes.
  const ColumnIndex& indexOf(std::size_t column) const;
  // The rows of `index` whose cell equals `value`.
  static std::pair<ColumnIndex::const_iterator, ColumnIndex::const_iterator> rowsWith(
      const ColumnIndex& index, const MSIRecordColumn& value);
  // Marks that rows were destroyed: a new epoch, unique in the process.
  void rowsDestroyed();
  // Starts an operation on the database: clears the last error and gives the engine, or
  // reports that no open database is set and gives null.
  odlex::engine::Database* openDatabase();
  // Re-files `entry` under a new key value; false when another live row has that key.
  bool rekey(MSIEntry& entry, std::size_t column, const MSIRecordColumn& value);
  // Writes the binary cells of the live rows to the streams of `table`'s rows (row i of the
  // table holds live row i) and removes the streams no row uses any more.
  void writeStreams(const std::vector<MSIEntry*>& live, odlex::engine::Table& table);

  // Records that the rows' storedRow_ index the database table `table` as it is now.
  void rememberStored(const odlex::engine::Table& table);
  // Whether the rows' storedRow_ index `table` as it is now.
  bool storedIn(const odlex::engine::Table& table) const;
  // Whether the rows held are, one for one and unchanged, the rows of `table` as it is now (null:
  // the database has no table of this name), so that writing them would change nothing. Never
  // while the string pool repeats a text: writing the rows gives such a text its first id.
  bool matchesStored(const odlex::engine::Table* table) const;

  const odlex::schema::TableSchema* schema_;
  MSIDatabase* database_ = nullptr;
  RWBTree rows_;
  // Deleted rows displaced by a new row with the same key, kept until Persist.
  std::vector<std::unique_ptr<MSIEntry>> replaced_;
  // Streams of binary cells as the database held them at the last Populate or Persist.
  std::vector<std::u16string> knownStreams_;
  // The version (see odlex::engine::Table) of the database table the rows' storedRow_ refer to;
  // 0 and 0 for none.
  std::uint64_t storedTable_ = 0;
  std::uint64_t storedChanges_ = 0;
  bool dirty_ = false;
  std::uint64_t changes_ = 0;
  std::uint64_t rowEpoch_;
  TalString lastError_;
  unsigned long nextKeyNumber_ = 1;
  // FindBy indexes, by catalog column.
  mutable std::map<std::size_t, ColumnIndex> indexes_;
};
