// odlex rows: the live rows of one table as its table object holds them.

#include <cstdio>
#include <map>
#include <string>

#include "Cli.h"
#include "msi/engine/Result.h"
#include "msi/engine/Text.h"
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

// Drops the database from the list however the command ends.
struct ListedDatabase {
  ODLEXDatabase& db;
  ~ListedDatabase() { ODLEXDatabase::RemoveDatabaseFromList(db.GetFilePath(), false); }
};

void printRows(const std::string& package, const std::string& table, ODLEXTObject::typeID type,
               bool json) {
  ODLEXDatabase::INIT();
  ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
  ListedDatabase listed{ODLEXDatabase::AddDatabaseToList(TalString::FromUtf8(package), readOnly)};
  ODLEXTObject& object = listed.db.GetTableObject(type);
  RWBTree rows = object.GetEntries();
  object.FilterOutDeletedEntries(rows, false);

  // The columns as the table's row class has them (the summary information's single row has
  // one column per property, unlike its text-file form).
  const std::unique_ptr<MSITable> shape = createTableObject(TalString::FromUtf8(table));
  std::vector<std::u16string> names;
  nlohmann::json columns = nlohmann::json::array();
  for (const auto& column : shape->GetSchema().columns) {
    names.emplace_back(column.name);
    columns.push_back(engine::toUtf8(names.back()));
  }
  if (!json)
    printFields(names);
  nlohmann::json printed = nlohmann::json::array();
  std::vector<std::u16string> fields(names.size());
  for (RWCollectable* item : rows) {
    const auto* row = static_cast<const MSIEntry*>(item);
    nlohmann::json values = nlohmann::json::array();
    for (std::size_t i = 0; i < names.size(); ++i) {
      MSIRecordColumn value;
      row->GetColumn(TalString(names[i]), value);
      fields[i] = value.GetString().u16();
      values.push_back(value.IsNull() ? nlohmann::json(nullptr)
                                      : nlohmann::json(engine::toUtf8(fields[i])));
    }
    if (json)
      printed.push_back(std::move(values));
    else
      printFields(fields);
  }
  if (json)
    printJson({{"table", table}, {"columns", columns}, {"rows", printed}});
}

}  // namespace

void addRowsCommand(Commands& commands) {
  struct Options {
    std::string package;
    std::string table;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "rows",
      "print the live rows of a table through its table object: a line of column names, then "
      "one row per line",
      "odlex rows product.msi Shortcut", [options] {
        const ODLEXTObject::typeID type = tableTypeOf(options->table);
        if (type == ODLEXTObject::eNoTable)
          throw Failure(engine::kInvalidTable,
                        "no table object for a table named " + options->table);
        // Opened once through the engine first, for a precise error when the file cannot be read.
        openPackage(options->package, engine::Database::OpenMode::kReadOnly);
        try {
          printRows(options->package, options->table, type, options->json);
        } catch (const ODLEXDatabaseError& error) {
          const int code = static_cast<ODLEXDatabaseError::eCodeMeaning>(error);
          throw Failure(engine::kFunctionFailed, "the table object of " + options->table +
                                                     " failed with code " + std::to_string(code));
        }
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("TABLE", options->table, "the table")->required();
  addJsonFlag(command, options->json,
              R"({"table": name, "columns": [names], "rows": [[null or text per column]]})");
}

}  // namespace odlex::cli
