// The summary information, transform view, storages, streams and catalog table objects.

#include "odlex/tables/ODLEXTSystemTables.h"

#include "odlex/database/ODLEXDatabase.h"

bool ODLEXT_SummaryInformation::GetSummaryInformation(msidbSumInfoSourceType& sourceType,
                                                      MSIDatabase::ePlatform& platform,
                                                      TalString& title, TalString& subject,
                                                      TalString& author, TalString& comments,
                                                      NullableQuad& created,
                                                      NullableQuad& lastSaved) {
  return GetDatabase().GetDatabase().GetSummaryInformation(
      GetTable(), sourceType, platform, title, subject, author, comments, created, lastSaved);
}

void ODLEXT_SummaryInformation::SetSummaryInformation(const TalString& title,
                                                      const TalString& subject,
                                                      const TalString& author,
                                                      const TalString& comments) {
  MSIDatabase& lower = GetDatabase().GetDatabase();
  msidbSumInfoSourceType sourceType{};
  MSIDatabase::ePlatform platform = MSIDatabase::ePlatformNone;
  TalString unused[4];
  NullableQuad created;
  NullableQuad lastSaved;
  if (!lower.GetSummaryInformation(GetTable(), sourceType, platform, unused[0], unused[1],
                                   unused[2], unused[3], created, lastSaved)) {
    // A package without summary information gets the installer's usual values.
    sourceType = msidbSumInfoSourceType{};
    platform = MSIDatabase::ePlatformIntel;
  }
  lower.UpdateSummaryInformation(GetTable(), false, sourceType, platform, title, subject, author,
                                 comments);
  Modify(true);
  GetDatabase().SetModified(true);
}

NullableQuad ODLEXT_SummaryInformation::GetLastSaveDateTime() const {
  const auto* table = static_cast<const MSIT_SummaryInformation*>(GetLowerTable());
  const MSIE_SummaryInformation* row = table ? table->FindFirst() : nullptr;
  return row ? row->GetLastSaveDateTime() : NullableQuad();
}

MSIE_SummaryInformation& ODLEXT_SummaryInformation::GetEntry() {
  return FindOrThrow(GetTable().FindFirst(), ODLEXDatabaseError::eSummaryInformationMissing);
}

void ODLEXT_SummaryInformation::DeclareModified() {
  try {
    MSIE_SummaryInformation& row = GetEntry();
    row.SetLastSaveDateTime(static_cast<const SYSTEMTIME*>(nullptr));
    row.SetLastAuthor();
    row.Modify();
  } catch (const ODLEXDatabaseError&) {
    // A package without summary information has nothing to stamp.
  }
}

void ODLEXT_SummaryInformation::Persist() {
  DeclareModified();
  ODLEXTObject::Persist();
}

MSIE_TransformView& ODLEXT_TransformView::GetEntry(const TalString& table, const TalString& column,
                                                   const TalString& row) {
  return FindOrThrow(GetTable().Find(table, column, row),
                     ODLEXDatabaseError::eTransformViewNotFound);
}

void ODLEXT_TransformView::ReLoad() {
  if (!IsLoaded())
    return;
  ODLEXDatabase& db = GetDatabase();
  Unload();
  Load(db);
}

void ODLEXT_TransformView::Reset() {
  MSITable& table = GetTable();
  table.Unlock();
  for (RWCollectable* item : table.GetTable())
    static_cast<MSIEntry*>(item)->Delete();
  // The view lives in memory only: persisting it destroys the deleted rows.
  table.Persist();
}

void ODLEXT_Storages::Add(const TalString& name, const TalString& sourcePath, bool replace) {
  MSIE_Storages* row = GetTable().Add(name, sourcePath, replace);
  SetTempEntries(row);
  if (row)
    Revive(*row);
}

MSIE_Storages& ODLEXT_Storages::Get_StoragesWithID(const TalString& name) {
  return FindOrThrow(GetTable().Find(name), ODLEXDatabaseError::eStorageNotFound);
}

void ODLEXT_Streams::Add(const TalString& name, const TalString& sourcePath) {
  SetTempEntries(GetTable().Add(name, sourcePath, true));
}

MSIE_Tables& ODLEXT_Tables::GetTableWithID(const TalString& name) {
  return FindOrThrow(GetTable().Find(name), ODLEXDatabaseError::eTableNotFound);
}
