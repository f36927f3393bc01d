// Fuzz target: the input is a cabinet as a package holds it in a stream. Its entries are read,
// every stored name is put through the checks that place extracted files (they must give a
// path inside the folder or be refused), and when the members claim little enough data, all of
// them are decompressed. Damage must give an error, never a crash, hang or over-allocation.

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "odlex/support/TalString.h"
#include "package/cabinet/Cabinet.h"
#include "package/files/ExtractRoot.h"

namespace {

// Members are decompressed only when their sizes add up to no more than this, so that a header
// claiming gigabytes does not fill the disk.
constexpr std::uint64_t kMaxExtracted = 16 << 20;

// A folder of this process's own for the files the checks place, removed when the fuzzer exits.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "odlex-fuzz-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
      abort();
    path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

const std::filesystem::path& scratchFolder() {
  static const ScratchFolder folder;
  return folder.path();
}

void checkNames(const odlex::package::CabinetReader& reader, const std::filesystem::path& root) {
  odlex::package::ExtractRoot placed(root / "placed");
  std::string error;
  if (!placed.create(error))
    abort();
  for (const odlex::package::CabinetMember& member : reader.members()) {
    std::filesystem::path file;
    if (placed.claim(TalString::FromUtf8(member.name).u16(), file, error) != 0)
      continue;
    const std::string inside = placed.path().lexically_normal().string() + "/";
    if (!file.lexically_normal().string().starts_with(inside))
      abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::filesystem::path& root = scratchFolder();
  std::string error;
  std::unique_ptr<odlex::package::CabinetReader> reader = odlex::package::CabinetReader::open(
      odlex::storage::memorySource(std::vector<std::uint8_t>(data, data + size)), error);
  if (reader) {
    checkNames(*reader, root);
    std::uint64_t total = 0;
    for (const odlex::package::CabinetMember& member : reader->members())
      total += member.size;
    if (total <= kMaxExtracted) {
      std::filesystem::create_directories(root / "scratch");
      reader->extract(
          root / "scratch", [](std::size_t) { return true; },
          [](std::size_t, const std::filesystem::path& file, std::string&) {
            std::filesystem::remove(file);
            return true;
          },
          error);
    }
  }
  std::error_code ignored;
  std::filesystem::remove_all(root / "placed", ignored);
  std::filesystem::remove_all(root / "scratch", ignored);
  return 0;
}
