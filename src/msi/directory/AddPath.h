#pragma once
// Turning folder paths into Directory rows, as an installer author lays out a package.
//
// The path's leading "[Property]" picks the row the chain starts from:
// - none, or [TARGETDIR]: the root TARGETDIR, made with DefaultDir "SourceDir" when missing;
// - a key of an existing row (an INSTALLDIR made earlier, say): that row;
// - a system folder property (ProgramFilesFolder, ...): a row with that key under TARGETDIR and
//   DefaultDir ".", made when missing, as packages have them;
// - anything else is an error: the property names no folder.
// Then for each folder name, a child of the current row is reused when its long target name
// matches (case-insensitively, as Windows compares folder names) and, for a source/target
// pair, its long source name matches too; otherwise a row is made with a key from
// makeDirectoryKey and a DefaultDir whose sides are "long", or "short|long" when the long name
// is not a valid short name (the short name unique among the row's siblings). Adding the same
// path again finds the same rows and returns the same leaf.
//
// The whole path is checked before anything is added, so a refused path leaves the model as it
// was; the chain a path would make is refused when it would be deeper than kMaxDepth or the
// starting row's own chain is broken (cycle, missing parent).

#include <string>
#include <string_view>

#include "msi/directory/DirectoryModel.h"
#include "msi/directory/Result.h"

namespace odlex::directory {

// The key of the leaf row of `path`, see FolderPath.h for the path syntax.
Result<std::u16string> addTargetPath(DirectoryModel& model, std::u16string_view path);

// The same for a folder whose names in the source image differ from those on the target: each
// row gets DefaultDir "target:source" (just "target" where both sides are the same). `source`
// holds folder names relative to the folder where `target` starts; it may start with
// "[SourceDir]" or with the same property as `target`, any other property is an error. The i-th
// source name pairs with the i-th target name; when one path has fewer names, its side of the
// remaining rows is "." (the folder adds nothing to that path).
Result<std::u16string> addSourceTargetPath(DirectoryModel& model, std::u16string_view source,
                                           std::u16string_view target);

}  // namespace odlex::directory
