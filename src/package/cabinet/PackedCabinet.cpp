// New cabinets written through a scratch folder, and the numbers of a package's next disk.

#include "package/cabinet/PackedCabinet.h"

#include <stdlib.h>

#include <algorithm>
#include <system_error>

#include "storage/FileSystem.h"

namespace odlex::package {

ScratchFolder::ScratchFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "odlex-cabinet-XXXXXX").string();
  if (mkdtemp(pattern.data()))
    path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  if (!path_.empty())
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path ScratchFolder::newPath(const std::string& stem) {
  return path_ / (stem + "-" + std::to_string(++made_));
}

std::shared_ptr<const storage::StreamSource> packCabinet(const CabinetWriter& writer,
                                                         ScratchFolder& scratch,
                                                         std::string& error) {
  if (scratch.path().empty()) {
    error = "no scratch folder can be made for the new cabinet";
    return nullptr;
  }
  const std::filesystem::path packed = scratch.newPath("packed.cab");
  if (!writer.write(packed, error))
    return nullptr;
  return storage::fileSource(storage::FileSystem::current(), packed, error);
}

MediaEnd mediaEndOf(const engine::Database& package) {
  MediaEnd end;
  const auto highest = [&](std::u16string_view table, std::u16string_view column, int& out) {
    const engine::Table* held = package.findTable(table);
    const int index = held ? held->columnIndex(column) : -1;
    if (index < 0 || !held->columns()[static_cast<std::size_t>(index)].isInteger())
      return;
    for (std::size_t row = 0; row < held->rowCount(); ++row) {
      if (!held->isNull(row, static_cast<std::size_t>(index)))
        out = std::max(out, held->integer(row, static_cast<std::size_t>(index)));
    }
  };
  highest(u"File", u"Sequence", end.lastSequence);
  highest(u"Media", u"LastSequence", end.lastSequence);
  highest(u"Media", u"DiskId", end.lastDiskId);
  return end;
}

}  // namespace odlex::package
