#pragma once
// Table objects of the tables the database keeps about itself: the summary information, the
// validation table, the transform view, the storages and streams of the file, and the catalog
// tables of tables and columns. They load, modify and persist as every table object does; what
// each adds is declared here.

#include "odlex/msi/MSIDatabase.h"
#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXT_SummaryInformation
    : public ODLEXTRowTable<ODLEXT_SummaryInformation, ODLEXTObject::e_SummaryInformation> {
 public:
  // The common fields (MSIDatabase::GetSummaryInformation); false when the database has no
  // summary information.
  bool GetSummaryInformation(msidbSumInfoSourceType& sourceType, MSIDatabase::ePlatform& platform,
                             TalString& title, TalString& subject, TalString& author,
                             TalString& comments, NullableQuad& created, NullableQuad& lastSaved);
  // Sets the title, subject, author and comments, making the summary row when the package has
  // none, and marks the table and the database modified, even when nothing changed. The source
  // type (compression, short names) and the platform stay as the package has them: these four
  // texts are all the caller names, and writing fixed values there would turn a compressed x64
  // package into an uncompressed Intel one.
  void SetSummaryInformation(const TalString& title, const TalString& subject,
                             const TalString& author, const TalString& comments);
  // The time the package was last saved (FILETIME count); null when it has no summary row or
  // the row has no such time.
  NullableQuad GetLastSaveDateTime() const;
  // The summary row; ODLEXDatabaseError code 36 when the package has none.
  MSIE_SummaryInformation& GetEntry();
  // Stamps the row with the current time as the last-save time and the user running the
  // process as the last author, and marks it modified; nothing when there is no row.
  void DeclareModified();
  // Stamps the row (DeclareModified), then writes it: every save records when and by whom.
  void Persist() override;
};

class ODLEXT_Validation : public ODLEXTRowTable<ODLEXT_Validation, ODLEXTObject::e_Validation> {};

class ODLEXT_TransformView
    : public ODLEXTRowTable<ODLEXT_TransformView, ODLEXTObject::e_TransformView> {
 public:
  // The first row with these three keys (table, column, row key); code 38 when there is none.
  MSIE_TransformView& GetEntry(const TalString& table, const TalString& column,
                               const TalString& row);
  // Reads the rows afresh from the database, dropping the rows held.
  void ReLoad();
  // Releases the table, then empties the view: every row is removed.
  void Reset();
};

class ODLEXT_Storages : public ODLEXTRowTable<ODLEXT_Storages, ODLEXTObject::e_Storages> {
 public:
  using ODLEXTRowTable::Add;
  // Adds (or with `replace`, replaces) the storage `name` with the compound file at
  // `sourcePath`. The temp entries hold the row made (nothing when the lower layer refused:
  // the reason is in its error list); a row made is live and modified, and so is the table.
  void Add(const TalString& name, const TalString& sourcePath, bool replace);
  // The storage called `name`; code 40 when there is none.
  MSIE_Storages& Get_StoragesWithID(const TalString& name);
};

class ODLEXT_Streams : public ODLEXTRowTable<ODLEXT_Streams, ODLEXTObject::e_Streams> {
 public:
  using ODLEXTRowTable::Add;
  // Adds the stream `name` with the data of the file `sourcePath`, replacing the data of a
  // stream of that name. The temp entries hold the row (nothing when the lower layer refused).
  void Add(const TalString& name, const TalString& sourcePath);
};

class ODLEXT_Tables : public ODLEXTRowTable<ODLEXT_Tables, ODLEXTObject::e_Tables> {
 public:
  // The row of table `name`; code 32 when the database has no such table.
  MSIE_Tables& GetTableWithID(const TalString& name);
};

class ODLEXT_Columns : public ODLEXTRowTable<ODLEXT_Columns, ODLEXTObject::e_Columns> {};
