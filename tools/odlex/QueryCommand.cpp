// odlex query: runs one statement of the installer's query language. A SELECT prints its rows;
// any other statement changes the package, written atomically in place or to -o OUT, and
// nothing is written with --dry-run or when the statement fails.

#include <string>

#include "Cli.h"
#include "msi/engine/Text.h"
#include "msi/query/Query.h"

namespace odlex::cli {

namespace {

using OpenMode = engine::Database::OpenMode;
using nlohmann::json;

struct Options {
  std::string package;
  std::string sql;
  EditTarget edit;
  bool json = false;
};

json fieldJson(const query::Field& field) {
  switch (field.kind) {
    case query::Field::Kind::kNull:
      return nullptr;
    case query::Field::Kind::kInteger:
      return field.integer;
    case query::Field::Kind::kString:
    case query::Field::Kind::kStream:
      return engine::toUtf8(field.text);
  }
  return nullptr;
}

std::unique_ptr<query::Query> prepared(engine::Database& db, const std::string& sql) {
  engine::Error error;
  auto view = query::Query::prepare(db, engine::fromUtf8(sql), error);
  if (!view)
    throw Failure(error);
  return view;
}

void printRows(query::Query& view, bool asJson) {
  json columns = json::array();
  for (const engine::Column& column : view.columns())
    columns.push_back(engine::toUtf8(column.name));
  json rows = json::array();
  query::Record record;
  while (view.fetch(record) == engine::kSuccess) {
    json row = json::array();
    std::vector<std::u16string> fields;
    for (const query::Field& field : record) {
      row.push_back(fieldJson(field));
      fields.push_back(field.kind == query::Field::Kind::kInteger
                           ? engine::fromUtf8(std::to_string(field.integer))
                           : field.text);
    }
    if (asJson)
      rows.push_back(std::move(row));
    else
      printFields(fields);
  }
  if (asJson)
    printJson({{"columns", columns}, {"rows", rows}});
}

// Runs a changing statement on a package opened for writing and saves it.
void runChange(const Options& options) {
  auto db = openForEdit(options.package, options.edit);
  engine::Error error;
  check(prepared(*db, options.sql)->execute(error), error);
  const std::string target = options.edit.output.empty() ? options.package : options.edit.output;
  if (!options.edit.dryRun)
    check(db->commit(error), error);
  if (options.json)
    printJson({{"written", !options.edit.dryRun}, {"package", target}});
  else if (options.edit.dryRun)
    printLine("would write " + target);
}

}  // namespace

void addQueryCommand(Commands& commands) {
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "query",
      "run a statement: SELECT prints its rows, one per line, fields tab-separated; INSERT, "
      "UPDATE, DELETE, CREATE, DROP and ALTER change the package",
      R"(odlex query product.msi "UPDATE `Property` SET `Value` = '2.0' WHERE `Property` = 'ProductVersion'")",
      [options] {
        {
          auto db = openPackage(options->package, OpenMode::kReadOnly);
          auto view = prepared(*db, options->sql);
          if (!view->changes()) {
            engine::Error error;
            check(view->execute(error), error);
            printRows(*view, options->json);
            return 0;
          }
        }
        runChange(*options);
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("SQL", options->sql, "the statement")->required();
  addEditOptions(command, options->edit,
                 "write the changed package to this file, not the package itself");
  addJsonFlag(command, options->json,
              R"(SELECT: {"columns": [names], "rows": [[null, number or text per column]]}; )"
              R"(other statements: {"written": true or false, "package": path})");
}

}  // namespace odlex::cli
