// Lookups and collectors of the table objects of the file tables: Icon, Media, BindImage, Font,
// SelfReg, MoveFile, DuplicateFile, RemoveFile, IsolatedComponent and Binary.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectRowsOfComponent;
using odlex::tables::collectRowsWithValue;
using odlex::tables::followReference;

void ODLEXTIcon::Add(const TalString& name, const TalString& sourceFile) {
  const MSIBinary data(sourceFile);
  if (data.GetSize() == 0) {
    SetTempEntries(nullptr);
    return;
  }
  MSIEIcon row(name);
  row.SetData(data);
  AddEntry(row);
}

MSIEIcon& ODLEXTIcon::GetIconWithIconID(const TalString& iconID) {
  return FindOrThrow(GetTable().Find(iconID), ODLEXDatabaseError::eIconNotFound);
}

// Only the data held in memory can have come from a file: the package's streams are not read.
MSIEIcon& ODLEXTIcon::GetIconWithSourceFile(const TalString& sourceFile) {
  if (!sourceFile.u16().empty()) {
    for (RWCollectable* item : GetEntries()) {
      auto* row = static_cast<MSIEIcon*>(item);
      if (!row->IsDeleted() && row->GetBinarySourceFile(u"Data") == sourceFile)
        return *row;
    }
  }
  throw ODLEXDatabaseError(ODLEXDatabaseError::eIconNotFound);
}

MSIEMedia& ODLEXTMedia::GetMediaWithDiskID(short diskID) {
  return FindOrThrow(GetTable().Find(diskID), ODLEXDatabaseError::eMediaNotFound);
}

MSIEBindImage& ODLEXTBindImage::GetBindImageWithFileID(const TalString& fileID) {
  return FindOrThrow(GetTable().Find(fileID), ODLEXDatabaseError::eBindImageNotFound);
}

MSIEFile& ODLEXTBindImage::GetFile(const MSIEBindImage& row) {
  MSIEFile* file = GetDatabase().GetFile().Lookup(row.GetFile());
  if (!file)
    throw ODLEXDatabaseErrorWithEntry(kType, row, ODLEXDatabaseError::eFileNotFound);
  return *file;
}

MSIEFont& ODLEXTFont::GetFontWithFileID(const TalString& fileID) {
  return FindOrThrow(GetTable().Find(fileID), ODLEXDatabaseError::eFontNotFound);
}

bool ODLEXTFont::IsFileAFont(const MSIEFile& file) {
  return GetTable().Find(file.GetFileID()) != nullptr;
}

MSIESelfReg& ODLEXTSelfReg::GetSelfRegWithFileID(const TalString& fileID) {
  return FindOrThrow(GetTable().Find(fileID), ODLEXDatabaseError::eSelfRegNotFound);
}

MSIEMoveFile& ODLEXTMoveFile::GetMoveFileWithID(const TalString& fileKey) {
  return FindOrThrow(GetTable().Find(fileKey), ODLEXDatabaseError::eMoveFileNotFound);
}

RWBTree& ODLEXTMoveFile::GetMoveFiles(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

MSIEDuplicateFile& ODLEXTDuplicateFile::GetDuplicateFile(const MSIEFile& file) {
  return followReference(GetTable().FindByFile(file.GetFileID()), ODLEXTObject::eFile, file,
                         ODLEXDatabaseError::eDuplicateFileNotFound);
}

RWBTree& ODLEXTDuplicateFile::GetDuplicateFiles(RWBTree& out, const MSIEFile& file) {
  return collectRowsWithValue(GetEntries(), out, &MSIEDuplicateFile::GetFile, file.GetFileID());
}

RWBTree& ODLEXTDuplicateFile::GetDuplicateFiles(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTRemoveFile::GetRemoveFiles(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

void ODLEXTRemoveFile::init(MSIERemoveFile& row, const MSIEComponent& component) {
  row.SetComponent(component.GetComponentID());
  row.SetDirProperty(component.GetDirectoryID());
  row.SetInstallMode(eRemoveOnUninstall);
}

RWBTree& ODLEXTIsolatedComponent::GetEntries(RWBTree& out, const MSIEComponent& component) {
  GetEntriesForSharedComponent(out, component);
  return GetEntriesForApplicationComponent(out, component);
}

RWBTree& ODLEXTIsolatedComponent::GetEntriesForApplicationComponent(
    RWBTree& out, const MSIEComponent& application) {
  return collectRowsWithValue(GetEntries(), out, &MSIEIsolatedComponent::GetComponentApplication,
                              application.GetComponentID());
}

RWBTree& ODLEXTIsolatedComponent::GetEntriesForSharedComponent(RWBTree& out,
                                                               const MSIEComponent& shared) {
  return collectRowsWithValue(GetEntries(), out, &MSIEIsolatedComponent::GetComponentShared,
                              shared.GetComponentID());
}

MSIEIsolatedComponent& ODLEXTIsolatedComponent::GetEntry(const TalString& shared,
                                                         const TalString& application) {
  return FindOrThrow(GetTable().Find(shared, application), ODLEXDatabaseError::eComponentNotFound);
}

MSIEBinary& ODLEXTBinary::GetBinaryWithID(const TalString& name) {
  return FindOrThrow(GetTable().Find(name), ODLEXDatabaseError::eBinaryNotFound);
}
