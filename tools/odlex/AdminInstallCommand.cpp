// admin-install: an administrative install of each package through the installer's
// command-line program (msiexec on the PATH, or --installer).

#include <odlex/database/ODLEXDatabase.h>

#include "Cli.h"

namespace odlex::cli {

void addAdminInstallCommand(Commands& commands) {
  struct Options {
    std::vector<std::string> packages;
    std::string installer;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "admin-install",
      "run a quiet administrative install (/qn /a) of each package in turn; a run that started "
      "counts as done whatever the installer reported",
      "odlex admin-install product.msi other.msi --installer /opt/wine/msiexec", [options] {
        ODLEXDatabase::SetInstallerProgram(TalString::FromUtf8(options->installer));
        nlohmann::json runs = nlohmann::json::array();
        std::string failed;
        for (const std::string& package : options->packages) {
          const bool ran =
              ODLEXDatabase::DoAdministrativeInstall(TalString::FromUtf8(package).u16().c_str());
          runs.push_back({{"package", package}, {"ran", ran}});
          if (!ran)
            failed += (failed.empty() ? "" : ", ") + package;
        }
        if (options->json)
          printJson({{"installer", ODLEXDatabase::GetInstallerProgram().ToUtf8()}, {"runs", runs}});
        if (!failed.empty())
          throw Failure(2, "cannot start " + ODLEXDatabase::GetInstallerProgram().ToUtf8() +
                               " for " + failed);
        return 0;
      });
  command.add_option("PACKAGE", options->packages, "the packages")->required();
  command.add_option("--installer", options->installer,
                     "the installer's program, a path or a name on PATH (default msiexec)");
  addJsonFlag(command, options->json, R"({"installer", "runs": [{"package", "ran"}]})");
}

}  // namespace odlex::cli
