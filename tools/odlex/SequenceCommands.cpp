// Commands on the sequence tables: sequence list (the actions in the order they run) and
// sequence free (a free number next to an action, where a new action can go).

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include <algorithm>
#include <list>

#include "Cli.h"
#include "LibraryDatabase.h"
#include "msi/engine/Text.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

// The sequence table object called `table`; Failure when it is not a sequence table.
ODLEXSequence& sequenceNamed(ODLEXDatabase& db, const std::string& table) {
  auto* sequence = dynamic_cast<ODLEXSequence*>(&tableNamed(db, table));
  if (!sequence)
    throw Failure(ODLEXDatabaseError::eTableNotFound, table + " is not a sequence table");
  return *sequence;
}

// The live rows in the order they run: numbered rows by number (key order among equals); a
// merge module's row placed by BaseAction right before or after its base action, once that is
// placed; rows whose base action is not in the table last, in key order.
std::vector<MSISequenceEntry*> executionOrder(ODLEXSequence& table) {
  std::vector<MSISequenceEntry*> numbered;
  std::vector<MSIModuleSequenceEntry*> relative;
  for (RWCollectable* item : table.GetEntries()) {
    auto* row = static_cast<MSISequenceEntry*>(item);
    if (row->IsDeleted())
      continue;
    auto* placed = dynamic_cast<MSIModuleSequenceEntry*>(row);
    if (placed && row->GetSequence().IsNull() && !placed->GetBaseAction().u16().empty())
      relative.push_back(placed);
    else
      numbered.push_back(row);
  }
  std::stable_sort(numbered.begin(), numbered.end(), [](const auto* a, const auto* b) {
    return a->GetSequence() < b->GetSequence();
  });
  std::list<MSISequenceEntry*> order(numbered.begin(), numbered.end());
  for (bool placedOne = true; placedOne && !relative.empty();) {
    placedOne = false;
    for (auto row = relative.begin(); row != relative.end();) {
      const auto base = std::find_if(order.begin(), order.end(), [&](const auto* placed) {
        return placed->GetAction() == (*row)->GetBaseAction();
      });
      if (base == order.end()) {
        ++row;
        continue;
      }
      order.insert((*row)->GetAfter() == 1 ? std::next(base) : base, *row);
      row = relative.erase(row);
      placedOne = true;
    }
  }
  order.insert(order.end(), relative.begin(), relative.end());
  return {order.begin(), order.end()};
}

std::u16string numberText(const NullableSignedShort& number) {
  return number.IsNull() ? u"" : engine::fromUtf8(std::to_string(number.Get()));
}

json numberJson(const NullableSignedShort& number) {
  return number.IsNull() ? json() : json(number.Get());
}

void addList(Commands& commands) {
  struct Options {
    std::string package;
    std::string table;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "sequence list",
      "the actions of a sequence table in the order they run: action, sequence number, "
      "condition (merge-module tables: action, number, base action, before/after, condition)",
      "odlex sequence list product.msi InstallExecuteSequence", [options] {
        LibrarySession session;
        ODLEXSequence& table =
            sequenceNamed(session.openReadOnly(options->package), options->table);
        json actions = json::array();
        for (const MSISequenceEntry* row : executionOrder(table)) {
          const auto* placed = dynamic_cast<const MSIModuleSequenceEntry*>(row);
          const std::u16string side = !placed || placed->GetAfter().IsNull() ? u""
                                      : placed->GetAfter() == 1              ? u"after"
                                                                             : u"before";
          if (options->json) {
            json action = {{"action", row->GetAction().ToUtf8()},
                           {"sequence", numberJson(row->GetSequence())},
                           {"condition", row->GetCondition().ToUtf8()}};
            if (placed) {
              action["baseAction"] = placed->GetBaseAction().ToUtf8();
              action["placed"] = engine::toUtf8(side);
            }
            actions.push_back(action);
          } else if (placed) {
            printFields({row->GetAction().u16(), numberText(row->GetSequence()),
                         placed->GetBaseAction().u16(), side, row->GetCondition().u16()});
          } else {
            printFields({row->GetAction().u16(), numberText(row->GetSequence()),
                         row->GetCondition().u16()});
          }
        }
        if (options->json)
          printJson({{"table", options->table}, {"actions", actions}});
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("TABLE", options->table, "the sequence table")->required();
  addJsonFlag(command, options->json,
              R"({"table", "actions": [{"action", "sequence" (null when placed by base action), )"
              R"("condition", and in merge-module tables "baseAction", "placed": "before", )"
              R"("after" or ""}]})");
}

void addFree(Commands& commands) {
  struct Options {
    std::string package;
    std::string table;
    std::string after;
    std::string before;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "sequence free",
      "a free sequence number just after or before an action (following a run of consecutive "
      "numbers); 0 when the run reaches the end of the table",
      "odlex sequence free product.msi InstallExecuteSequence --before InstallFinalize", [options] {
        LibrarySession session;
        ODLEXSequence& table =
            sequenceNamed(session.openReadOnly(options->package), options->table);
        const bool after = !options->after.empty();
        const std::string& action = after ? options->after : options->before;
        const TalString name = TalString::FromUtf8(action);
        library("no action " + action + " in " + options->table,
                [&] { table.GetSequenceWithID(name); });
        const short number =
            after ? table.GetGoodSequenceAfter(name) : table.GetGoodSequenceBefore(name);
        if (options->json)
          printJson({{"table", options->table},
                     {"action", action},
                     {"side", after ? "after" : "before"},
                     {"sequence", number}});
        else
          printLine(std::to_string(number));
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("TABLE", options->table, "the sequence table")->required();
  CLI::Option_group* side = command.add_option_group("side", "exactly one of");
  side->add_option("--after", options->after, "the action to follow");
  side->add_option("--before", options->before, "the action to precede");
  side->require_option(1);
  addJsonFlag(command, options->json, R"({"table", "action", "side", "sequence"})");
}

}  // namespace

void addSequenceCommands(Commands& commands) {
  addList(commands);
  addFree(commands);
}

}  // namespace odlex::cli
