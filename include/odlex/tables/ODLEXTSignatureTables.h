#pragma once
// Table objects of the signature tables: MsiDigitalCertificate (certificates as binary data),
// MsiDigitalSignature (which signed object, a cabinet of the Media table, must be signed with
// which certificate) and MsiFileHash (the MD5 hash of each unversioned file).

#include "odlex/tables/ODLEXTRowTable.h"

class MSIEFile;

class ODLEXTMsiDigitalCertificate
    : public ODLEXTRowTable<ODLEXTMsiDigitalCertificate, ODLEXTObject::eMsiDigitalCertificate> {
 public:
  // Adds `row`; with a null key the table makes the key ("Certificate<n>"), and a certificate
  // already held (the same bytes) is found instead of added again. The temp entries hold the
  // row, which is revived and marked modified.
  void Add(const MSIEMsiDigitalCertificate& row);
  // Deletes `row` and, first, the signature rows that name it.
  void Delete(MSIEMsiDigitalCertificate& row);
  // The certificate `key`; code 63 when there is none.
  MSIEMsiDigitalCertificate& GetWithDigitalCertificate(const TalString& key);
};

class ODLEXTMsiDigitalSignature
    : public ODLEXTRowTable<ODLEXTMsiDigitalSignature, ODLEXTObject::eMsiDigitalSignature> {
 public:
  using ODLEXTObject::GetEntries;
  using ODLEXTRowTable::Delete;

  // The signature of the object `signObject` of `table` (in practice "Media" and a disk
  // number); code 66 when there is none.
  MSIEMsiDigitalSignature& GetSignatureWithSignedObject(const TalString& table,
                                                        const TalString& signObject);
  // Inserts into `out` the live rows that name `certificate` (exact comparison); returns `out`.
  RWBTree& GetEntries(RWBTree& out, const MSIEMsiDigitalCertificate& certificate);
  // Deletes the live rows that name `certificate`.
  void Delete(const MSIEMsiDigitalCertificate& certificate);
};

class ODLEXTMsiFileHash : public ODLEXTRowTable<ODLEXTMsiFileHash, ODLEXTObject::eMsiFileHash> {
 public:
  using ODLEXTRowTable::Add;
  using ODLEXTRowTable::Delete;

  // Adds the hash of `file`'s source file (GetFileHash).
  void Add(const MSIEFile& file);
  // Deletes the hash row of `file`, when it has one.
  void Delete(const MSIEFile& file);
  // The row of the file `fileID`; code 64 when there is none.
  MSIEMsiFileHash& GetEntryWithFileID(const TalString& fileID);
  // The row of `file`; code 64 when there is none.
  MSIEMsiFileHash& GetEntry(const MSIEFile& file);

  // The row value (not added) holding the hash of `file`'s source file: the MD5 digest of its
  // bytes, read as four little-endian signed 32-bit numbers, HashPart1 from the first four
  // bytes. The file is the File table's GetLongFilePathSource with "[SourceDir]" standing for
  // the source root and '\' separating folders. ODLEXDatabaseErrorWithErrorCode code 50, with
  // the file status (2 no such file, 3 a folder of the path missing, 5 not readable, 30 read
  // failure), when it cannot be read, also when the path is empty (status 3).
  MSIEMsiFileHash GetFileHash(const MSIEFile& file);
  // The same for the file at the host path `path`, as the row of the file `fileID`.
  static MSIEMsiFileHash HashFile(const TalString& path, const TalString& fileID);
  // Stores the hash of `file`: adds its row, or changes the row when the hash differs (an
  // unchanged row stays unmodified). Lets GetFileHash's error pass.
  void RefreshFileHash(const MSIEFile& file);

  // The host path of the source file of `file`: "[SourceDir]" stands for the database's source
  // root (ODLEXDatabase::GetSourceRoot).
  TalString GetSourceFile(const MSIEFile& file);
};
