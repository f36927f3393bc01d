// odlex: inspect, export, import and rewrite installer databases from the command line.

#include <cstdio>
#include <cstring>
#include <exception>
#include <span>
#include <string_view>

#include "Cli.h"

namespace {

constexpr const char* kUsage =
    "usage: odlex COMMAND ARGUMENTS\n"
    "  tables PACKAGE                    list the persistent tables in _Tables order\n"
    "  export PACKAGE TABLE [-o FILE]    one table as .idt text (stdout by default)\n"
    "  export-all PACKAGE DIR            every table, _SummaryInformation and\n"
    "                                    _ForceCodepage as .idt files into DIR\n"
    "  import PACKAGE FILE.idt... [-o OUT]\n"
    "                                    import table files into PACKAGE (created when\n"
    "                                    missing), or into a copy OUT\n"
    "  rewrite PACKAGE -o OUT            decode everything and write a fresh file\n"
    "  query PACKAGE \"SQL\"               run a SELECT, one row per line, tab-separated\n"
    "  rows PACKAGE TABLE                the live rows of TABLE through its table object:\n"
    "                                    a line of column names, then one row per line,\n"
    "                                    tab-separated\n";

struct Entry {
  const char* name;
  odlex::cli::Command run;
};

constexpr Entry kCommands[] = {
    {"tables", odlex::cli::tablesCommand},
    {"export", odlex::cli::exportCommand},
    {"export-all", odlex::cli::exportAllCommand},
    {"import", odlex::cli::importCommand},
    {"rewrite", odlex::cli::rewriteCommand},
    {"query", odlex::cli::queryCommand},
    {"rows", odlex::cli::rowsCommand},
};

}  // namespace

int main(int argc, char** argv) {
  std::span<char* const> words(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0));
  if (words.empty() || std::string_view(words[0]) == "--help" ||
      std::string_view(words[0]) == "-h") {
    std::fputs(kUsage, words.empty() ? stderr : stdout);
    return words.empty() ? 1 : 0;
  }
  try {
    for (const Entry& command : kCommands) {
      if (std::strcmp(words[0], command.name) == 0) {
        return command.run(odlex::cli::Arguments::parse(words.subspan(1)));
      }
    }
    throw odlex::cli::UsageError(std::string("unknown command ") + words[0]);
  } catch (const odlex::cli::UsageError& error) {
    std::fprintf(stderr, "odlex: %s\n%s", error.what(), kUsage);
  } catch (const odlex::cli::Failure& error) {
    std::fprintf(stderr, "odlex: %s (error %u)\n", error.what(), error.code);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "odlex: %s\n", error.what());
  }
  return 1;
}
