// odlex rows: the live rows of one table as its table object holds them.

#include <cstdio>
#include <map>
#include <string>

#include "Cli.h"
#include "msi/engine/Result.h"
#include "msi/engine/Text.h"
#include "msi/idt/TextEscape.h"
#include "msi/schema/Schema.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSIRows.h"
#include "odlex/tables/ODLEXTables.h"

namespace odlex::cli {

namespace {

// The table type of a table name (exact case), or eNoTable.
ODLEXTObject::typeID tableTypeOf(const std::string& name) {
  static const std::map<std::string, ODLEXTObject::typeID> types = {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) {#Table, ODLEXTObject::e##Table},
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
  };
  auto found = types.find(name);
  return found == types.end() ? ODLEXTObject::eNoTable : found->second;
}

void printFields(const std::vector<std::u16string>& fields) {
  std::string line;
  for (std::size_t i = 0; i < fields.size(); ++i)
    line += (i ? "\t" : "") + engine::toUtf8(idt::escapeValue(fields[i]));
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
}

// Drops the database from the list however the command ends.
struct ListedDatabase {
  ODLEXDatabase& db;
  ~ListedDatabase() { ODLEXDatabase::RemoveDatabaseFromList(db.GetFilePath(), false); }
};

void printRows(const std::string& package, const std::string& table, ODLEXTObject::typeID type) {
  ODLEXDatabase::INIT();
  ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
  ListedDatabase listed{ODLEXDatabase::AddDatabaseToList(TalString::FromUtf8(package), readOnly)};
  ODLEXTObject& object = listed.db.GetTableObject(type);
  RWBTree rows = object.GetEntries();
  object.FilterOutDeletedEntries(rows, false);

  // The columns as the table's row class has them (the summary information's single row has
  // one column per property, unlike its text-file form).
  const std::unique_ptr<MSITable> shape = createTableObject(TalString::FromUtf8(table));
  const auto& columns = shape->GetSchema().columns;
  std::vector<std::u16string> names;
  for (const auto& column : columns)
    names.emplace_back(column.name);
  printFields(names);
  std::vector<std::u16string> fields(names.size());
  for (RWCollectable* item : rows) {
    const auto* row = static_cast<const MSIEntry*>(item);
    for (std::size_t i = 0; i < names.size(); ++i) {
      MSIRecordColumn value;
      row->GetColumn(TalString(names[i]), value);
      fields[i] = value.GetString().u16();
    }
    printFields(fields);
  }
}

}  // namespace

int rowsCommand(const Arguments& args) {
  args.expectCount(2, "rows");
  const std::string& table = args.positional[1];
  const ODLEXTObject::typeID type = tableTypeOf(table);
  if (type == ODLEXTObject::eNoTable)
    throw Failure(engine::kInvalidTable, "no table object for a table named " + table);
  // Opened once through the engine first, for a precise error when the file cannot be read.
  openPackage(args.positional[0], engine::Database::OpenMode::kReadOnly);
  try {
    printRows(args.positional[0], table, type);
  } catch (const ODLEXDatabaseError& error) {
    const int code = static_cast<ODLEXDatabaseError::eCodeMeaning>(error);
    throw Failure(engine::kFunctionFailed,
                  "the table object of " + table + " failed with code " + std::to_string(code));
  }
  return 0;
}

}  // namespace odlex::cli
