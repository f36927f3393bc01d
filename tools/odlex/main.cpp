// odlex: inspect, export, import and rewrite installer databases from the command line.

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

// After the standard headers, which say whether the C library is glibc.
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "Cli.h"
#include "ProgressFileSystem.h"

namespace {

constexpr const char* kVersion = "odlex 0.1.0\n";

// `odlex help [WORDS...]`: the help of the command the words name, or of the tool.
int printHelp(CLI::App& app, const std::vector<std::string>& words) {
  CLI::App* command = &app;
  for (const std::string& word : words) {
    const auto found = command->get_subcommands(
        [&word](CLI::App* candidate) { return candidate->get_name() == word; });
    if (found.empty()) {
      std::fprintf(stderr, "odlex: no command %s\n", word.c_str());
      return 2;
    }
    command = found.front();
  }
  std::cout << command->help();
  return 0;
}

// The words of the command that was parsed ("component delete").
std::string chosenWords(const CLI::App& app) {
  std::string words;
  for (const CLI::App* command = &app; !command->get_subcommands().empty();) {
    command = command->get_subcommands().front();
    words += (words.empty() ? "" : " ") + command->get_name();
  }
  return words;
}

}  // namespace

int main(int argc, char** argv) {
  // Blocks of 128 KiB and more (a large package's sector table is megabytes) go back to the
  // system when freed. By default the allocator raises this threshold once such a block is
  // freed and keeps the next ones in its heap, so an edit that opens a package more than once
  // would hold each open's table at its peak.
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, 128 << 10);
#endif
  CLI::App app("odlex opens, edits, checks and saves Windows Installer databases.", "odlex");
  app.set_version_flag("--version", kVersion);
  app.require_subcommand(1);
  app.footer(
      "Run 'odlex help COMMAND' or 'odlex COMMAND --help' for a command's use and an "
      "example.\nLong work draws a progress bar on stderr when stderr is a terminal; "
      "ODLEX_PROGRESS=always or never forces it on or off.");
  odlex::cli::Commands commands(app);
  odlex::cli::addInspectCommands(commands);
  odlex::cli::addQueryCommand(commands);
  odlex::cli::addEditCommands(commands);
  odlex::cli::addRowsCommand(commands);
  odlex::cli::addSequenceCommands(commands);
  odlex::cli::addActionCommands(commands);
  odlex::cli::addComponentCommands(commands);
  odlex::cli::addDirectoryCommands(commands);
  odlex::cli::addModuleIdCommands(commands);
  odlex::cli::addInfoCommands(commands);
  odlex::cli::addGuidCommands(commands);
  odlex::cli::addAdminInstallCommand(commands);
  odlex::cli::addSignatureCommands(commands);
  odlex::cli::addSummaryCommands(commands);
  odlex::cli::addSearchCommands(commands);
  odlex::cli::addProductTableCommands(commands);
  odlex::cli::addFileCommands(commands);
  odlex::cli::addFileEditCommands(commands);
  odlex::cli::addMergeCommands(commands);
  odlex::cli::addTransformCommands(commands);
  odlex::cli::addDiffCommand(commands);
  odlex::cli::addManualCommands(commands, app);
  std::vector<std::string> helpWords;
  CLI::App* help = app.add_subcommand("help", "show the use of a command and an example");
  help->add_option("COMMAND", helpWords, "the command (and verb) to explain");
  help->footer("Example:\n  odlex help component delete");

  std::vector<std::string> words = commands.withDefaultVerb({argv, argv + argc});
  std::vector<char*> args;
  for (std::string& word : words)
    args.push_back(word.data());
  try {
    app.parse(static_cast<int>(args.size()), args.data());
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0)
      return app.exit(error);
    // A usage mistake: what is wrong, then the use of the command it was made in.
    std::fprintf(stderr, "odlex: %s\n", error.what());
    const CLI::App* failed = &app;
    while (!failed->get_subcommands().empty())
      failed = failed->get_subcommands().front();
    std::cerr << failed->help();
    return 2;
  }
  if (help->parsed())
    return printHelp(app, helpWords);
  // Everything the command reads and writes goes through the counting file system, which
  // draws the progress bar of long work.
  odlex::cli::ProgressFileSystem files(odlex::storage::FileSystem::real(), chosenWords(app));
  const odlex::storage::ScopedFileSystem scoped(files);
  try {
    return commands.chosen()();
  } catch (const odlex::cli::Failure& error) {
    std::fprintf(stderr, "odlex: %s (error %u)\n", error.what(), error.code);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "odlex: %s\n", error.what());
  }
  return 1;
}
