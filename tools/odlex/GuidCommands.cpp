// Commands on GUID texts: guid check (is each text a braced GUID, and what is wrong with it) and
// guid new (fresh GUIDs). They open no package.

#include <odlex/database/ODLEXDatabase.h>

#include "Cli.h"

namespace odlex::cli {

namespace {

// What each bit of the check's mask means, lowest first.
const char* const kFaults[] = {
    "shorter than 38 characters",
    "no \"{\" first",
    "a character that is no hex digit",
    "a \"-\" missing",
    "no \"}\" at the end",
    "characters after a malformed GUID",
};

std::vector<std::string> faultsOf(unsigned mask) {
  std::vector<std::string> faults;
  for (std::size_t bit = 0; bit < std::size(kFaults); ++bit) {
    if (mask & (1u << bit))
      faults.emplace_back(kFaults[bit]);
  }
  return faults;
}

void addCheck(Commands& commands) {
  struct Options {
    std::vector<std::string> texts;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "guid check",
      "check that each text is a braced GUID: one line per text with the GUID upper-cased and "
      "cut after its \"}\", and what is wrong with it; exit status 1 when any is not valid",
      "odlex guid check {6d3f1e2a-4b5c-4d7e-8f90-a1b2c3d4e5f6}", [options] {
        bool allValid = true;
        nlohmann::json checked = nlohmann::json::array();
        for (const std::string& text : options->texts) {
          TalString guid = TalString::FromUtf8(text);
          unsigned mask = 0;
          allValid = ODLEXDatabase::IsValidGUID(guid, mask) && allValid;
          const std::vector<std::string> faults = faultsOf(mask);
          if (options->json) {
            checked.push_back({{"text", text},
                               {"guid", guid.ToUtf8()},
                               {"valid", mask == 0},
                               {"mask", mask},
                               {"faults", faults}});
            continue;
          }
          std::string verdict = mask == 0 ? "valid" : "invalid:";
          for (std::size_t i = 0; i < faults.size(); ++i)
            verdict += (i ? "; " : " ") + faults[i];
          printFields({guid.u16(), TalString::FromUtf8(verdict).u16()});
        }
        if (options->json)
          printJson(checked);
        return allValid ? 0 : 1;
      });
  command.add_option("TEXT", options->texts, "the texts to check")->required();
  addJsonFlag(command, options->json,
              R"([{"text", "guid" (upper-cased and cut), "valid", "mask", "faults"}])");
}

void addNew(Commands& commands) {
  struct Options {
    unsigned count = 1;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command =
      commands.add("guid new", "print new GUIDs in the installer's form, one per line",
                   "odlex guid new --count 3", [options] {
                     nlohmann::json guids = nlohmann::json::array();
                     for (unsigned i = 0; i < options->count; ++i) {
                       const std::string guid = ODLEXTObject::GenerateGUID().ToUtf8();
                       if (options->json)
                         guids.push_back(guid);
                       else
                         printLine(guid);
                     }
                     if (options->json)
                       printJson(guids);
                     return 0;
                   });
  command.add_option("--count", options->count, "how many (1 to 10000)")
      ->check(CLI::Range(1u, 10000u));
  addJsonFlag(command, options->json, R"([GUID, ...])");
}

}  // namespace

void addGuidCommands(Commands& commands) {
  addCheck(commands);
  addNew(commands);
}

}  // namespace odlex::cli
