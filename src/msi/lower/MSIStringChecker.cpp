// Whether text fits the database's code page.

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIStringChecker.h>

#include "msi/engine/Database.h"
#include "storage/CodePage.h"

namespace {

std::uint32_t codePageOf(const MSIDatabase& database) {
  const odlex::engine::Database* db = database.engineDatabase();
  return db ? db->codePage() : 0;
}

}  // namespace

bool MSIStringChecker::IsCharOK(char16_t c) const {
  return odlex::storage::canEncode(codePageOf(database_), std::u16string_view(&c, 1));
}

bool MSIStringChecker::IsStringOK(const TalString& text) const {
  return odlex::storage::canEncode(codePageOf(database_), text.u16());
}
