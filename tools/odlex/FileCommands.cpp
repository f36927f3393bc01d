// Commands on the files a package installs: files list (where each file goes and where its
// bytes are) and extract (the files, and optionally the binary streams, into a folder).

#include <odlex/package/ODLEXPackageFiles.h>

#include <iostream>

#include "Cli.h"

namespace odlex::cli {

namespace {

const char* sourceName(ODLEXFileSource source) {
  switch (source) {
    case ODLEXFileSource::kEmbeddedCabinet:
      return "embedded";
    case ODLEXFileSource::kExternalCabinet:
      return "external";
    case ODLEXFileSource::kUncompressed:
      return "uncompressed";
  }
  return "";
}

std::unique_ptr<ODLEXPackageFiles> openFiles(const std::string& package) {
  TalError error;
  std::unique_ptr<ODLEXPackageFiles> files =
      ODLEXPackageFiles::Open(TalString::FromUtf8(package), error);
  if (!files)
    throw Failure(error.GetCode(), package + ": " + error.GetText().ToUtf8());
  return files;
}

// Prints each problem as "odlex: FILE: TEXT (error N)" on stderr; their JSON list.
nlohmann::json report(const std::vector<TalError>& problems) {
  nlohmann::json reported = nlohmann::json::array();
  for (const TalError& problem : problems) {
    std::cerr << "odlex: " << problem.GetContext().ToUtf8() << ": " << problem.GetText().ToUtf8()
              << " (error " << problem.GetCode() << ")\n";
    reported.push_back({{"file", problem.GetContext().ToUtf8()},
                        {"code", problem.GetCode()},
                        {"text", problem.GetText().ToUtf8()}});
  }
  return reported;
}

void addList(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "files list",
      "every file of the package, one per line: key, component, target path, size, version, "
      "language, sequence, and where its bytes are (embedded CABINET, external CABINET, or "
      "uncompressed SOURCE-PATH)",
      "odlex files list product.msi --json", [options] {
        std::unique_ptr<ODLEXPackageFiles> files = openFiles(options->package);
        nlohmann::json list = nlohmann::json::array();
        for (const ODLEXPackageFile& file : files->GetFiles()) {
          const std::string where = file.source == ODLEXFileSource::kUncompressed
                                        ? file.sourcePath.ToUtf8()
                                        : file.cabinet.ToUtf8();
          if (options->json) {
            list.push_back({{"key", file.key.ToUtf8()},
                            {"component", file.component.ToUtf8()},
                            {"directory", file.directory.ToUtf8()},
                            {"path", file.targetPath.ToUtf8()},
                            {"size", file.size},
                            {"version", file.version.ToUtf8()},
                            {"language", file.language.ToUtf8()},
                            {"attributes", file.attributes},
                            {"sequence", file.sequence},
                            {"source", sourceName(file.source)},
                            {"location", where}});
            continue;
          }
          printFields(
              {file.key.u16(), file.component.u16(), file.targetPath.u16(),
               TalString::FromUtf8(std::to_string(file.size)).u16(), file.version.u16(),
               file.language.u16(), TalString::FromUtf8(std::to_string(file.sequence)).u16(),
               TalString::FromUtf8(std::string(sourceName(file.source)) + " " + where).u16()});
        }
        if (options->json)
          printJson({{"files", list}});
        return 0;
      });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json,
              R"({"files": [{"key", "component", "directory", "path", "size", "version", )"
              R"("language", "attributes", "sequence", "source", "location"}]})");
}

void addExtract(Commands& commands) {
  struct Options {
    std::string package;
    std::string directory;
    std::vector<std::string> keys;
    bool flat = false;
    bool binary = false;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "extract",
      "write the package's files into DIR at their target paths (from embedded cabinets, "
      "cabinets beside the package and uncompressed sources); nothing is written outside DIR "
      "and nothing there is overwritten: each file that cannot be written safely is reported "
      "and the others are still written",
      "odlex extract product.msi out --file MainExe --file Readme", [options] {
        std::unique_ptr<ODLEXPackageFiles> files = openFiles(options->package);
        ODLEXExtractOptions extract;
        for (const std::string& key : options->keys)
          extract.fileKeys.push_back(TalString::FromUtf8(key));
        extract.flat = options->flat;
        extract.binary = options->binary;
        std::vector<TalError> problems;
        const bool all = files->Extract(TalString::FromUtf8(options->directory), extract, problems);
        const nlohmann::json reported = report(problems);
        if (options->json)
          printJson({{"directory", options->directory}, {"problems", reported}});
        return all ? 0 : 1;
      });
  addPackageArgument(command, options->package);
  command.add_option("DIR", options->directory, "the folder to write into (made when missing)")
      ->required();
  command.add_option("--file", options->keys, "only this file (a File key); may be repeated");
  command.add_flag("--flat", options->flat,
                   "every file straight into DIR under its long name, without folders");
  command.add_flag("--binary", options->binary,
                   "also the Binary and Icon streams, into DIR/Binary and DIR/Icon");
  addJsonFlag(command, options->json, R"({"directory", "problems": [{"file", "code", "text"}]})");
}

void addAdminImage(Commands& commands) {
  struct Options {
    std::string package;
    std::string directory;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "admin-image",
      "make an administrative image in DIR without the installer: the files uncompressed in "
      "the source layout, and a copy of the package marked as an administrative image (summary "
      "word count 4) without cabinets; problems are reported as extract reports them",
      "odlex admin-image product.msi image", [options] {
        std::unique_ptr<ODLEXPackageFiles> files = openFiles(options->package);
        std::vector<TalError> problems;
        const bool made =
            files->MakeAdministrativeImage(TalString::FromUtf8(options->directory), problems);
        const nlohmann::json reported = report(problems);
        if (options->json)
          printJson({{"directory", options->directory}, {"problems", reported}});
        return made ? 0 : 1;
      });
  addPackageArgument(command, options->package);
  command.add_option("DIR", options->directory, "the folder of the image (made when missing)")
      ->required();
  addJsonFlag(command, options->json, R"({"directory", "problems": [{"file", "code", "text"}]})");
}

}  // namespace

void addFileCommands(Commands& commands) {
  addList(commands);
  addExtract(commands);
  addAdminImage(commands);
}

}  // namespace odlex::cli
