#pragma once
// Shared plumbing of the odlex commands: how a command is declared on the parser, failures,
// opening packages, and printing data as text or JSON.
//
// Every command follows one shape, `odlex [NOUN] VERB PACKAGE [ARGUMENTS] [OPTIONS]`. A command
// file declares its commands with Commands::add, binding its options to variables of its own;
// main parses the words and runs the one chosen. Exit status: 0 success, 1 a failure the user
// can act on (Failure: "odlex: WHAT (error N)" on stderr), 2 a usage mistake (with the usage).

#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "msi/engine/Database.h"

namespace odlex::cli {

// A failure that ends the command: printed as "odlex: <text> (error <code>)", exit status 1.
struct Failure : std::runtime_error {
  Failure(std::uint32_t code, const std::string& text) : std::runtime_error(text), code(code) {}
  explicit Failure(const engine::Error& error) : Failure(error.code, error.text) {}
  std::uint32_t code;
};

// The commands of the tool as the parser knows them.
class Commands {
 public:
  explicit Commands(CLI::App& app) : app_(app) {}

  // Declares the command `words` ("tables", or "component list" for a noun's verb) with a
  // one-line summary and one worked example, shown by its --help. `run` is called when the
  // command is chosen, after every option has been read; it returns the exit status.
  CLI::App& add(const std::string& words, const std::string& summary, const std::string& example,
                std::function<int()> run);
  // The run of the command the words chose; null when none was. A command declared under
  // another command ("hash refresh" under "hash") is parsed together with it: the one declared
  // last wins.
  std::function<int()> chosen() const;
  // `args` (the program name first) with a noun given alone followed by its default verb: a
  // noun alone means its `list`, or its `show` when it has no list.
  std::vector<std::string> withDefaultVerb(std::vector<std::string> args) const;

 private:
  CLI::App& app_;
  std::vector<std::pair<CLI::App*, std::function<int()>>> commands_;
  std::set<CLI::App*> nouns_;  // the nouns made by add, which name no command of their own
};

// Where an edit of a package goes: the package itself (atomically), or the file `output`; with
// `dryRun`, nowhere.
struct EditTarget {
  std::string output;
  bool dryRun = false;
};

// Options every command spells the same way.
void addPackageArgument(CLI::App& command, std::string& package);
void addJsonFlag(CLI::App& command, bool& json, const std::string& keys);
// -o for a command whose output file is not the package (a table text file, a transform).
CLI::Option* addOutputOption(CLI::App& command, std::string& output, const std::string& meaning);
// -o OUT and --dry-run of a command that writes the package; gives the -o option.
CLI::Option* addEditOptions(CLI::App& command, EditTarget& target,
                            const std::string& outputMeaning =
                                "write the result to this file, "
                                "not the package");

// The command files, each adding its commands.
void addInspectCommands(Commands& commands);
void addQueryCommand(Commands& commands);
void addEditCommands(Commands& commands);
void addRowsCommand(Commands& commands);
void addSequenceCommands(Commands& commands);
void addActionCommands(Commands& commands);
void addComponentCommands(Commands& commands);
void addDirectoryCommands(Commands& commands);
void addModuleIdCommands(Commands& commands);
void addInfoCommands(Commands& commands);
void addGuidCommands(Commands& commands);
void addAdminInstallCommand(Commands& commands);
void addSignatureCommands(Commands& commands);
void addSummaryCommands(Commands& commands);
void addSearchCommands(Commands& commands);
void addProductTableCommands(Commands& commands);
void addFileCommands(Commands& commands);
void addFileEditCommands(Commands& commands);
void addMergeCommands(Commands& commands);
void addTransformCommands(Commands& commands);
void addDiffCommand(Commands& commands);
// The manual and shell completion, made from the commands of `app`.
void addManualCommands(Commands& commands, const CLI::App& app);

std::unique_ptr<engine::Database> openPackage(const std::filesystem::path& path,
                                              engine::Database::OpenMode mode);
// `package` for an edit to `target`: in place, or read from `package` and written to the
// target's output when committed (nothing is written before). `createMissing` makes a package
// that does not exist yet, when it is edited in place.
std::unique_ptr<engine::Database> openForEdit(const std::filesystem::path& package,
                                              const EditTarget& target, bool createMissing = false);
void check(std::uint32_t result, const engine::Error& error);

// One line on stdout.
void printLine(const std::string& line);
// Fields separated by tabs, escaped as in table text files, on one line of stdout.
void printFields(const std::vector<std::u16string>& fields);
// A JSON document on stdout.
void printJson(const nlohmann::json& document);

// One thing an edit changes (or, on a dry run, would change), its value before and after ("" for
// none: added, or removed).
struct Change {
  std::string name;
  std::string before;
  std::string after;
};
// The changes of an edit: "NAME<TAB>BEFORE<TAB>AFTER" lines, or with `json` the document
// {"changed": [{NAMEKEY, "before", "after"}], "written"}, `nameKey` naming what each change is.
void printChanges(const std::vector<Change>& changes, const char* nameKey, bool json, bool written);
// What --json prints for a command that prints its changes with printChanges.
std::string changesJsonKeys(const char* nameKey);

}  // namespace odlex::cli
