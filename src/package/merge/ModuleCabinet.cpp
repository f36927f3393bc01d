// Repacking a module's files into a cabinet of the package.

#include "package/merge/ModuleCabinet.h"

#include <stdlib.h>

#include <filesystem>
#include <map>
#include <system_error>

#include "msi/engine/Text.h"
#include "package/cabinet/Cabinet.h"
#include "storage/FileSystem.h"

namespace odlex::merge {

namespace {

constexpr char16_t kModuleCabinet[] = u"MergeModule.CABinet";

// A new folder under the system's temporary folder, removed with its files when it goes. A
// file still open (the new cabinet's source) stays readable until it is closed.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "odlex-merge-XXXXXX").string();
    if (mkdtemp(pattern.data()))
      path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    if (!path_.empty())
      std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

[[noreturn]] void fail(MergeLog& log, const std::string& reason) {
  log.stop(ODLEXDatabaseError::eMergeStep58, ODLEXMergeError::eFileCreate,
           engine::fromUtf8(reason));
}

}  // namespace

std::shared_ptr<const storage::StreamSource> repackFiles(const engine::Database& module,
                                                         const std::vector<std::u16string>& keys,
                                                         MergeLog& log) {
  engine::Error error;
  std::shared_ptr<const storage::StreamSource> stream = module.streamSource(kModuleCabinet, error);
  if (!stream)
    fail(log, "the module has files but no MergeModule.CABinet stream to take them from");
  std::string reason;
  const std::unique_ptr<package::CabinetReader> cabinet =
      package::CabinetReader::open(stream, reason);
  if (!cabinet)
    fail(log, "the module's cabinet cannot be read: " + reason);

  // The member of each file wanted (the first of a name that repeats).
  std::map<std::string, std::size_t> memberOf;
  for (std::size_t i = 0; i < cabinet->members().size(); ++i)
    memberOf.emplace(cabinet->members()[i].name, i);
  std::map<std::size_t, std::string> wanted;
  for (const std::u16string& key : keys) {
    const std::string name = engine::toUtf8(key);
    const auto found = memberOf.find(name);
    if (found == memberOf.end())
      fail(log, "the module's cabinet has no file " + name);
    wanted[found->second] = name;
  }

  ScratchFolder scratch;
  if (scratch.path().empty())
    fail(log, "no scratch folder can be made for the module's files");
  std::map<std::string, std::filesystem::path> extracted;
  const bool taken = cabinet->extract(
      scratch.path(), [&](std::size_t member) { return wanted.count(member) > 0; },
      [&](std::size_t member, const std::filesystem::path& file, std::string&) {
        extracted[wanted.at(member)] = file;
        return true;
      },
      reason);
  if (!taken || extracted.size() != wanted.size())
    fail(log, "the module's files cannot be taken from its cabinet: " + reason);

  package::CabinetWriter writer;
  for (const std::u16string& key : keys) {
    const std::string name = engine::toUtf8(key);
    writer.add(name, extracted.at(name));
  }
  const std::filesystem::path packed = scratch.path() / "files.cab";
  if (!writer.write(packed, reason))
    fail(log, "the cabinet of the module's files cannot be written: " + reason);
  std::shared_ptr<const storage::StreamSource> source =
      storage::fileSource(storage::FileSystem::real(), packed, reason);
  if (!source)
    fail(log, "the cabinet of the module's files cannot be read back: " + reason);
  return source;
}

}  // namespace odlex::merge
