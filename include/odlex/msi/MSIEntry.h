#pragma once
// MSIEntry: one row of an installer table, as the per-table row classes (MSIE<Table>) hold it.
// The row knows its table's shape from the schema catalog and keeps one value per catalog
// column: null, an integer, a text, or (binary columns) the data of a stream.
//
// Binary data is not read when the table is populated: the row remembers the name of the
// database stream that holds it and reads it on first access. Data set by the caller is held
// in memory until the table is persisted.
//
// Rows of one table order by their key columns (compareTo): text by UTF-16 code units, exact
// case; integers by value with null first. An RWBTree of rows is therefore in primary-key
// order, and two rows with the same key compare equal. Rows of different tables order by table
// name, so one tree can collect rows of several tables.
//
// State: a row is modified after any setter, Modify() or Delete(); a deleted row stays in its
// table, invisible to Find, until the table is persisted, which destroys it.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "odlex/msi/MSIBinary.h"
#include "odlex/msi/MSIRecord.h"
#include "odlex/msi/Nullable.h"
#include "odlex/support/RWCollectable.h"
#include "odlex/support/TalString.h"

namespace odlex::schema {
struct TableSchema;
}

class MSITable;

class MSIEntry : public RWCollectable {
 public:
  explicit MSIEntry(const odlex::schema::TableSchema& schema);
  // A free-standing copy: the same table, values and state, held by no table. The data of
  // binary cells is read from the original's database now, so the copy outlives it.
  MSIEntry(const MSIEntry& other);
  MSIEntry& operator=(const MSIEntry&) = delete;
  ~MSIEntry() override;

  const odlex::schema::TableSchema& GetSchema() const { return *schema_; }
  TalString GetTableName() const;
  std::size_t GetColumnCount() const { return values_.size(); }
  // The catalog position (0-based) of the column called `name`, or -1.
  int GetColumnIndex(const TalString& name) const;

  // Generic access by column name. GetColumn gives a binary column as a stream field naming
  // the stream that holds (or will hold) its data. SetColumn converts a decimal text for an
  // integer column; a binary column takes only null here (use SetBinary). Both return false,
  // changing nothing, for an unknown name or a value the column cannot hold.
  bool GetColumn(const TalString& name, MSIRecordColumn& value) const;
  bool SetColumn(const TalString& name, const MSIRecordColumn& value);
  bool GetBinary(const TalString& name, MSIBinary& value) const;
  bool SetBinary(const TalString& name, const MSIBinary& value);
  // The file the data of binary column `name` was read from (MSIBinary::GetBinaryFile), without
  // reading the data: empty when the data came from the package or is not held, and for a
  // column that is unknown or not binary.
  TalString GetBinarySourceFile(const TalString& name) const;

  bool IsDeleted() const { return deleted_; }
  void SetDeleted(bool deleted);
  bool IsModified() const { return modified_; }
  // Marks the row modified (and its table dirty).
  void Modify();
  // Marks the row deleted and modified.
  void Delete();

  // For rows of one table: whether the key columns hold the same values (exact comparison, so
  // keys that differ in case differ).
  bool HasSameKey(const MSIEntry& other) const { return compareTo(&other) == 0; }
  // Copies into this row every non-key column of `other`, a row of the same table, whose value
  // differs (binary columns by their data); true when any did. False, changing nothing, for a
  // row of another table.
  bool CopyFields(const MSIEntry& other);

  // The value of the row's column that refers to the Component table's key (for a Component
  // row, its own key); empty when the table has no such column.
  virtual TalString GetComponentKey() const;

  int compareTo(const RWCollectable* other) const override;
  bool isEqual(const RWCollectable* other) const override;
  unsigned hash() const override;

 protected:
  // Typed cell access by catalog position, for the generated accessors. A null integer reads
  // as the type's null marker (-32768 for 16-bit, INT32_MIN for 32-bit columns).
  TalString TextAt(std::size_t column) const;
  // Text and null setters of a key column re-file a row held by a table under its new key, and
  // refuse (false, the row unchanged) a key that another live row of the table holds.
  bool SetTextAt(std::size_t column, const TalString& text);
  std::int32_t IntegerAt(std::size_t column) const;
  short ShortAt(std::size_t column) const;
  NullableSignedShort NullableShortAt(std::size_t column) const;
  NullableLong NullableLongAt(std::size_t column) const;
  // Integer setters refuse, returning false with the row unchanged, a value the column cannot
  // hold: outside -32767..32767 for a 16-bit column (-32768 is how the file writes null) and
  // INT32_MIN as a number for a 32-bit one. A row held by a table reports the refusal through
  // the table's GetLastError() and the database's error list. MSIRecord::NullInteger given to
  // SetIntegerAt makes the cell null.
  bool SetIntegerAt(std::size_t column, std::int32_t value);
  bool SetNullAt(std::size_t column);
  template <typename T>
  bool SetNullableAt(std::size_t column, const Nullable<T>& value) {
    if (value.IsNull())
      return SetNullAt(column);
    return value.Get() != MSIRecord::NullInteger && SetIntegerAt(column, value.Get());
  }
  // An empty value makes the cell null. Reading data that can no longer be read (the database
  // closed, the stream missing) gives an empty value.
  MSIBinary BinaryAt(std::size_t column) const;
  void SetBinaryAt(std::size_t column, const MSIBinary& value);
  // Makes binary cell `column` name `stream` as where its data is, to be read on first access
  // through the owning table's ReadStream; data held is dropped. The row's state is unchanged.
  void SetStreamAt(std::size_t column, const TalString& stream);

  // The table holding the row, for rows whose operations read or add other rows of their
  // table; null for a free-standing row.
  MSITable* GetOwner() const { return owner_; }

 private:
  friend class MSITable;

  bool isBinaryColumn(std::size_t column) const;
  bool isIntegerColumn(std::size_t column) const;
  bool isKeyColumn(std::size_t column) const;
  bool cellIsNull(std::size_t column) const;
  // The slot of binary data of `column`, made when the row has none.
  std::shared_ptr<MSIBinary>& binarySlot(std::size_t column) const;
  // Stores a value; a key change of a row held by a table re-files it there (false when
  // another row of the table has the new key, leaving the row unchanged).
  bool store(std::size_t column, MSIRecordColumn value);
  // Tells the owning table that the row's marks changed (modified, deleted), or that a value
  // changed, which makes the table's lookups by column stale.
  void changed();
  void valueChanged();

  const odlex::schema::TableSchema* schema_;
  MSITable* owner_ = nullptr;
  // Integer and text cells as their values; binary cells as a stream field naming where the
  // data is in the database, or null.
  std::vector<MSIRecordColumn> values_;
  // Binary data read or set, by column; null where not loaded. Empty for a table without
  // binary columns.
  mutable std::vector<std::shared_ptr<MSIBinary>> binaries_;
  bool deleted_ = false;
  bool modified_ = false;
  // The row of the database table the values were read from or last written to, while they
  // are unchanged since (kNoRow otherwise): the owning table writes such a row back from the
  // database's cells when that table too is as it was.
  static constexpr std::uint32_t kNoRow = UINT32_MAX;
  std::uint32_t storedRow_ = kNoRow;
};
