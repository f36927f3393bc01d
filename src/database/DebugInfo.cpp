// Diagnostics: the lower layer's pending errors and the texts of installer result codes, written
// to the debug output.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/DebugOutput.h"
#include "odlex/tables/ODLEXDatabaseError.h"

namespace {

constexpr const char16_t* kUnknownCode = u"Unknown to ODLEXClasses.\r\n";

// The text of an installer result code this library knows; null for the others.
const char16_t* knownCodeText(unsigned code) {
  switch (code) {
    case 0:
      return u"MSI: No error.\r\n";
    case 6:
      return u"MSI: Invalid Handle.\r\n";
    case 87:
      return u"MSI: Invalid Parameter.\r\n";
    case 110:
      return u"MSI: Open failed.\r\n";
    case 232:
      return u"MSI: No data.\r\n";
    case 1615:
      return u"MSI: Bad query syntax.\r\n";
    case 1616:
      return u"MSI: Record field does not exist.\r\n";
    case 1620:
      return u"MSI: Install package invalid.\r\n";
    case 1624:
      return u"MSI: Install transform failure.\r\n";
    case 1628:
      return u"MSI: Invalid or unknown table specified.\r\n";
    case 1631:
      return u"MSI: Create failed.\r\n";
    default:
      return nullptr;
  }
}

// The unknown-table code's line is followed by the unknown-code line as well.
constexpr unsigned kUnknownTable = 1628;

}  // namespace

void ODLEXDatabase::WriteDebugInfo(unsigned code, bool) {
  const char16_t* text = knownCodeText(code);
  if (text)
    odlex::DebugOutput::write(text);
  if (!text || code == kUnknownTable)
    odlex::DebugOutput::write(kUnknownCode);
}

const TalError& ODLEXDatabase::GetTalError() {
  const TalError* pending = database_.GetError();
  if (!pending)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eNoPendingError);
  takenError_ = *pending;
  database_.ClearErrors();
  return takenError_;
}

void ODLEXDatabase::DumpAllErrors() {
  while (const TalError* pending = database_.GetError())
    odlex::DebugOutput::write(TalString(u"TalMSI: ") + pending->GetText() + u"\r\n");
}
