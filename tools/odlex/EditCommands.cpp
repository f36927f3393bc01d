// Commands that write a package: import, rewrite. Each writes atomically (a new file beside the
// target, renamed into place), in place or to -o OUT, and writes nothing with --dry-run.

#include <cstdio>

#include "Cli.h"
#include "msi/engine/Text.h"
#include "msi/idt/Idt.h"
#include "storage/FileSystem.h"

namespace odlex::cli {

namespace {

using OpenMode = engine::Database::OpenMode;

void addImport(Commands& commands) {
  struct Options {
    std::string package;
    std::vector<std::string> files;
    EditTarget edit;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "import", "replace tables with table text files (.idt); the package is made when missing",
      "odlex import product.msi Property.idt Binary.idt -o edited.msi", [options] {
        storage::FileSystem& fs = storage::FileSystem::current();
        auto db = openForEdit(options->package, options->edit, /*createMissing=*/true);
        engine::Error error;
        std::vector<std::string> warnings;
        for (const std::string& file : options->files) {
          check(idt::importTable(*db, fs, file, error, {idt::ImportMode::kReplaceTable, &warnings}),
                error);
        }
        for (const std::string& warning : warnings)
          std::fprintf(stderr, "odlex: warning: %s\n", warning.c_str());
        if (options->edit.dryRun) {
          for (std::size_t i = 0; i < db->tableCount(); ++i)
            printLine("would hold table " + engine::toUtf8(db->table(i).name()) + " (" +
                      std::to_string(db->table(i).rowCount()) + " rows)");
          return 0;
        }
        check(db->commit(error), error);
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("FILE.idt", options->files, "the table text files, imported in order")
      ->required();
  addEditOptions(command, options->edit);
}

void addRewrite(Commands& commands) {
  struct Options {
    std::string package;
    EditTarget edit;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command =
      commands.add("rewrite", "decode the whole package and write it afresh to another file",
                   "odlex rewrite product.msi -o fresh.msi", [options] {
                     auto db = openPackage(options->package, OpenMode::kReadOnly);
                     if (options->edit.dryRun) {
                       printLine("would write " + options->edit.output + " (" +
                                 std::to_string(db->tableCount()) + " tables, " +
                                 std::to_string(db->streamNames().size()) + " streams)");
                       return 0;
                     }
                     engine::Error error;
                     check(db->saveAs(options->edit.output, error), error);
                     return 0;
                   });
  addPackageArgument(command, options->package);
  addEditOptions(command, options->edit, "the new file")->required();
}

}  // namespace

void addEditCommands(Commands& commands) {
  addImport(commands);
  addRewrite(commands);
}

}  // namespace odlex::cli
