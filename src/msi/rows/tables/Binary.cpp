// Binary rows whose data is read from a file.

#include "msi/engine/Result.h"
#include "odlex/msi/MSIRows.h"

MSIEBinary* MSITBinary::Add(const TalString& name, const TalString& sourceFile, bool replace) {
  MSIEBinary* row = Find(name);
  if (row && !replace)
    return nullptr;
  const MSIBinary data(sourceFile);
  if (!data.GetReadError().u16().empty()) {
    ReportError(odlex::engine::kOpenFailed, data.GetReadError());
    return nullptr;
  }
  if (data.GetSize() == 0) {
    ReportError(
        odlex::engine::kInvalidParameter,
        TalString(u"Binary " + name.u16() + u": the file " + sourceFile.u16() + u" is empty"));
    return nullptr;
  }
  if (!row)
    row = Add(name);
  row->SetData(data);
  return row;
}
