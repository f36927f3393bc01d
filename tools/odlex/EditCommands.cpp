// Commands that write a package.

#include <cstdio>

#include "Cli.h"
#include "msi/idt/Idt.h"
#include "storage/FileSystem.h"

namespace odlex::cli {

namespace {
using OpenMode = engine::Database::OpenMode;
}  // namespace

int importCommand(const Arguments& args) {
  if (args.positional.size() < 2)
    throw UsageError("import takes a package and .idt files");
  const std::filesystem::path package = args.positional[0];
  storage::FileSystem& fs = storage::FileSystem::real();
  engine::Error error;
  std::unique_ptr<engine::Database> db;
  if (args.output) {
    db = engine::Database::openInto(fs, package, *args.output, error);
    if (!db)
      throw Failure(error);
  } else {
    db = openPackage(package, fs.exists(package) ? OpenMode::kUpdate : OpenMode::kCreate);
  }
  std::vector<std::string> warnings;
  for (std::size_t i = 1; i < args.positional.size(); ++i) {
    check(idt::importTable(*db, fs, args.positional[i], error,
                           {idt::ImportMode::kReplaceTable, &warnings}),
          error);
  }
  for (const std::string& warning : warnings)
    std::fprintf(stderr, "odlex: warning: %s\n", warning.c_str());
  check(db->commit(error), error);
  return 0;
}

int rewriteCommand(const Arguments& args) {
  args.expectCount(1, "rewrite");
  if (!args.output)
    throw UsageError("rewrite needs -o OUT");
  auto db = openPackage(args.positional[0], OpenMode::kReadOnly);
  engine::Error error;
  check(db->saveAs(*args.output, error), error);
  return 0;
}

}  // namespace odlex::cli
