#pragma once
// The tables the database keeps about itself, as table and row classes of the same shape as
// the generated ones (MSITable / MSIEntry): load with Populate, edit rows, hand back with
// Persist, write the file with MSIDatabase::commit.
//
//   MSIT_Tables              the database's tables, one row per name. Persist drops the tables
//                            whose rows were deleted and creates those of added rows from the
//                            schema catalog; a renamed row is a drop and a create.
//   MSIT_Columns             the columns of every table, read-only.
//   MSIT_Streams             the root streams that are not tables' own (not the string pool,
//                            table streams or the summary stream): binary cell data such as
//                            "Binary.Icon", cabinets, signatures. Data is read on first access.
//   MSIT_Storages            sub-storages (embedded transforms and packages). Data is the
//                            storage serialised as a compound file, made on first access.
//   MSIT_SummaryInformation  one row holding the whole summary information stream.
//   MSIT_TransformView       a temporary table: rows live in memory only, never in the file.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "odlex/msi/MSIBinary.h"
#include "odlex/msi/MSIEntry.h"
#include "odlex/msi/MSITable.h"
#include "odlex/msi/Nullable.h"
#include "odlex/support/SystemTime.h"
#include "odlex/support/TalString.h"

namespace odlex::engine {
class Database;
}

// _Tables ----------------------------------------------------------------------------------

class MSIE_Tables : public MSIEntry {
 public:
  MSIE_Tables();
  explicit MSIE_Tables(const TalString& name);

  TalString GetName() const { return TextAt(0); }
  void SetName(const TalString& value) { SetTextAt(0, value); }
};

class MSIT_Tables : public MSITable {
 public:
  MSIT_Tables();
  // Null when a live row already has this name.
  MSIE_Tables* Add(const TalString& name);
  MSIE_Tables* Find(const TalString& name) const;

  // One row per table of the database.
  bool Populate() override;
  // Creates the tables of live rows the database lacks, from the schema catalog, then drops the
  // tables that were listed at the last Populate or Persist and have no live row. Nothing
  // changes, and the result is false with an error (1628), when a new name is not a table the
  // catalog can create (unknown, or kept by the database itself).
  bool Persist() override;

 protected:
  std::unique_ptr<MSIEntry> NewEntry() const override;

 private:
  std::vector<std::u16string> listed_;  // table names at the last Populate or Persist
};

// _Columns ---------------------------------------------------------------------------------

class MSIE_Columns : public MSIEntry {
 public:
  MSIE_Columns();
  // A lookup probe needs only the two keys.
  MSIE_Columns(const TalString& table, short number, const TalString& name = {}, short type = 0);

  TalString GetTable() const { return TextAt(0); }
  short GetNumber() const { return ShortAt(1); }
  TalString GetName() const { return TextAt(2); }
  // The engine's column type bits, as the file stores them.
  short GetType() const { return ShortAt(3); }
};

class MSIT_Columns : public MSITable {
 public:
  MSIT_Columns();
  // `number` is the 1-based position of the column in its table.
  MSIE_Columns* Find(const TalString& table, short number) const;

  // One row per column of every table of the database (temporary columns left out).
  bool Populate() override;
  // The column list follows the tables: a clean table persists as a no-op, a changed one is
  // refused (false, error 5).
  bool Persist() override;

 protected:
  std::unique_ptr<MSIEntry> NewEntry() const override;
};

// _Streams and _Storages -------------------------------------------------------------------

// A row of _Streams or _Storages: the entry's name and its data. Data of a populated row is
// read on first access; data set by the caller is held until the table is persisted.
class MSIContainerEntry : public MSIEntry {
 public:
  TalString GetName() const { return TextAt(0); }
  void SetName(const TalString& value) { SetTextAt(0, value); }
  MSIBinary GetData() const { return BinaryAt(1); }
  void SetData(const MSIBinary& value) { SetBinaryAt(1, value); }

 protected:
  explicit MSIContainerEntry(const odlex::schema::TableSchema& schema) : MSIEntry(schema) {}

 private:
  friend class MSIContainerTable;
};

// What _Streams and _Storages share: rows named after entries of the container, loaded
// without their data, and a Persist that writes the data of added and changed rows and
// removes the entries of deleted (or renamed) rows.
class MSIContainerTable : public MSITable {
 public:
  bool Populate() override;
  // False, changing nothing, when a row's data is not acceptable (see Accepts) or its name is
  // empty or longer than 62 characters.
  bool Persist() override;

 protected:
  explicit MSIContainerTable(const odlex::schema::TableSchema& schema) : MSITable(schema) {}

  // The row named `name` with the data of the file `sourceFile`. A live row of that name gets
  // the data when `replace` is set and is returned; without `replace` the result is null.
  // Null with an error on the database also when the file is missing (2) or cannot be read
  // (110), or its content is not acceptable.
  MSIContainerEntry* AddFromFile(const TalString& name, const TalString& sourceFile, bool replace);

