// Certificates stored once each, under keys made by the table.

#include "odlex/msi/MSIRows.h"

MSIEMsiDigitalCertificate* MSITMsiDigitalCertificate::Add(const MSIBinary& certData) {
  if (certData.GetSize() == 0)
    return nullptr;
  for (RWCollectable* item : GetTable()) {
    auto* row = static_cast<MSIEMsiDigitalCertificate*>(item);
    if (!row->IsDeleted() && row->GetCertData() == certData)
      return row;
  }
  MSIEMsiDigitalCertificate* row = Add(MakeUniqueKey(TalString(u"Certificate")));
  row->SetCertData(certData);
  return row;
}
