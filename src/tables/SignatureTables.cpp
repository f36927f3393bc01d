// The certificate and signature table objects.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectRowsWithValue;

void ODLEXTMsiDigitalCertificate::Add(const MSIEMsiDigitalCertificate& row) {
  if (!row.GetDigitalCertificate().isNull()) {
    AddEntry(row);
    return;
  }
  MSIEMsiDigitalCertificate* added = GetTable().Add(row.GetCertData());
  SetTempEntries(added);
  if (added)
    Revive(*added);
}

void ODLEXTMsiDigitalCertificate::Delete(MSIEMsiDigitalCertificate& row) {
  GetDatabase().GetMsiDigitalSignature().Delete(static_cast<const MSIEMsiDigitalCertificate&>(row));
  DeleteEntry(row);
}

MSIEMsiDigitalCertificate& ODLEXTMsiDigitalCertificate::GetWithDigitalCertificate(
    const TalString& key) {
  return FindOrThrow(GetTable().Find(key), ODLEXDatabaseError::eCertificateNotFound);
}

MSIEMsiDigitalSignature& ODLEXTMsiDigitalSignature::GetSignatureWithSignedObject(
    const TalString& table, const TalString& signObject) {
  return FindOrThrow(GetTable().Find(table, signObject),
                     ODLEXDatabaseError::eDigitalSignatureNotFound);
}

RWBTree& ODLEXTMsiDigitalSignature::GetEntries(RWBTree& out,
                                               const MSIEMsiDigitalCertificate& certificate) {
  return collectRowsWithValue(GetEntries(), out, &MSIEMsiDigitalSignature::GetDigitalCertificate,
                              certificate.GetDigitalCertificate());
}

void ODLEXTMsiDigitalSignature::Delete(const MSIEMsiDigitalCertificate& certificate) {
  RWBTree rows;
  for (RWCollectable* item : GetEntries(rows, certificate))
    DeleteEntry(static_cast<MSIEMsiDigitalSignature&>(*item));
}
