// Declaring and running the commands that edit a package.

#include "EditCommand.h"

#include <utility>

namespace odlex::cli {

void declareEditCommand(Commands& commands, const CommandText& text, PackageEdit& options,
                        const std::string& jsonKeys, const DeclareArguments& declare,
                        std::function<int()> run) {
  CLI::App& command = commands.add(text.words, text.summary, text.example, std::move(run));
  addPackageArgument(command, options.package);
  if (declare)
    declare(command);
  if (text.outputMeaning.empty())
    addEditOptions(command, options.edit);
  else
    addEditOptions(command, options.edit, text.outputMeaning);
  addJsonFlag(command, options.json, jsonKeys);
}

void addEditCommand(Commands& commands, const CommandText& text,
                    std::shared_ptr<PackageEdit> options, const std::string& jsonKeys,
                    const DeclareArguments& declare,
                    std::function<void(LibrarySession& session, ODLEXDatabase& db)> edit) {
  declareEditCommand(commands, text, *options, jsonKeys, declare,
                     [options, edit = std::move(edit)] {
                       LibrarySession session;
                       edit(session, session.openForEdit(options->package, options->edit));
                       return 0;
                     });
}

void addChangesCommand(Commands& commands, const CommandText& text, const char* nameKey,
                       std::shared_ptr<PackageEdit> options, const DeclareArguments& declare,
                       std::function<std::vector<Change>(ODLEXDatabase& db)> edit) {
  addEditCommand(
      commands, text, options, changesJsonKeys(nameKey), declare,
      [options, nameKey, edit = std::move(edit)](LibrarySession& session, ODLEXDatabase& db) {
        const std::vector<Change> changes = edit(db);
        session.save(db);
        printChanges(changes, nameKey, options->json, !options->edit.dryRun);
      });
}

}  // namespace odlex::cli
