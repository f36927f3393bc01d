#pragma once
// What an ODLEXPackageFileEditor holds, shared by the files that implement it.

#include <filesystem>
#include <memory>
#include <vector>

#include "msi/engine/Database.h"
#include "odlex/package/ODLEXPackageFiles.h"
#include "package/cabinet/PackedCabinet.h"

struct ODLEXPackageFileEditor::State {
  std::unique_ptr<odlex::engine::Database> database;  // open for editing
  std::filesystem::path folder;  // where the package lies: external cabinets and sources
  std::vector<ODLEXPackageFile> files;
  odlex::package::ScratchFolder scratch;  // the new cabinets, until the package is saved

  // Resolves the files again after a change; false with the error when the tables are malformed.
  bool refresh(TalError& error);
};
