#include "msi/directory/SystemFolders.h"

#include <algorithm>
#include <iterator>

namespace odlex::directory {

bool isSystemFolder(std::u16string_view property) {
  // clang-format off
  static constexpr std::u16string_view kFolders[] = {
      u"AdminToolsFolder", u"AppDataFolder", u"CommonAppDataFolder", u"CommonFiles64Folder",
      u"CommonFilesFolder", u"DesktopFolder", u"FavoritesFolder", u"FontsFolder",
      u"LocalAppDataFolder", u"MyPicturesFolder", u"NetHoodFolder", u"PersonalFolder",
      u"PrintHoodFolder", u"ProgramFiles64Folder", u"ProgramFilesFolder", u"ProgramMenuFolder",
      u"RecentFolder", u"SendToFolder", u"StartMenuFolder", u"StartupFolder", u"System16Folder",
      u"System64Folder", u"SystemFolder", u"TempFolder", u"TemplateFolder", u"WindowsFolder",
      u"WindowsVolume", u"PrimaryVolumePath", u"ROOTDRIVE"};
  // clang-format on
  return std::find(std::begin(kFolders), std::end(kFolders), property) != std::end(kFolders);
}

}  // namespace odlex::directory