  // The container's entries of this kind, by name.
  virtual std::vector<std::u16string> EntryNames(const odlex::engine::Database& db) const = 0;
  // Whether `data` can be written as an entry; otherwise the installer result code and why.
  virtual bool Accepts(const MSIBinary& data, unsigned& code, TalString& why) const = 0;
  // Writes or replaces an entry with data that Accepts.
  virtual void WriteEntry(odlex::engine::Database& db, const std::u16string& name,
                          const MSIBinary& data) const = 0;
  virtual void RemoveEntry(odlex::engine::Database& db, const std::u16string& name) const = 0;

 private:
  std::vector<std::u16string> listed_;  // entry names at the last Populate or Persist
};

class MSIE_Streams : public MSIContainerEntry {
 public:
  MSIE_Streams();
  explicit MSIE_Streams(const TalString& name);
};

class MSIT_Streams : public MSIContainerTable {
 public:
  MSIT_Streams();
  // See AddFromFile; any content is acceptable.
  MSIE_Streams* Add(const TalString& name, const TalString& sourceFile, bool replace);
  MSIE_Streams* Find(const TalString& name) const;

 protected:
  std::unique_ptr<MSIEntry> NewEntry() const override;
  std::vector<std::u16string> EntryNames(const odlex::engine::Database& db) const override;
  bool Accepts(const MSIBinary& data, unsigned& code, TalString& why) const override;
  void WriteEntry(odlex::engine::Database& db, const std::u16string& name,
                  const MSIBinary& data) const override;
  void RemoveEntry(odlex::engine::Database& db, const std::u16string& name) const override;
};

class MSIE_Storages : public MSIContainerEntry {
 public:
  MSIE_Storages();
  explicit MSIE_Storages(const TalString& name);
};

class MSIT_Storages : public MSIContainerTable {
 public:
  MSIT_Storages();
  // See AddFromFile; the file must be a compound file (otherwise error 1620). The storage is
  // stored under `name`, whatever the file's root entry is called.
  MSIE_Storages* Add(const TalString& name, const TalString& sourceFile, bool replace);
  MSIE_Storages* Find(const TalString& name) const;

 protected:
  std::unique_ptr<MSIEntry> NewEntry() const override;
  // The storage called `name`, serialised as a compound file; empty when it cannot be read.
  MSIBinary ReadStream(const TalString& name) const override;
  std::vector<std::u16string> EntryNames(const odlex::engine::Database& db) const override;
  bool Accepts(const MSIBinary& data, unsigned& code, TalString& why) const override;
  void WriteEntry(odlex::engine::Database& db, const std::u16string& name,
                  const MSIBinary& data) const override;
  void RemoveEntry(odlex::engine::Database& db, const std::u16string& name) const override;
};

// _SummaryInformation ----------------------------------------------------------------------

// The whole summary information as one row, one column per property (in property order):
// Codepage, Title, Subject, Author, Keywords, Comments, Template, LastAuthor, RevNumber,
// LastPrinted, CreateDateTime, LastSaveDateTime, PageCount, WordCount, CharCount, AppName,
// Security. The table has no key: it holds one row at most.
//
// A property that is absent reads as null (numbers, times) or empty (texts); a null number or
// time, or an empty text, leaves the property out when the row is written. Times are FILETIME
// counts (100 ns since 1601, UTC); generic column access shows them as text,
// "YYYY/MM/DD hh:mm:ss" with ".fffffff" when there is a fraction of a second, and takes that
// form back. Texts are stored in the code page the Codepage property names. Properties of the
// stream that have no column are kept as they were read.
class MSIE_SummaryInformation : public MSIEntry {
 public:
  MSIE_SummaryInformation();
  MSIE_SummaryInformation(const MSIE_SummaryInformation& other);
  ~MSIE_SummaryInformation() override;
  using MSIEntry::GetColumn;
  using MSIEntry::SetColumn;

