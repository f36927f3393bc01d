#pragma once
// Writing a package's files, wherever their bytes are (embedded cabinets, cabinets beside the
// package, uncompressed sources), at paths of an extraction folder, with every check of
// ODLEXPackageFiles::Extract.

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "msi/engine/Database.h"
#include "odlex/package/ODLEXPackageFiles.h"
#include "package/files/ExtractRoot.h"

namespace odlex::package {

// A file and its path relative to the extraction folder (empty: its directory did not resolve).
using ChosenFile = std::pair<const ODLEXPackageFile*, std::u16string>;

// Writes each chosen file of `database`, which lies in `folder`, under `root`; one problem for
// each file not written.
void writeFiles(const engine::Database& database, const std::filesystem::path& folder,
                ExtractRoot& root, const std::vector<ChosenFile>& chosen,
                std::vector<TalError>& problems);

// Writes the Binary and Icon streams into the folders "Binary" and "Icon" under `root`.
void writeBinaryStreams(const engine::Database& database, const std::filesystem::path& folder,
                        ExtractRoot& root, std::vector<TalError>& problems);

}  // namespace odlex::package
