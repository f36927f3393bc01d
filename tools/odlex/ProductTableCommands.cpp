// Commands on the product's own tables and the user interface: gui remove (drop the 20
// user-interface tables), gui import (take another package's dialogs), changelog (the package's
// change log, oldest first) and keyword list|set|delete (the named settings of ZrKeyword).

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include <map>

#include "EditCommand.h"
#include "LibraryDatabase.h"
#include "msi/engine/Text.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

// The package's tables with their row counts, as the engine holds them.
std::map<std::string, std::size_t> tableRows(ODLEXDatabase& db) {
  std::map<std::string, std::size_t> rows;
  if (const engine::Database* engine = db.GetDatabase().engineDatabase()) {
    for (std::size_t i = 0; i < engine->tableCount(); ++i)
      rows[engine::toUtf8(engine->table(i).name())] = engine->table(i).rowCount();
  }
  return rows;
}

// How many rows of `table` are not marked deleted.
std::size_t liveRows(ODLEXTObject& table) {
  RWBTree rows = table.GetEntries();
  table.FilterOutDeletedEntries(rows, false);
  return rows.entries();
}

// A keyword row as a change's name: "KEYWORD/INDEX".
std::string keywordName(const TalString& keyword, int index) {
  return keyword.ToUtf8() + "/" + std::to_string(index);
}

void addGuiRemove(Commands& commands) {
  auto options = std::make_shared<PackageEdit>();
  addChangesCommand(
      commands,
      {"gui remove",
       "drop the package's user interface: the dialogs, controls, their events and conditions, "
       "billboards, text styles, UI texts and the UI sequences; prints each table dropped with "
       "its row count",
       "odlex gui remove product.msi -o quiet.msi"},
      "table", options, nullptr, [](ODLEXDatabase& db) {
        const std::map<std::string, std::size_t> before = tableRows(db);
        db.RemoveGUI();
        const std::map<std::string, std::size_t> after = tableRows(db);
        std::vector<Change> changes;
        for (const auto& [table, rows] : before) {
          if (!after.contains(table))
            changes.push_back({table, std::to_string(rows), ""});
        }
        return changes;
      });
}

void addGuiImport(Commands& commands) {
  struct Options : PackageEdit {
    std::string source;
  };
  auto options = std::make_shared<Options>();
  addChangesCommand(
      commands,
      {"gui import",
       "replace the package's dialogs, controls and control events by those of another package "
       "(the product's query dialog ZrQueryX is kept, never copied); prints each table's row "
       "count before and after",
       "odlex gui import product.msi branded.msi -o out.msi"},
      "table", options,
      [options](CLI::App& command) {
        command.add_option("SOURCE", options->source, "the package to take the dialogs from")
            ->required()
            ->check(CLI::ExistingFile);
      },
      [options](ODLEXDatabase& db) {
        const std::pair<const char*, ODLEXTObject*> tables[] = {
            {"Dialog", &db.GetDialog()},
            {"Control", &db.GetControl()},
            {"ControlEvent", &db.GetControlEvent()}};
        std::vector<Change> changes;
        for (const auto& [name, table] : tables)
          changes.push_back({name, std::to_string(liveRows(*table)), ""});
        library("cannot import the dialogs of " + options->source,
                [&] { db.ImportGUI(TalString::FromUtf8(options->source)); });
        for (std::size_t i = 0; i < changes.size(); ++i)
          changes[i].after = std::to_string(liveRows(*tables[i].second));
        return changes;
      });
}

void addChangeLog(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "changelog", "the package's change log, oldest first: entry, time, author, table, message",
      "odlex changelog product.msi", [options] {
        LibrarySession session;
        ODLEXDatabase& db = session.openReadOnly(options->package);
        json entries = json::array();
        for (RWCollectable* item : db.GetZrChangeLog().GetEntries()) {
          const auto& row = static_cast<const MSIEZrChangeLog&>(*item);
          if (options->json) {
            entries.push_back({{"entry", row.GetEntry().ToUtf8()},
                               {"time", row.GetTime().ToUtf8()},
                               {"author", row.GetAuthor().ToUtf8()},
                               {"table", row.GetTable().ToUtf8()},
                               {"messageId", row.GetMessageId()},
                               {"message", row.GetMessage().ToUtf8()}});
            continue;
          }
          printFields({row.GetEntry().u16(), row.GetTime().u16(), row.GetAuthor().u16(),
                       row.GetTable().u16(), row.GetMessage().u16()});
        }
        if (options->json)
          printJson({{"entries", entries}});
        return 0;
      });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json,
              R"({"entries": [{"entry", "time", "author", "table", "messageId", "message"}]})");
}

