#pragma once
// New cabinets for a package: written from files to a scratch folder and handed to the package
// as stream sources, so that neither the members nor the cabinet are ever held in memory, and
// the numbers a new disk of files takes after a package's own.

#include <filesystem>
#include <memory>
#include <string>

#include "msi/engine/Database.h"
#include "package/cabinet/Cabinet.h"

namespace odlex::package {

// A new folder under the system's temporary folder, removed with its files when it goes. A
// file still open (a new cabinet's source) stays readable until it is closed.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  // Empty when no folder could be made.
  const std::filesystem::path& path() const { return path_; }
  // A path in the folder no earlier call gave, for a file or folder still to be made.
  std::filesystem::path newPath(const std::string& stem);

 private:
  std::filesystem::path path_;
  unsigned made_ = 0;
};

// Writes the members of `writer` as a new cabinet in `scratch` and gives it as a stream source;
// null with the reason when it cannot be written or read back.
std::shared_ptr<const storage::StreamSource> packCabinet(const CabinetWriter& writer,
                                                         ScratchFolder& scratch,
                                                         std::string& error);

// Where a new disk of files starts in a package: after the highest File sequence number and
// Media LastSequence, and after the highest Media DiskId.
struct MediaEnd {
  int lastSequence = 0;
  int lastDiskId = 0;
};
MediaEnd mediaEndOf(const engine::Database& package);

// The name of an embedded cabinet for disk `diskId` that `taken` says is free: "<stem><N>.cab"
// with the smallest N from `diskId` on.
template <typename Taken>
std::u16string freeCabinetName(std::u16string_view stem, int diskId, const Taken& taken) {
  std::u16string name;
  for (int n = diskId; name.empty() || taken(name); ++n) {
    name = stem;
    for (const char c : std::to_string(n))
      name += static_cast<char16_t>(c);
    name += u".cab";
  }
  return name;
}

}  // namespace odlex::package
