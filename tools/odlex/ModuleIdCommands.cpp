// Commands on merge-module identifiers (Name.GUID with the GUID's hyphens as underscores):
// module-id combine and module-id split. They work on text alone and open no package.

#include <odlex/tables/ODLEXTables.h>

#include "Cli.h"

namespace odlex::cli {

namespace {

void addCombine(Commands& commands) {
  struct Options {
    std::string name;
    std::string guid;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command =
      commands.add("module-id combine", "the identifier of a merge module from its name and GUID",
                   "odlex module-id combine Mod {A1B2C3D4-E5F6-A7B8-C9D0-E1F2A3B4C5D6}", [options] {
                     const TalString id = ODLEXTModuleSignature::CombineMergeModuleID(
                         TalString::FromUtf8(options->name), TalString::FromUtf8(options->guid));
                     if (options->json)
                       printJson({{"id", id.ToUtf8()}});
                     else
                       printLine(id.ToUtf8());
                     return 0;
                   });
  command.add_option("NAME", options->name, "the module's name")->required();
  command.add_option("GUID", options->guid, "the module's GUID, with or without braces")
      ->required();
  addJsonFlag(command, options->json, R"({"id"})");
}

void addSplit(Commands& commands) {
  struct Options {
    std::string id;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "module-id split",
      "the name and braced GUID of a merge-module identifier, split at its first \".\"; a part "
      "that is empty, or both when there is no \".\", print empty",
      "odlex module-id split Mod.A1B2C3D4_E5F6_A7B8_C9D0_E1F2A3B4C5D6", [options] {
        TalString name, guid;
        ODLEXTModuleSignature::SplitMergeModuleID(name, guid, TalString::FromUtf8(options->id));
        if (options->json)
          printJson({{"name", name.ToUtf8()}, {"guid", guid.ToUtf8()}});
        else
          printFields({name.u16(), guid.u16()});
        return 0;
      });
  command.add_option("ID", options->id, "the module identifier")->required();
  addJsonFlag(command, options->json, R"({"name", "guid"})");
}

}  // namespace

void addModuleIdCommands(Commands& commands) {
  addCombine(commands);
  addSplit(commands);
}

}  // namespace odlex::cli
