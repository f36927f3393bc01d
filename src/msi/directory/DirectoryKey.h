#pragma once
// Keys of new Directory rows. A key is an installer identifier (ASCII letters, digits, '_' and
// '.', not starting with a digit or '.', at most 72 characters), made readable by deriving it
// from the folder name: "Vendor Name" gives "Vendor_Name", then "Vendor_Name1", "Vendor_Name2"
// ... when taken. Keys the installer would read as a folder property (TARGETDIR, SourceDir,
// the system folders) are never made, as a row with such a key would take its location from
// the property.

#include <string>
#include <string_view>

#include "msi/directory/DirectoryModel.h"

namespace odlex::directory {

inline constexpr std::size_t kMaxKeyLength = 72;

bool isIdentifier(std::u16string_view text);

// The identifier made from `name`: its letters, digits, '_' and '.' kept, any other character
// made '_', a '_' in front when it would start with a digit or '.', cut to kMaxKeyLength.
std::u16string identifierFrom(std::u16string_view name);

// A key derived from `folderName` that no row of `model` uses.
std::u16string makeDirectoryKey(const DirectoryModel& model, std::u16string_view folderName);

}  // namespace odlex::directory
