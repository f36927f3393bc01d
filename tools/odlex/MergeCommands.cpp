// Merge modules: merge (a module's rows, actions and files into a package, with the merge's
// errors) and module show (what a module declares: signature, dependencies, exclusions,
// configurable items and files).

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXDatabaseError.h>

#include <map>
#include <string>
#include <vector>

#include "Cli.h"
#include "EditCommand.h"
#include "LibraryDatabase.h"
#include "msi/engine/Text.h"
#include "package/merge/TableRows.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

json mergeErrors() {
  json errors = json::array();
  if (const ODLEXMergeErrors* list = ODLEXDatabase::GetMergeErrors()) {
    for (std::size_t i = 0; i < list->GetCount(); ++i)
      errors.push_back(
          {{"type", list->GetError(i).GetType()}, {"text", list->GetError(i).GetText().ToUtf8()}});
  }
  return errors;
}

void printErrors(const json& errors) {
  for (const json& error : errors)
    printFields({u"error", engine::fromUtf8(std::to_string(error["type"].get<int>())),
                 engine::fromUtf8(error["text"].get<std::string>())});
}

// "NAME=VALUE" pairs, split at the first '='.
std::vector<std::pair<TalString, TalString>> configuration(const std::vector<std::string>& items) {
  std::vector<std::pair<TalString, TalString>> values;
  for (const std::string& item : items) {
    const std::size_t equals = item.find('=');
    values.emplace_back(
        TalString::FromUtf8(item.substr(0, equals)),
        TalString::FromUtf8(equals == std::string::npos ? std::string() : item.substr(equals + 1)));
  }
  return values;
}

void addMerge(Commands& commands) {
  struct Options : PackageEdit {
    std::string module;
    std::string feature;
    std::string directory;
    std::vector<std::string> config;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"merge",
       "merge a merge module into the package: its components join a feature, its root folder "
       "becomes a directory of the package; prints the rows added per table and every merge "
       "error",
       "odlex merge product.msm module.msm --feature Complete --directory INSTALLDIR -o out.msi"},
      options,
      R"({"tables": [{"table", "rows"}], "files", "mediaDiskId", "errors": [{"type", "text"}]})",
      [options](CLI::App& command) {
        command.add_option("MODULE", options->module, "the merge module (.msm)")->required();
        command
            .add_option("--feature", options->feature, "the Feature the module's components join")
            ->required();
        command
            .add_option("--directory", options->directory,
                        "the Directory that takes the place of the module's root folder")
            ->required();
        command.add_option(
            "--config", options->config,
            "NAME=VALUE: a value for a configurable item of the module (repeatable)");
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        ODLEXMergeSummary summary;
        try {
          summary = db.MergeModule(
              TalString::FromUtf8(options->module), TalString::FromUtf8(options->feature),
              TalString::FromUtf8(options->directory), configuration(options->config));
        } catch (const ODLEXDatabaseError& error) {
          const json errors = mergeErrors();
          if (options->json)
            printJson({{"errors", errors}});
          else
            printErrors(errors);
          throw Failure(static_cast<ODLEXDatabaseError::eCodeMeaning>(error),
                        "the merge of " + options->module + " stopped: " +
                            (errors.empty() ? std::string("no reason recorded")
                                            : errors.back()["text"].get<std::string>()));
        }
        const json errors = mergeErrors();
        if (options->json) {
          json tables = json::array();
          for (const auto& [table, rows] : summary.rowsPerTable)
            tables.push_back({{"table", table.ToUtf8()}, {"rows", rows}});
          printJson({{"tables", tables},
                     {"files", summary.files},
                     {"mediaDiskId", summary.mediaDiskId},
                     {"errors", errors}});
        } else {
          for (const auto& [table, rows] : summary.rowsPerTable)
            printFields({u"table", table.u16(), engine::fromUtf8(std::to_string(rows))});
          printFields({u"files", engine::fromUtf8(std::to_string(summary.files))});
          printErrors(errors);
        }
        session.save(db);
      });
}

// The rows of `table` of `module` as JSON objects keyed by column name (integers as numbers),
// and printed as "<label>\t<cells>" lines.
json listRows(const engine::Database& module, const char16_t* table, const char16_t* label,
              bool asJson) {
  json rows = json::array();
  const engine::Table* held = module.findTable(table);
  if (!held)
    return rows;
  const merge::TableRows read = merge::readTable(module, *held);
  for (const merge::Row& row : read.rows) {
    json object;
    std::vector<std::u16string> fields{label};
    for (std::size_t c = 0; c < row.size(); ++c) {
      const std::string name = engine::toUtf8(read.columns[c].name);
      if (row[c].kind == merge::Value::Kind::kInteger)
        object[name] = row[c].integer;
      else
        object[name] = row[c].isNull() ? json() : json(engine::toUtf8(row[c].display()));
      fields.push_back(row[c].display());
    }
    rows.push_back(object);
    if (!asJson)
      printFields(fields);
  }
  return rows;
}

void addModuleShow(Commands& commands) {
  struct Options {
    std::string module;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "module show",
      "what a merge module declares: its signature, the modules it needs and excludes, its "
      "configurable items and its files, one row per line with its kind first",
      "odlex module show module.msm", [options] {
        const auto module = openPackage(options->module, engine::Database::OpenMode::kReadOnly);
        const bool asJson = options->json;
        json document;
        document["signature"] = listRows(*module, u"ModuleSignature", u"signature", asJson);
        document["dependencies"] = listRows(*module, u"ModuleDependency", u"dependency", asJson);
        document["exclusions"] = listRows(*module, u"ModuleExclusion", u"exclusion", asJson);
        document["configuration"] =
            listRows(*module, u"ModuleConfiguration", u"configuration", asJson);
        document["files"] = listRows(*module, u"File", u"file", asJson);
        if (asJson)
          printJson(document);
        return 0;
      });
  command.add_option("MODULE", options->module, "the merge module (.msm)")->required();
  addJsonFlag(
      command, options->json,
      R"({"signature", "dependencies", "exclusions", "configuration", "files": [{COLUMN: VALUE}]})");
}

}  // namespace

void addMergeCommands(Commands& commands) {
  addMerge(commands);
  addModuleShow(commands);
}

}  // namespace odlex::cli
