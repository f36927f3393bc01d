// Commands on custom actions: action list (each action with its type split into named fields)
// and action add-product (adds and schedules the product's own actions and their DLL).

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include <cstdio>
#include <fstream>

#include "Cli.h"
#include "LibraryDatabase.h"
#include "msi/engine/Text.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

// The name of one bit group's value; the number (hex) for a value the group does not name.
struct Named {
  unsigned short value;
  const char* name;
};

template <std::size_t N>
std::string nameOf(unsigned short value, const Named (&names)[N]) {
  for (const Named& named : names) {
    if (named.value == value)
      return named.name;
  }
  char hex[8];
  std::snprintf(hex, sizeof hex, "0x%04X", value);
  return hex;
}

constexpr Named kExecutable[] = {{1, "dll"},     {2, "exe"},      {3, "text"},
                                 {5, "jscript"}, {6, "vbscript"}, {7, "install"}};
constexpr Named kSource[] = {
    {0x00, "binary"}, {0x10, "file"}, {0x20, "directory"}, {0x30, "property"}};
constexpr Named kReturn[] = {
    {0x00, "wait"}, {0x40, "ignore-return"}, {0x80, "async-wait"}, {0xC0, "async-no-wait"}};
constexpr Named kScheduling[] = {
    {0x000, "always"},        {0x100, "first-sequence"}, {0x200, "once-per-process"},
    {0x300, "client-repeat"}, {0x400, "deferred"},       {0x500, "rollback"},
    {0x600, "commit"}};
constexpr Named kImpersonation[] = {{0x000, "impersonate"}, {0x800, "no-impersonate"}};

void addList(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "action list",
      "the custom actions: key, type, its five fields by name (what runs, where its code is, "
      "return handling, scheduling, impersonation), source, target",
      "odlex action list product.msi", [options] {
        LibrarySession session;
        ODLEXTCustomAction& actions = session.openReadOnly(options->package).GetCustomAction();
        json list = json::array();
        for (RWCollectable* item : actions.GetEntries()) {
          const auto& row = *static_cast<const MSIECustomAction*>(item);
          if (row.IsDeleted())
            continue;
          unsigned short executable, source, result, scheduling, impersonation;
          ODLEXTCustomAction::GetSeparateTypes(executable, source, result, scheduling,
                                               impersonation, row);
          const std::string fields[] = {nameOf(executable, kExecutable), nameOf(source, kSource),
                                        nameOf(result, kReturn), nameOf(scheduling, kScheduling),
                                        nameOf(impersonation, kImpersonation)};
          const auto type = static_cast<unsigned short>(row.GetType());
          if (options->json) {
            list.push_back({{"action", row.GetActionID().ToUtf8()},
                            {"type", type},
                            {"executable", fields[0]},
                            {"sourceType", fields[1]},
                            {"returnProcessing", fields[2]},
                            {"scheduling", fields[3]},
                            {"impersonation", fields[4]},
                            {"source", row.GetSource().ToUtf8()},
                            {"target", row.GetTarget().ToUtf8()}});
            continue;
          }
          std::vector<std::u16string> line = {row.GetActionID().u16(),
                                              engine::fromUtf8(std::to_string(type))};
          for (const std::string& field : fields)
            line.push_back(engine::fromUtf8(field));
          line.push_back(row.GetSource().u16());
          line.push_back(row.GetTarget().u16());
          printFields(line);
        }
        if (options->json)
          printJson({{"actions", list}});
        return 0;
      });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json,
              R"({"actions": [{"action", "type", "executable", "sourceType", )"
              R"("returnProcessing", "scheduling", "impersonation", "source", "target"}]})");
}

// Fails unless `dll` is a file with something in it: the DLL's bytes go into the package.
void checkReadable(const std::filesystem::path& dll) {
  std::ifstream in(dll, std::ios::binary);
  if (!in || std::filesystem::is_directory(dll) || in.peek() == std::ifstream::traits_type::eof())
    throw Failure(ODLEXDatabaseError::eBinaryNotFound, "cannot read the DLL " + dll.string());
}

constexpr const char16_t* kProductActions[] = {
    u"ZrInstallInitialize",      u"ZrTextFileInitialize",
    u"ZrTextFileInstallChanges", u"ZrRemoveTextFileInstallChanges",
    u"ZrReportInstallSuccess",   u"ZrReportInstallFailure"};

