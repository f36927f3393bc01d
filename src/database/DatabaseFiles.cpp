#include "database/DatabaseFiles.h"

#include <filesystem>
#include <optional>
#include <system_error>

#include "odlex/support/Path.h"
#include "storage/FileSystem.h"

namespace odlex::database {

bool isSameFile(const TalString& a, const TalString& b) {
  storage::FileSystem& fs = storage::FileSystem::current();
  const std::optional<storage::FileStamp> first = fs.stampOf(path::ToFilesystem(a));
  const std::optional<storage::FileStamp> second = fs.stampOf(path::ToFilesystem(b));
  if (first && second)
    return first->device == second->device && first->inode == second->inode;
  return !first && !second && canonicalPathOf(a) == canonicalPathOf(b);
}

TalString canonicalPathOf(const TalString& path) {
  const std::filesystem::path given = path::ToFilesystem(path);
  std::error_code error;
  std::filesystem::path canonical = std::filesystem::weakly_canonical(given, error);
  if (error)
    canonical = std::filesystem::absolute(given, error).lexically_normal();
  return path::FromFilesystem(canonical);
}

void removeQuietly(const TalString& path) {
  std::string ignored;
  storage::FileSystem::current().remove(path::ToFilesystem(path), ignored);
}

bool copyReplacing(const TalString& from, const TalString& to) {
  std::string ignored;
  return storage::copyFileAtomically(storage::FileSystem::current(), path::ToFilesystem(from),
                                     path::ToFilesystem(to), ignored);
}

}  // namespace odlex::database
