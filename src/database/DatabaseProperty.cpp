// Reading single properties and the summary information's template straight from a lower-layer
// database, without table objects: for packages that are not open as databases of the list.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/msi/MSIView.h"
#include "odlex/support/DebugOutput.h"
#include "odlex/tables/ODLEXDatabaseError.h"

namespace {

// Writes the failing step's line and the lower layer's code, then throws `error`.
[[noreturn]] void fail(const char16_t* line, unsigned code,
                       ODLEXDatabaseError::eCodeMeaning error) {
  odlex::DebugOutput::write(line);
  ODLEXDatabase::WriteDebugInfo(code, false);
  throw ODLEXDatabaseError(error);
}

}  // namespace

// The name is passed as a query parameter, so that any name (quotes included) is looked up as
// written.
TalString ODLEXDatabase::GetDatabaseProperty(MSIDatabase& database, const TalString& name) {
  MSIView view(database);
  unsigned code = view.Open(u"SELECT `Value` FROM `Property` WHERE `Property`=?", false);
  if (code != 0)
    fail(u"ODLEX: GetDatabaseProperty - can't open view:\r\n", code,
         ODLEXDatabaseError::ePropertyViewFailed);
  MSIRecord params;
  params.SetString(1, name);
  code = view.Execute(&params, false);
  if (code != 0)
    fail(u"ODLEX: GetDatabaseProperty - can't execute SQL statement:\r\n", code,
         ODLEXDatabaseError::ePropertyExecuteFailed);
  MSIRecord row;
  code = view.Fetch(row);
  if (code != 0)
    fail(u"ODLEX: GetDatabaseProperty - can't fetch row:\r\n", code,
         ODLEXDatabaseError::ePropertyFetchFailed);
  return row.GetString(1);
}

void ODLEXDatabase::GetProductNameAndCode(TalString& name, TalString& code, const TalString& path) {
  MSIDatabase database(path, MSIDatabase::ePersistReadOnly, eSchema110);
  if (!database.isValid())
    throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
  name = GetDatabaseProperty(database, u"ProductName");
  code = GetDatabaseProperty(database, u"ProductCode");
}

TalString ODLEXDatabase::GetTemplateSumProp(const TalString& path) {
  MSIDatabase database(path, MSIDatabase::ePersistReadOnly, eSchema110);
  MSIT_SummaryInformation summary;
  summary.SetDatabase(database);
  if (!database.isValid() || !summary.Populate()) {
    const TalError* error = database.GetError();
    throw ODLEXDatabaseErrorWithErrorCode(ODLEXDatabaseError::eDatabaseOpenFailed,
                                          error ? error->GetCode() : 0);
  }
  const MSIE_SummaryInformation* row = summary.FindFirst();
  return row ? row->GetTemplate() : TalString();
}
