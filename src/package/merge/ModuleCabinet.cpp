// Repacking a module's files into a cabinet of the package.

#include "package/merge/ModuleCabinet.h"

#include <filesystem>
#include <map>

#include "msi/engine/Text.h"
#include "package/cabinet/PackedCabinet.h"

namespace odlex::merge {

namespace {

constexpr char16_t kModuleCabinet[] = u"MergeModule.CABinet";

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

  package::ScratchFolder scratch;
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
  std::shared_ptr<const storage::StreamSource> source =
      package::packCabinet(writer, scratch, reason);
  if (!source)
    fail(log, "the cabinet of the module's files cannot be written: " + reason);
  return source;
}

}  // namespace odlex::merge