// A product action as the package holds it: its row and its place in `sequence`.
json productActionJson(const MSIECustomAction& row, ODLEXSequence& sequence) {
  json action = {{"action", row.GetActionID().ToUtf8()},
                 {"type", static_cast<unsigned short>(row.GetType())},
                 {"sequence", nullptr},
                 {"scheduled", false}};
  try {
    const MSISequenceEntry& entry = sequence.GetSequenceWithID(row.GetActionID());
    action["scheduled"] = true;
    if (!entry.GetSequence().IsNull())
      action["sequence"] = entry.GetSequence().Get();
    if (const auto* placed = dynamic_cast<const MSIModuleSequenceEntry*>(&entry)) {
      action["baseAction"] = placed->GetBaseAction().ToUtf8();
      action["placed"] = placed->GetAfter().IsNull() ? ""
                         : placed->GetAfter() == 1   ? "after"
                                                     : "before";
    }
  } catch (const ODLEXDatabaseError&) {
    // Not in the sequence: no free number was found next to its anchor.
  }
  return action;
}

// The text line of productActionJson: action, type, sequence number (empty when none), base
// action, before/after, and "unscheduled" for an action the sequence does not hold.
std::vector<std::u16string> productActionFields(const json& action) {
  const auto text = [&action](const char* key) {
    const json& value = action.value(key, json());
    return engine::fromUtf8(value.is_null()     ? ""
                            : value.is_string() ? value.get<std::string>()
                                                : value.dump());
  };
  std::vector<std::u16string> fields = {text("action"), text("type"), text("sequence"),
                                        text("baseAction"), text("placed")};
  if (!action["scheduled"].get<bool>())
    fields.emplace_back(u"unscheduled");
  return fields;
}

void addAddProduct(Commands& commands) {
  struct Options {
    std::string package;
    std::string dll;
    bool textFiles = false;
    bool report = false;
    EditTarget edit;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "action add-product",
      "add the product's own custom actions and their DLL's Binary row, scheduled in the execute "
      "sequence; prints each product action the package then holds: action, type, sequence "
      "number (merge modules: base action and before/after)",
      "odlex action add-product product.msi --dll /opt/product/zrca.dll --text-files -o out.msi",
      [options] {
        const std::filesystem::path dll = std::filesystem::absolute(options->dll);
        checkReadable(dll);
        LibrarySession session;
        ODLEXDatabase& db = session.openForEdit(options->package, options->edit);
        ODLEXDatabase::SetOrvaneCustomAction(TalString::FromUtf8(dll.string()));
        db.GetBinary().GetOrvaneCustomAction();  // the DLL's row, or a clear error
        ODLEXTCustomAction& actions = db.GetCustomAction();
        // As writing the text-file tables does: each change action, then the initializer.
        if (options->textFiles) {
          actions.AddTextFileInstallChanges();
          actions.AddTextFileInitialize();
          actions.AddRemoveTextFileInstallChanges();
          actions.AddTextFileInitialize();
        }
        if (options->report) {
          actions.AddReportInstallSuccess();
          actions.AddReportInstallFailure();
        }
        ODLEXSequence& sequence =
            db.IsMergeModule() ? static_cast<ODLEXSequence&>(db.GetModuleInstallExecuteSequence())
                               : db.GetInstallExecuteSequence();
        json added = json::array();
        for (const char16_t* key : kProductActions) {
          if (const MSIECustomAction* row = actions.Lookup(TalString(key)))
            added.push_back(productActionJson(*row, sequence));
        }
        if (!options->json) {
          for (const json& action : added)
            printFields(productActionFields(action));
        }
        if (options->json)
          printJson({{"binary", dll.filename().string()},
                     {"actions", added},
                     {"written", !options->edit.dryRun}});
        session.save(db);
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("--dll", options->dll, "the product's custom-action DLL")->required();
  CLI::Option_group* which = command.add_option_group("actions", "at least one of");
  which->add_flag("--text-files", options->textFiles,
                  "the text-file actions (ZrTextFileInitialize, ZrTextFileInstallChanges, "
                  "ZrRemoveTextFileInstallChanges)");
  which->add_flag("--report", options->report,
                  "the reporting actions (ZrReportInstallSuccess, ZrReportInstallFailure, "
                  "and ZrInstallInitialize they need)");
  which->require_option(1, 2);
  addEditOptions(command, options->edit);
  addJsonFlag(command, options->json,
              R"({"binary", "actions": [{"action", "type", "sequence" (null when none), )"
              R"("scheduled", and in merge modules "baseAction", "placed"}], "written"})");
}

}  // namespace

void addActionCommands(Commands& commands) {
  addList(commands);
  addAddProduct(commands);
}

}  // namespace odlex::cli
