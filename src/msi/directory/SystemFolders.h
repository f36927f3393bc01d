#pragma once
// The folder properties the installer sets itself (system folders such as ProgramFilesFolder)
// and the root property TARGETDIR. A package names a system folder with a Directory row whose
// key is the property, placed under TARGETDIR with DefaultDir "."; the installer then takes the
// folder's location from the property, not from the row's parent and name.

#include <string_view>

namespace odlex::directory {

inline constexpr std::u16string_view kTargetDir = u"TARGETDIR";
// The property of the source root, as paths show it.
inline constexpr std::u16string_view kSourceDirProperty = u"SourceDir";

// True for the installer's system folder properties (exact, case-sensitive like every
// property name); TARGETDIR is the root and not one of them.
bool isSystemFolder(std::u16string_view property);

}  // namespace odlex::directory
