#pragma once
// Resolving the File table of a package: each file's target and source paths, and where its
// bytes are (see odlex/package/ODLEXPackageFiles.h for the rules).

#include <optional>
#include <string_view>
#include <vector>

#include "msi/engine/Database.h"
#include "odlex/package/ODLEXPackageFiles.h"

namespace odlex::package {

// Bits of the summary information's word count.
constexpr int kSourceShortNames = 1;
constexpr int kSourceCompressed = 2;
constexpr int kSourceAdminImage = 4;
constexpr int kSourceNoElevation = 8;
// File attributes that override the package's default compression for one file.
constexpr int kFileNoncompressed = 0x2000;
constexpr int kFileCompressed = 0x4000;

// The stream a merge module keeps its files in.
inline constexpr std::u16string_view kModuleCabinet = u"MergeModule.CABinet";

// The long name of a "short|long" file or folder name (the name itself when it has one part).
std::u16string_view longNameOf(std::u16string_view name);
std::u16string_view shortNameOf(std::u16string_view name);

// Whether `database` is a merge module: no Media table, its files in a MergeModule.CABinet
// stream.
bool isMergeModule(const engine::Database& database);

// The summary's word count; 0 when the package has none.
int wordCountOf(const engine::Database& database);

// File attributes for a file held in a cabinet of `database`: marked compressed when the
// package's files are not compressed by default, never marked uncompressed.
int attributesInCabinet(const engine::Database& database, int attributes);

// The files of `database` in File key order, laid out as the word count `wordCount` says (the
// package's own when not given). A directory that cannot be resolved leaves the file's paths
// empty. False with the error only when the File table lacks its columns.
bool resolveFiles(const engine::Database& database, std::vector<ODLEXPackageFile>& files,
                  engine::Error& error, std::optional<int> wordCount = std::nullopt);

}  // namespace odlex::package
