#pragma once
// The full source and target paths of a Directory row, built by walking its parent links up to
// the root.
//
// Shape: the folder property the path starts from in brackets, then every folder name followed
// by '\', for example "[ProgramFilesFolder]Vendor Name\Application\bin\"; a row that is itself
// the starting folder gives just "[ProgramFilesFolder]". Rows whose name is "." add nothing.
//
// - Target paths start at the first row, going up, whose key is a system folder property
//   (ProgramFilesFolder, ...), or at the root ("[TARGETDIR]"): the installer places those rows
//   by their property. With `toRoot` the walk ignores system folders and always goes up to the
//   root, giving the row's place in the table's own tree (for "." rows such as
//   ProgramFilesFolder that is "[TARGETDIR]" plus the names below it).
// - Source paths always start at the root, shown as "[SourceDir]" (folder properties do not move
//   source folders), and use the source side of each DefaultDir; `toRoot` changes nothing.
// - `shortNames` selects the short (8.3) name of each folder instead of the long one; a folder
//   whose DefaultDir side holds one name uses it either way.
// - `forDisplay` false gives the form used to compare paths: the same text with the folder
//   names case-folded, since Windows folder names compare without regard to case, so two paths
//   naming the same folders are equal as strings. Property names keep their case (properties are
//   case-sensitive).
//
// Errors: an unknown key, a parent that does not exist, a cycle in the parent links, a chain
// deeper than kMaxDepth, or a DefaultDir that does not parse.

#include <string>
#include <string_view>
#include <vector>

#include "msi/directory/DefaultDir.h"
#include "msi/directory/DirectoryModel.h"
#include "msi/directory/Result.h"

namespace odlex::directory {

struct ChainLink {
  DirectoryRow row;
  DefaultDir defaultDir;
};

// The row `key` and its ancestors, the row first and the root last.
Result<std::vector<ChainLink>> parentChain(const DirectoryModel& model, std::u16string_view key);

Result<std::u16string> targetPath(const DirectoryModel& model, std::u16string_view key,
                                  bool forDisplay, bool toRoot, bool shortNames);
Result<std::u16string> sourcePath(const DirectoryModel& model, std::u16string_view key,
                                  bool forDisplay, bool toRoot, bool shortNames);

}  // namespace odlex::directory
