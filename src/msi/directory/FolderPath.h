#pragma once
// A folder path as hosts write it: an optional leading "[Property]" naming the folder it starts
// from, then folder names separated by '\' or '/', for example
// "[ProgramFilesFolder]Vendor Name\Application\bin".
//
// Empty steps (doubled or trailing separators) and "." steps are skipped; ".." is refused, as a
// Directory row cannot climb. Every name must be a valid long folder name, and a path may hold
// at most kMaxDepth names.

#include <string>
#include <string_view>
#include <vector>

#include "msi/directory/Result.h"

namespace odlex::directory {

// The deepest folder chain the directory operations accept, from the root down.
inline constexpr std::size_t kMaxDepth = 256;

struct FolderPath {
  std::u16string property;  // without brackets; empty when the path has none
  std::vector<std::u16string> folders;
};

Result<FolderPath> parseFolderPath(std::u16string_view path);

}  // namespace odlex::directory
