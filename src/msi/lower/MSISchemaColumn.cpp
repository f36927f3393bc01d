// Column descriptions from the schema catalog and the database's column definitions.

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSISchemaColumn.h>

#include "msi/engine/Database.h"
#include "msi/schema/Schema.h"

namespace engine = odlex::engine;

namespace {

MSISchemaColumn::eType typeOf(const engine::Column& column) {
  if (column.isBinary())
    return MSISchemaColumn::typeBinary;
  if (column.isString())
    return MSISchemaColumn::typeString;
  return column.integerSize() == 4 ? MSISchemaColumn::typeLong : MSISchemaColumn::typeShort;
}

}  // namespace

MSISchemaColumn::MSISchemaColumn(const TalString& table, const TalString& column,
                                 std::uint16_t typeWord)
    : table_(table), name_(column) {
  const engine::Column engineColumn{column.u16(), typeWord};
  type_ = typeOf(engineColumn);
  key_ = engineColumn.key();
  nullable_ = engineColumn.nullable();
  localizable_ = engineColumn.localizable();
  size_ = type_ == typeBinary   ? 0
          : type_ == typeString ? engineColumn.maxLength()
                                : engineColumn.integerSize();

  const odlex::schema::TableSchema* known = odlex::schema::findTable(table.u16());
  const odlex::schema::ColumnSchema* schema = known ? known->findColumn(column.u16()) : nullptr;
  if (schema) {
    keyTable_ = TalString(schema->keyTable);
    keyColumn_ = schema->keyColumn;
    category_ = TalString(schema->category);
  } else {
    foreignByName_ = !column.isNull() && column[column.length() - 1] == u'_';
  }
}

unsigned MSISchemaColumn::GetTableColumns(MSIDatabase& database, const TalString& table,
                                          std::vector<MSISchemaColumn>& out) {
  out.clear();
  engine::Database* db = database.engineDatabase();
  auto fail = [&database](unsigned code, const TalString& text) {
    database.AddError(TalError(code, u"GetTableColumns: " + text, u"GetTableColumns"));
    return code;
  };
  if (!db)
    return fail(engine::kInvalidHandle, u"the database is not open");
  const engine::Table* found = db->findTable(table.u16());
  if (!found)
    return fail(engine::kInvalidTable, u"no table " + table + u" in the database");
  for (const engine::Column& column : found->columns())
    out.emplace_back(table, TalString(column.name), column.type);
  return engine::kSuccess;
}
