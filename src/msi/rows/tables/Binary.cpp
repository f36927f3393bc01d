// Binary rows whose data is read from a file.

#include "msi/engine/Result.h"
#include "odlex/msi/MSIRows.h"
#include "odlex/support/Path.h"

MSIEBinary* MSITBinary::Add(const TalString& name, const TalString& sourceFile, bool replace) {
  const TalString rowName = odlex::path::FileName(name);
  MSIEBinary* row = Find(rowName);
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
        TalString(u"Binary " + rowName.u16() + u": the file " + sourceFile.u16() + u" is empty"));
    return nullptr;
  }
  if (!row)
    row = Add(rowName);
  row->SetData(data);
  return row;
}
