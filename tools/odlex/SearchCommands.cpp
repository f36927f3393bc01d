// Whole-package search and replace: search (each matching column of each row as
// "TABLE<TAB>KEY<TAB>COLUMN<TAB>VALUE") and replace (how many replacements, per table). Only text
// columns that are neither keys nor references to other tables are searched or changed; the
// tables the database keeps about itself and the change log are left alone, and so are the
// Property rows that say which product the package is (ProductCode, UpgradeCode,
// ProductLanguage).

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXCheckers.h>
#include <odlex/tables/ODLEXTables.h>

#include <map>

#include "EditCommand.h"
#include "LibraryDatabase.h"
#include "msi/engine/Result.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

// Runs `search` on the table named, or on the whole package when `table` is empty.
std::vector<ODLEXDatabase::TableCount> inTables(
    ODLEXDatabase& db, const std::string& table,
    const std::function<unsigned(ODLEXTObject&)>& onTable,
    const std::function<std::vector<ODLEXDatabase::TableCount>()>& onPackage) {
  if (table.empty())
    return onPackage();
  const unsigned count = onTable(tableNamed(db, table));
  if (count == 0)
    return {};
  return {{TalString::FromUtf8(table), count}};
}

void addSearch(Commands& commands) {
  struct Options {
    std::string package;
    std::string text;
    std::string regex;
    std::string mode = "equal";
    bool ignoreCase = false;
    std::string table;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "search",
      "rows whose text columns (no keys, no references) equal, sort before or after a text, or "
      "match a regular expression; one line per matching column",
      "odlex search product.msi --regex \"[Cc]ontoso\" --table Registry", [options] {
        LibrarySession session;
        ODLEXDatabase& db = session.openReadOnly(options->package);
        const TalString text = TalString::FromUtf8(options->text);
        const RWWRegexp expression(TalString::FromUtf8(options->regex));
        if (!options->regex.empty() && expression.status() != RWWRegexp::OK)
          throw Failure(engine::kInvalidParameter,
                        "bad regular expression: " + TalString(expression.errorMessage()).ToUtf8());
        const int mode = options->mode == "equal" ? 0 : options->mode == "before" ? 1 : 2;
        const ODLEXStringChecker byText(
            text, mode, options->ignoreCase ? RWWString::ignoreCase : RWWString::exact);
        const ODLEXRegExpChecker byExpression(expression);
        const ODLEXBaseChecker& checker =
            options->regex.empty() ? static_cast<const ODLEXBaseChecker&>(byText) : byExpression;
        std::vector<ODLEXSearchMatch> matches;
        inTables(
            db, options->table,
            [&](ODLEXTObject& table) { return table.Search(checker, &matches); },
            [&] { return db.Search(checker, &matches); });
        json list = json::array();
        for (const ODLEXSearchMatch& match : matches) {
          const std::string table = match.row->GetTableName().ToUtf8();
          if (options->json) {
            list.push_back({{"table", table},
                            {"key", keyOf(*match.row)},
                            {"column", match.column.ToUtf8()},
                            {"value", match.value.ToUtf8()}});
            continue;
          }
          printFields({match.row->GetTableName().u16(),
                       TalString::FromUtf8(keyOf(*match.row)).u16(), match.column.u16(),
                       match.value.u16()});
        }
        if (options->json)
          printJson({{"matches", list}});
        return 0;
      });
  addPackageArgument(command, options->package);
  CLI::Option* text = command.add_option("--text", options->text, "the text to compare with");
  CLI::Option* regex =
      command.add_option("--regex", options->regex, "a regular expression (Perl syntax)");
  text->excludes(regex);
  command
      .add_option("--mode", options->mode,
                  "equal (default): the whole value equals the text; before: the value sorts "
                  "before it; after: the value sorts after it")
      ->check(CLI::IsMember({"equal", "before", "after"}))
      ->needs(text);
  command.add_flag("--ignore-case", options->ignoreCase, "compare under case folding")->needs(text);
  command.add_option("--table", options->table, "search this table only");
  command.callback([text, regex] {
    if (text->count() == 0 && regex->count() == 0)
      throw CLI::RequiredError("--text or --regex");
  });
  addJsonFlag(command, options->json, R"({"matches": [{"table", "key", "column", "value"}]})");
}

void addReplace(Commands& commands) {
  struct Options : PackageEdit {
    std::string find;
    std::string replace;
    bool whole = false;
    bool ignoreCase = false;
    std::string table;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"replace",
       "replace text in the text columns (no keys, no references) of every table, or of one; "
       "prints how many replacements were made per table",
       "odlex replace product.msi Contoso Fabrikam --table Registry -o out.msi"},
      options, R"({"tables": [{"table", "count"}], "total"})",
      [options](CLI::App& command) {
        command.add_option("FIND", options->find, "the text to replace")->required();
        command.add_option("REPLACE", options->replace, "what replaces it (may be empty)")
            ->required();
        command.add_flag("--whole", options->whole, "replace only values equal to FIND as a whole");
        command.add_flag("--ignore-case", options->ignoreCase, "find FIND under case folding");
        command.add_option("--table", options->table, "replace in this table only");
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        const TalString find = TalString::FromUtf8(options->find);
        const TalString replace = TalString::FromUtf8(options->replace);
        unsigned long flags = 0;
        if (options->whole)
          flags |= eSearchWholeValue;
        if (options->ignoreCase)
          flags |= eSearchIgnoreCase;
        const std::vector<ODLEXDatabase::TableCount> counts = inTables(
            db, options->table,
            [&](ODLEXTObject& table) { return table.SearchAndReplace(find, replace, flags); },
            [&] { return db.SearchAndReplace(find, replace, flags); });
        unsigned total = 0;
        json tables = json::array();
        for (const ODLEXDatabase::TableCount& count : counts) {
          total += count.count;
          if (options->json)
            tables.push_back({{"table", count.table.ToUtf8()}, {"count", count.count}});
          else
            printFields({count.table.u16(), TalString::FromInt(count.count).u16()});
        }
        if (options->json)
          printJson({{"tables", tables}, {"total", total}});
        else
          printFields({u"total", TalString::FromInt(total).u16()});
        if (total > 0 || !options->edit.output.empty())
          session.save(db);
      });
}

}  // namespace

void addSearchCommands(Commands& commands) {
  addSearch(commands);
  addReplace(commands);
}

}  // namespace odlex::cli
