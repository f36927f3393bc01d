// Replacing one file of a package: its embedded cabinet rewritten with the new bytes in the old
// member's place, and its rows made to describe the new bytes.

#include <algorithm>
#include <map>
#include <system_error>

#include "package/cabinet/Cabinet.h"
#include "package/files/FileEditorState.h"
#include "package/files/FileFacts.h"

namespace engine = odlex::engine;
namespace package = odlex::package;

namespace {

TalError failed(unsigned code, const TalString& file, const std::string& text) {
  return TalError(code, TalString::FromUtf8(text), file);
}

}  // namespace

bool ODLEXPackageFileEditor::ReplaceFile(const TalString& fileKey, const TalString& newFile,
                                         TalError& error) {
  const auto file = std::find_if(state_->files.begin(), state_->files.end(),
                                 [&](const ODLEXPackageFile& f) { return f.key == fileKey; });
  if (file == state_->files.end()) {
    error = failed(engine::kInvalidParameter, fileKey, "no such file in the package");
    return false;
  }
  if (file->source != ODLEXFileSource::kEmbeddedCabinet) {
    error = failed(engine::kFunctionFailed, fileKey,
                   "the file's bytes lie beside the package, not in it: replace that file on "
                   "disk, or compress the package first");
    return false;
  }
  package::FileFacts facts;
  if (!package::readFileFacts(newFile.ToUtf8(), facts, error))
    return false;

  engine::Database& database = *state_->database;
  const std::u16string cabinetName = file->cabinet.u16();
  engine::Error failure;
  std::string why;
  const auto source = database.streamSource(cabinetName, failure);
  if (!source) {
    error = failed(engine::kFileNotFound, file->cabinet, "no such cabinet stream in the package");
    return false;
  }
  const std::unique_ptr<package::CabinetReader> reader = package::CabinetReader::open(source, why);
  if (!reader) {
    error = failed(engine::kFunctionFailed, file->cabinet, why);
    return false;
  }
  const auto& members = reader->members();
  const std::string key = fileKey.ToUtf8();
  const auto replaced =
      std::find_if(members.begin(), members.end(),
                   [&](const package::CabinetMember& m) { return m.name == key; });
  if (replaced == members.end()) {
    error = failed(engine::kFileNotFound, fileKey, "the cabinet has no member for the file");
    return false;
  }

  // Every other member out, then all of them in again in their order.
  const std::size_t target = static_cast<std::size_t>(replaced - members.begin());
  const std::filesystem::path taken = state_->scratch.newPath("members");
  std::error_code ignored;
  if (state_->scratch.path().empty() || !std::filesystem::create_directory(taken, ignored)) {
    error = failed(engine::kFunctionFailed, file->cabinet, "no scratch folder can be made");
    return false;
  }
  std::map<std::size_t, std::filesystem::path> extracted;
  const bool read = reader->extract(
      taken, [&](std::size_t member) { return member != target; },
      [&](std::size_t member, const std::filesystem::path& path, std::string&) {
        extracted[member] = path;
        return true;
      },
      why);
  if (!read || extracted.size() + 1 != members.size()) {
    std::filesystem::remove_all(taken, ignored);
    error = failed(engine::kFunctionFailed, file->cabinet, "the cabinet cannot be read: " + why);
    return false;
  }
  package::CabinetWriter writer;
  for (std::size_t i = 0; i < members.size(); ++i)
    writer.add(members[i].name,
               i == target ? std::filesystem::path(newFile.ToUtf8()) : extracted.at(i));
  const auto packed = package::packCabinet(writer, state_->scratch, why);
  std::filesystem::remove_all(taken, ignored);
  if (!packed) {
    error = failed(engine::kFunctionFailed, file->cabinet, why);
    return false;
  }
  if (!package::recordFileFacts(database, fileKey.u16(), facts, error))
    return false;
  database.setStreamSource(cabinetName, packed);
  return state_->refresh(error);
}
