#pragma once
// What an ODLEXPackageFiles object holds besides its file list, shared by the files that
// implement it.

#include <filesystem>
#include <memory>
#include <string>

#include "msi/engine/Database.h"
#include "odlex/package/ODLEXPackageFiles.h"

struct ODLEXPackageFiles::State {
  std::unique_ptr<odlex::engine::Database> database;  // opened read-only
  std::filesystem::path path;                         // the package
  std::filesystem::path folder;  // where the package lies: external cabinets and sources
};

namespace odlex::package {

// One problem with a file (or stream) named `file`.
inline TalError problem(unsigned code, const TalString& file, const std::string& text) {
  return TalError(code, TalString::FromUtf8(text), file);
}

}  // namespace odlex::package
