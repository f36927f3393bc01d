// Commands that read a package and never change it: tables, export, export-all.

#include <cstdio>
#include <string>

#include "Cli.h"
#include "msi/engine/Text.h"
#include "msi/idt/Idt.h"
#include "storage/FileSystem.h"

namespace odlex::cli {

namespace {

using OpenMode = engine::Database::OpenMode;
using nlohmann::json;

void addTables(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command =
      commands.add("tables", "list the persistent tables in _Tables order, one name per line",
                   "odlex tables product.msi", [options] {
                     auto db = openPackage(options->package, OpenMode::kReadOnly);
                     json names = json::array();
                     for (std::size_t i = 0; i < db->tableCount(); ++i) {
                       const std::string name = engine::toUtf8(db->table(i).name());
                       if (options->json)
                         names.push_back(name);
                       else
                         printLine(name);
                     }
                     if (options->json)
                       printJson({{"tables", names}});
                     return 0;
                   });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json, R"({"tables": [table names]})");
}

void addExport(Commands& commands) {
  struct Options {
    std::string package;
    std::string table;
    std::string output;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "export", "write one table as a table text file (.idt), to stdout or to a file",
      "odlex export product.msi Property -o Property.idt", [options] {
        auto db = openPackage(options->package, OpenMode::kReadOnly);
        const std::u16string table = engine::fromUtf8(options->table);
        engine::Error error;
        if (!options->output.empty()) {
          check(
              idt::exportTable(*db, table, storage::FileSystem::current(), options->output, error),
              error);
          return 0;
        }
        idt::ExportedTable exported;
        check(idt::exportTableText(*db, table, exported, error), error);
        std::fwrite(exported.text.data(), 1, exported.text.size(), stdout);
        if (!exported.binaries.empty()) {
          std::fprintf(stderr,
                       "odlex: %zu data files of %s not written; use -o FILE to write them\n",
                       exported.binaries.size(), options->table.c_str());
        }
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("TABLE", options->table, "the table, _SummaryInformation or _ForceCodepage")
      ->required();
  addOutputOption(command, options->output,
                  "the .idt file to write; binary cells go to a folder named after the table "
                  "beside it");
}

void addExportAll(Commands& commands) {
  struct Options {
    std::string package;
    std::string folder;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "export-all", "write every table, _SummaryInformation and _ForceCodepage as table text files",
      "odlex export-all product.msi tables/", [options] {
        auto db = openPackage(options->package, OpenMode::kReadOnly);
        engine::Error error;
        check(idt::exportAll(*db, storage::FileSystem::current(), options->folder, error), error);
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("DIR", options->folder, "the folder to write into (made when missing)")
      ->required();
}

}  // namespace

void addInspectCommands(Commands& commands) {
  addTables(commands);
  addExport(commands);
  addExportAll(commands);
}

}  // namespace odlex::cli
