#include "Cli.h"

#include <cstdio>

#include "msi/engine/Text.h"
#include "msi/idt/TextEscape.h"
#include "storage/FileSystem.h"

namespace odlex::cli {

CLI::App& Commands::add(const std::string& words, const std::string& summary,
                        const std::string& example, std::function<int()> run) {
  CLI::App* parent = &app_;
  std::string name = words;
  // "noun verb": the verb is a command under the noun, which is made on first use.
  if (const auto space = words.find(' '); space != std::string::npos) {
    const std::string noun = words.substr(0, space);
    name = words.substr(space + 1);
    const auto nouns =
        app_.get_subcommands([&noun](CLI::App* command) { return command->get_name() == noun; });
    parent = nouns.empty() ? nullptr : nouns.front();
    if (!parent) {
      parent = app_.add_subcommand(noun);
      parent->require_subcommand(1);
      // The noun's help shows its first verb's example.
      parent->footer("Example:\n  " + example);
      nouns_.insert(parent);
    }
    // A noun made here is summed up by its verbs.
    if (nouns_.contains(parent)) {
      const std::string listed = parent->get_description();
      parent->description(listed + (listed.empty() ? "verbs: " : ", ") + name);
    }
  }
  CLI::App* command = parent->add_subcommand(name, summary);
  command->footer("Example:\n  " + example);
  commands_.emplace_back(command, std::move(run));
  return *command;
}

// The words of a verb under a command (info set) parse both; the later-declared verb is the
// more specific one.
std::function<int()> Commands::chosen() const {
  for (auto it = commands_.rbegin(); it != commands_.rend(); ++it) {
    if (it->first->parsed())
      return it->second;
  }
  return nullptr;
}

std::vector<std::string> Commands::withDefaultVerb(std::vector<std::string> args) const {
  if (args.size() < 2)
    return args;
  const auto nouns =
      app_.get_subcommands([&args](CLI::App* command) { return command->get_name() == args[1]; });
  if (nouns.empty())
    return args;
  const auto verb = [&nouns](const std::string& name) {
    return !nouns.front()
                ->get_subcommands(
                    [&name](CLI::App* command) { return command->get_name() == name; })
                .empty();
  };
  const bool verbGiven =
      args.size() > 2 && (verb(args[2]) || args[2] == "-h" || args[2] == "--help");
  if (!verbGiven && (verb("list") || verb("show")))
    args.insert(args.begin() + 2, verb("list") ? "list" : "show");
  return args;
}

void addPackageArgument(CLI::App& command, std::string& package) {
  command.add_option("PACKAGE", package, "the installer database (.msi, .msm, .pcp)")->required();
}

void addJsonFlag(CLI::App& command, bool& json, const std::string& keys) {
  command.add_flag("--json", json, "print one JSON document: " + keys);
}

CLI::Option* addOutputOption(CLI::App& command, std::string& output, const std::string& meaning) {
  return command.add_option("-o,--output", output, meaning);
}

CLI::Option* addEditOptions(CLI::App& command, EditTarget& target,
                            const std::string& outputMeaning) {
  CLI::Option* output = addOutputOption(command, target.output, outputMeaning);
  command.add_flag("--dry-run", target.dryRun, "print what would change and write nothing");
  return output;
}

std::unique_ptr<engine::Database> openPackage(const std::filesystem::path& path,
                                              engine::Database::OpenMode mode) {
  engine::Error error;
  auto db = engine::Database::open(storage::FileSystem::current(), path, mode, error);
  if (!db)
    throw Failure(error);
  return db;
}

std::unique_ptr<engine::Database> openForEdit(const std::filesystem::path& package,
                                              const EditTarget& target, bool createMissing) {
  storage::FileSystem& fs = storage::FileSystem::current();
  if (target.output.empty()) {
    const bool create = createMissing && !fs.exists(package);
    return openPackage(package, create ? engine::Database::OpenMode::kCreate
                                       : engine::Database::OpenMode::kUpdate);
  }
  engine::Error error;
  auto db = engine::Database::openInto(fs, package, target.output, error);
  if (!db)
    throw Failure(error);
  return db;
}

void check(std::uint32_t result, const engine::Error& error) {
  if (result != engine::kSuccess)
    throw Failure(result, error.text);
}

void printLine(const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

void printFields(const std::vector<std::u16string>& fields) {
  std::string line;
  for (std::size_t i = 0; i < fields.size(); ++i)
    line += (i ? "\t" : "") + engine::toUtf8(idt::escapeValue(fields[i]));
  printLine(line);
}

void printJson(const nlohmann::json& document) {
  printLine(document.dump(2));
}

void printChanges(const std::vector<Change>& changes, const char* nameKey, bool json,
                  bool written) {
  if (!json) {
    for (const Change& change : changes)
      printFields({engine::fromUtf8(change.name), engine::fromUtf8(change.before),
                   engine::fromUtf8(change.after)});
    return;
  }
  nlohmann::json list = nlohmann::json::array();
  for (const Change& change : changes)
    list.push_back({{nameKey, change.name}, {"before", change.before}, {"after", change.after}});
  printJson({{"changed", list}, {"written", written}});
}

std::string changesJsonKeys(const char* nameKey) {
  return std::string(R"({"changed": [{")") + nameKey + R"(", "before", "after"}], "written"})";
}

}  // namespace odlex::cli