void addKeywordList(Commands& commands) {
  struct Options {
    std::string package;
    std::string keyword;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "keyword list", "the package's keywords: keyword, index, operator, value",
      "odlex keyword list product.msi ChangeLog", [options] {
        LibrarySession session;
        ODLEXTZrKeyword& keywords = session.openReadOnly(options->package).GetZrKeyword();
        RWBTree rows;
        if (options->keyword.empty()) {
          for (RWCollectable* item : keywords.GetEntries()) {
            if (!static_cast<const MSIEntry*>(item)->IsDeleted())
              rows.insert(item);
          }
        } else {
          keywords.GetWithKeyword(rows, TalString::FromUtf8(options->keyword));
        }
        json list = json::array();
        for (RWCollectable* item : rows) {
          const auto& row = static_cast<const MSIEZrKeyword&>(*item);
          const NullableSignedShort op = row.GetOperator();
          if (options->json) {
            list.push_back({{"keyword", row.GetKeyword().ToUtf8()},
                            {"index", row.GetIndex()},
                            {"operator", op.IsNull() ? json(nullptr) : json(op.Get())},
                            {"value", row.GetValue().ToUtf8()}});
            continue;
          }
          printFields({row.GetKeyword().u16(), TalString::FromInt(row.GetIndex()).u16(),
                       op.IsNull() ? u"" : TalString::FromInt(op.Get()).u16(),
                       row.GetValue().u16()});
        }
        if (options->json)
          printJson({{"keywords", list}});
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("KEYWORD", options->keyword, "list only this keyword's rows");
  addJsonFlag(command, options->json,
              R"({"keywords": [{"keyword", "index", "operator" (null when none), "value"}]})");
}

void addKeywordSet(Commands& commands) {
  struct Options : PackageEdit {
    std::string keyword;
    std::string value;
    short index = 0;
  };
  auto options = std::make_shared<Options>();
  addChangesCommand(
      commands,
      {"keyword set",
       "set a keyword's value, adding the keyword when missing; prints the value before and after",
       "odlex keyword set product.msi ChangeLog ENABLED"},
      "keyword", options,
      [options](CLI::App& command) {
        command.add_option("KEYWORD", options->keyword, "the keyword")->required();
        command.add_option("VALUE", options->value, "its value")->required();
        command.add_option("--index", options->index, "the row of the keyword (default 0)")
            ->check(CLI::Range(0, 32767));
      },
      [options](ODLEXDatabase& db) {
        ODLEXTZrKeyword& keywords = db.GetZrKeyword();
        const TalString keyword = TalString::FromUtf8(options->keyword);
        MSIEZrKeyword values(keyword, options->index);
        values.SetValue(TalString::FromUtf8(options->value));
        Change change{keywordName(keyword, options->index), "", options->value};
        if (MSIEZrKeyword* row = keywords.Lookup(keyword, options->index)) {
          change.before = row->GetValue().ToUtf8();
          values.SetOperator(row->GetOperator());
          keywords.Change(*row, values);
        } else {
          keywords.Add(values);
        }
        return std::vector<Change>{change};
      });
}

void addKeywordDelete(Commands& commands) {
  struct Options : PackageEdit {
    std::string keyword;
    std::optional<short> index;
  };
  auto options = std::make_shared<Options>();
  addChangesCommand(
      commands,
      {"keyword delete",
       "delete a keyword: all its rows, or the one of --index; prints each row deleted with its "
       "value",
       "odlex keyword delete product.msi ChangeLog"},
      "keyword", options,
      [options](CLI::App& command) {
        command.add_option("KEYWORD", options->keyword, "the keyword")->required();
        command.add_option("--index", options->index, "delete only this row of the keyword")
            ->check(CLI::Range(0, 32767));
      },
      [options](ODLEXDatabase& db) {
        ODLEXTZrKeyword& keywords = db.GetZrKeyword();
        const TalString keyword = TalString::FromUtf8(options->keyword);
        std::vector<Change> changes;
        library("no keyword " + options->keyword, [&] {
          if (options->index) {
            MSIEZrKeyword& row =
                keywords.GetEntry(keyword, static_cast<unsigned short>(*options->index));
            changes.push_back({keywordName(keyword, *options->index), row.GetValue().ToUtf8(), ""});
            keywords.Delete(row);
            return;
          }
          RWBTree rows;
          if (keywords.GetWithKeyword(rows, keyword) == 0)
            throw ODLEXDatabaseError(ODLEXDatabaseError::eKeywordNotFound);
          for (RWCollectable* item : rows) {
            const auto& row = static_cast<const MSIEZrKeyword&>(*item);
            changes.push_back({keywordName(keyword, row.GetIndex()), row.GetValue().ToUtf8(), ""});
          }
          keywords.Delete(keyword);
        });
        return changes;
      });
}

}  // namespace

void addProductTableCommands(Commands& commands) {
  addGuiRemove(commands);
  addGuiImport(commands);
  addChangeLog(commands);
  addKeywordList(commands);
  addKeywordSet(commands);
  addKeywordDelete(commands);
}

}  // namespace odlex::cli
