// Commands on the summary information: summary show (every field, as "NAME<TAB>VALUE" lines or
// one JSON object) and summary set (fields given as FIELD=VALUE). Field names are the summary
// row's columns (Title, Subject, Author, Keywords, Comments, Template, RevNumber, PageCount,
// WordCount, ...); times read and take the form "YYYY/MM/DD hh:mm:ss". Every save stamps
// LastSaveDateTime and LastAuthor with the time and the user saving.

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include <algorithm>

#include "EditCommand.h"
#include "LibraryDatabase.h"
#include "msi/engine/Result.h"
#include "msi/schema/Schema.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

// The summary row's column names, in property order.
std::vector<std::string> fieldNames() {
  std::vector<std::string> names;
  for (const auto& column : MSIE_SummaryInformation().GetSchema().columns)
    names.push_back(TalString(std::u16string(column.name)).ToUtf8());
  return names;
}

MSIE_SummaryInformation& summaryRow(ODLEXDatabase& db) {
  return library("the package has no summary information", [&]() -> MSIE_SummaryInformation& {
    return db.Get_SummaryInformation().GetEntry();
  });
}

void addShow(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "summary show", "the summary information, one field per line",
      "odlex summary show product.msi", [options] {
        LibrarySession session;
        const MSIE_SummaryInformation& row = summaryRow(session.openReadOnly(options->package));
        json fields = json::object();
        for (const std::string& name : fieldNames()) {
          MSIRecordColumn value;
          row.GetColumn(TalString::FromUtf8(name), value);
          const std::string text = value.GetString().ToUtf8();
          if (options->json)
            fields[name] = text;
          else
            printFields({TalString::FromUtf8(name).u16(), value.GetString().u16()});
        }
        if (options->json)
          printJson({{"summary", fields}});
        return 0;
      });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json, R"({"summary": {FIELD: VALUE}}, every value a string)");
}

void addSet(Commands& commands) {
  struct Options : PackageEdit {
    std::vector<std::string> assignments;
  };
  auto options = std::make_shared<Options>();
  addChangesCommand(
      commands,
      {"summary set",
       "set summary information fields, printing each field's value before and after; the save "
       "stamps the time and the author",
       "odlex summary set product.msi Title=Installer \"Subject=My product\" -o out.msi"},
      "field", options,
      [options](CLI::App& command) {
        command
            .add_option("FIELD=VALUE", options->assignments, "fields to set, each as NAME=VALUE")
            ->required()
            ->check([](const std::string& assignment) -> std::string {
              const std::size_t equals = assignment.find('=');
              const std::vector<std::string> names = fieldNames();
              if (equals == std::string::npos ||
                  std::find(names.begin(), names.end(), assignment.substr(0, equals)) ==
                      names.end())
                return "not FIELD=VALUE with a summary field: " + assignment;
              return {};
            });
      },
      [options](ODLEXDatabase& db) {
        MSIE_SummaryInformation& row = summaryRow(db);
        std::vector<Change> changes;
        for (const std::string& assignment : options->assignments) {
          const std::size_t equals = assignment.find('=');
          const std::string name = assignment.substr(0, equals);
          const std::string value = assignment.substr(equals + 1);
          MSIRecordColumn before;
          row.GetColumn(TalString::FromUtf8(name), before);
          if (!row.SetColumn(TalString::FromUtf8(name),
                             MSIRecordColumn::String(TalString::FromUtf8(value))))
            throw Failure(engine::kInvalidField,
                          "the field " + name + " cannot hold \"" + value + "\"");
          changes.push_back({name, before.GetString().ToUtf8(), value});
        }
        db.Get_SummaryInformation().Modify(true);
        return changes;
      });
}

}  // namespace

void addSummaryCommands(Commands& commands) {
  addShow(commands);
  addSet(commands);
}

}  // namespace odlex::cli
