#pragma once
// Shared plumbing of the odlex commands: argument lists, failures, opening packages.

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Database.h"

namespace odlex::cli {

// A failure that ends the command: printed as "odlex: <text> (error <code>)", exit status 1.
struct Failure : std::runtime_error {
  Failure(std::uint32_t code, const std::string& text) : std::runtime_error(text), code(code) {}
  explicit Failure(const engine::Error& error) : Failure(error.code, error.text) {}
  std::uint32_t code;
};

// A usage mistake: printed with the usage text, exit status 1.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The arguments of one command: positional words, and "-o FILE".
struct Arguments {
  std::vector<std::string> positional;
  std::optional<std::string> output;

  static Arguments parse(std::span<char* const> words);
  // Exactly `count` positional words, else a usage error naming the command.
  void expectCount(std::size_t count, std::string_view command) const;
};

std::unique_ptr<engine::Database> openPackage(const std::filesystem::path& path,
                                              engine::Database::OpenMode mode);
void check(std::uint32_t result, const engine::Error& error);

using Command = int (*)(const Arguments&);
int tablesCommand(const Arguments& args);
int exportCommand(const Arguments& args);
int exportAllCommand(const Arguments& args);
int importCommand(const Arguments& args);
int rewriteCommand(const Arguments& args);
int queryCommand(const Arguments& args);
int rowsCommand(const Arguments& args);

}  // namespace odlex::cli
