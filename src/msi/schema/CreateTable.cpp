// Creating a table of the catalog in a database.

#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"

namespace odlex::schema {

std::uint32_t createTable(engine::Database& db, std::u16string_view name, engine::Error& error) {
  const TableSchema* table = findTable(name);
  const std::string where = "table " + engine::toUtf8(name);
  if (!table || table->system()) {
    error = {engine::kInvalidTable,
             where + (table ? " is kept by the database itself and cannot be created"
                            : " is not a table the catalog knows")};
    return error.code;
  }
  if (db.findTable(name)) {
    error = {engine::kAlreadyExists, where + " already exists"};
    return error.code;
  }
  if (!db.createTable(std::u16string(name), engineColumns(*table), error))
    return error.code;
  return engine::kSuccess;
}

}  // namespace odlex::schema
