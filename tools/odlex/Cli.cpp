#include "Cli.h"

#include "storage/FileSystem.h"

namespace odlex::cli {

Arguments Arguments::parse(std::span<char* const> words) {
  Arguments args;
  for (std::size_t i = 0; i < words.size(); ++i) {
    std::string_view word = words[i];
    if (word == "-o" || word == "--output") {
      if (i + 1 == words.size())
        throw UsageError("-o needs a file name");
      if (args.output)
        throw UsageError("-o given twice");
      args.output = words[++i];
    } else if (word.size() > 1 && word.front() == '-') {
      throw UsageError("unknown option " + std::string(word));
    } else {
      args.positional.emplace_back(word);
    }
  }
  return args;
}

void Arguments::expectCount(std::size_t count, std::string_view command) const {
  if (positional.size() != count) {
    throw UsageError(std::string(command) + " takes " + std::to_string(count) + " argument" +
                     (count == 1 ? "" : "s") + ", not " + std::to_string(positional.size()));
  }
}

std::unique_ptr<engine::Database> openPackage(const std::filesystem::path& path,
                                              engine::Database::OpenMode mode) {
  engine::Error error;
  auto db = engine::Database::open(storage::FileSystem::real(), path, mode, error);
  if (!db)
    throw Failure(error);
  return db;
}

void check(std::uint32_t result, const engine::Error& error) {
  if (result != engine::kSuccess)
    throw Failure(result, error.text);
}

}  // namespace odlex::cli
