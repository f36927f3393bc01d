#pragma once
// The shape the commands that edit a package share: PACKAGE, the command's own arguments, -o OUT
// with --dry-run, and --json; and, for those that edit through the library's database object,
// the package opened for editing in a LibrarySession, edited and saved.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Cli.h"
#include "LibraryDatabase.h"

class ODLEXDatabase;

namespace odlex::cli {

// The options of such a command; a command's own options derive from it.
struct PackageEdit {
  std::string package;
  EditTarget edit;
  bool json = false;
};

// What a command is called and says of itself (see Commands::add); `outputMeaning`, when not
// empty, is what its -o says.
struct CommandText {
  std::string words;
  std::string summary;
  std::string example;
  std::string outputMeaning = {};
};

// What a command declares of its own, between PACKAGE and -o; null for nothing.
using DeclareArguments = std::function<void(CLI::App& command)>;

// Declares an edit command: PACKAGE, then what `declare` adds, then -o OUT and --dry-run, then
// --json documented by `jsonKeys`. `run` runs when the command is chosen and gives its exit
// status.
void declareEditCommand(Commands& commands, const CommandText& text, PackageEdit& options,
                        const std::string& jsonKeys, const DeclareArguments& declare,
                        std::function<int()> run);

// An edit command through the database object: when chosen, `edit` gets the package opened for
// editing in `session`; it edits, prints what it did and saves (session.save) where the command
// saves. Exit status 0 when it returns.
void addEditCommand(Commands& commands, const CommandText& text,
                    std::shared_ptr<PackageEdit> options, const std::string& jsonKeys,
                    const DeclareArguments& declare,
                    std::function<void(LibrarySession& session, ODLEXDatabase& db)> edit);

// An edit command through the database object that prints its changes (printChanges, each
// named under `nameKey`) once the package is saved: `edit` makes them and returns them.
void addChangesCommand(Commands& commands, const CommandText& text, const char* nameKey,
                       std::shared_ptr<PackageEdit> options, const DeclareArguments& declare,
                       std::function<std::vector<Change>(ODLEXDatabase& db)> edit);

}  // namespace odlex::cli