  NullableLong GetCodepage() const { return NullableLongAt(0); }
  void SetCodepage(const NullableLong& value) { SetNullableAt(0, value); }
  TalString GetTitle() const { return TextAt(1); }
  void SetTitle(const TalString& value) { SetTextAt(1, value); }
  TalString GetSubject() const { return TextAt(2); }
  void SetSubject(const TalString& value) { SetTextAt(2, value); }
  TalString GetAuthor() const { return TextAt(3); }
  void SetAuthor(const TalString& value) { SetTextAt(3, value); }
  TalString GetKeywords() const { return TextAt(4); }
  void SetKeywords(const TalString& value) { SetTextAt(4, value); }
  TalString GetComments() const { return TextAt(5); }
  void SetComments(const TalString& value) { SetTextAt(5, value); }
  // "<platform>;<languages>", e.g. "x64;1033".
  TalString GetTemplate() const { return TextAt(6); }
  void SetTemplate(const TalString& value) { SetTextAt(6, value); }
  TalString GetLastAuthor() const { return TextAt(7); }
  void SetLastAuthor(const TalString& value) { SetTextAt(7, value); }
  // The name of the user running the process (odlex::CurrentUserName).
  void SetLastAuthor();
  // The package code (a GUID in braces).
  TalString GetRevNumber() const { return TextAt(8); }
  void SetRevNumber(const TalString& value) { SetTextAt(8, value); }
  NullableQuad GetLastPrinted() const { return TimeAt(9); }
  void SetLastPrinted(const NullableQuad& value) { SetTimeAt(9, value); }
  NullableQuad GetCreateDateTime() const { return TimeAt(10); }
  void SetCreateDateTime(const NullableQuad& value) { SetTimeAt(10, value); }
  NullableQuad GetLastSaveDateTime() const { return TimeAt(11); }
  void SetLastSaveDateTime(const NullableQuad& value) { SetTimeAt(11, value); }
  // `time` (UTC), or the current time when null. False, changing nothing, for a time with a
  // field out of range.
  bool SetLastSaveDateTime(const SYSTEMTIME* time);
  // The installer schema version the package needs.
  NullableLong GetPageCount() const { return NullableLongAt(12); }
  void SetPageCount(const NullableLong& value) { SetNullableAt(12, value); }
  // The source type bits (msidbSumInfoSourceType).
  NullableLong GetWordCount() const { return NullableLongAt(13); }
  void SetWordCount(const NullableLong& value) { SetNullableAt(13, value); }
  NullableLong GetMSISource() const { return GetWordCount(); }
  NullableLong GetCharCount() const { return NullableLongAt(14); }
  void SetCharCount(const NullableLong& value) { SetNullableAt(14, value); }
  TalString GetAppName() const { return TextAt(15); }
  void SetAppName(const TalString& value) { SetTextAt(15, value); }
  NullableLong GetSecurity() const { return NullableLongAt(16); }
  void SetSecurity(const NullableLong& value) { SetNullableAt(16, value); }

 private:
  friend class MSIT_SummaryInformation;
  // A time column: null when empty or not in the text form above.
  NullableQuad TimeAt(std::size_t column) const;
  void SetTimeAt(std::size_t column, const NullableQuad& value);

  struct Properties;  // the property set as read, for the properties without a column
  std::unique_ptr<Properties> read_;
};

class MSIT_SummaryInformation : public MSITable {
 public:
  MSIT_SummaryInformation();
  // The row; null when the database has no summary information (and none was added).
  MSIE_SummaryInformation* FindFirst() const;
  // An empty row (modified) when the table holds none; otherwise null, as for every table.
  MSIE_SummaryInformation* Add();

  // One row when the database has summary information, none otherwise.
  bool Populate() override;
  // Writes the row when it has been modified; an untouched summary stays byte for byte as
  // the file had it. A deleted row is refused (false, error 5): the stream is not optional.
  bool Persist() override;

 protected:
  std::unique_ptr<MSIEntry> NewEntry() const override;
};

// _TransformView ---------------------------------------------------------------------------

// Every column is a key column, so rows differ as soon as any value does. Find looks rows up by
// their first three keys (table, column, row key) and gives the first in key order, that is the
// one with the smallest Data and Current (null first).
class MSIE_TransformView : public MSIEntry {
 public:
  MSIE_TransformView();
  MSIE_TransformView(const TalString& table, const TalString& column, const TalString& row,
                     const TalString& data, const TalString& current);

  TalString GetTable() const { return TextAt(0); }
  void SetTable(const TalString& value) { SetTextAt(0, value); }
  TalString GetColumn() const { return TextAt(1); }
  void SetColumn(const TalString& value) { SetTextAt(1, value); }
  TalString GetRow() const { return TextAt(2); }
  void SetRow(const TalString& value) { SetTextAt(2, value); }
  TalString GetData() const { return TextAt(3); }
  void SetData(const TalString& value) { SetTextAt(3, value); }
  TalString GetCurrent() const { return TextAt(4); }
  void SetCurrent(const TalString& value) { SetTextAt(4, value); }
  using MSIEntry::GetColumn;
  using MSIEntry::SetColumn;
};

class MSIT_TransformView : public MSITable {
 public:
  MSIT_TransformView();
  // Null when a live row already has these values.
  MSIE_TransformView* Add(const TalString& table, const TalString& column, const TalString& row,
                          const TalString& data, const TalString& current);
  // See MSIE_TransformView. Uses an index of the live rows, rebuilt after any change.
  MSIE_TransformView* Find(const TalString& table, const TalString& column,
                           const TalString& row) const;

  // Keeps the rows in memory (deleted rows are destroyed, the rest marked unmodified); the
  // database is not touched.
  bool Persist() override;

 protected:
  std::unique_ptr<MSIEntry> NewEntry() const override;

 private:
  // First live row by "table\0column\0row".
  mutable std::map<std::u16string, MSIE_TransformView*> index_;
  mutable std::uint64_t indexedAt_ = UINT64_MAX;  // GetChangeCount() when index_ was built
};
