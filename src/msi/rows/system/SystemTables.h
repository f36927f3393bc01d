#pragma once
// What the hand-written classes of the tables the database keeps about itself share: their
// catalog entries and the engine behind a table object.

#include <string_view>

#include "msi/engine/Database.h"
#include "msi/engine/Result.h"
#include "msi/schema/Schema.h"
#include "odlex/msi/MSIDatabase.h"
#include "odlex/msi/MSITable.h"

namespace odlex::rows {

// The catalog's entry for one of these tables (every one of them is in the catalog).
inline const schema::TableSchema& catalogSchema(std::u16string_view name) {
  return *schema::findTable(name);
}

// The engine of the table's database; null when no open database is set.
inline engine::Database* engineOf(const MSITable& table) {
  return table.GetDatabase() ? table.GetDatabase()->engineDatabase() : nullptr;
}

// The text of the failure when engineOf gives null.
inline TalString noDatabaseText(const MSITable& table) {
  return TalString(u"table " + table.GetName().u16() + u": no open database");
}

}  // namespace odlex::rows
