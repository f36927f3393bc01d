// Adding files to a component: File rows with made keys and short names, their bytes in a new
// embedded cabinet on a disk of their own.

#include <algorithm>
#include <set>

#include "msi/directory/FileNames.h"
#include "package/files/FileEditorState.h"
#include "package/files/FileFacts.h"
#include "package/files/FileLayout.h"
#include "package/files/TableCells.h"
#include "package/files/TableColumns.h"

namespace engine = odlex::engine;
namespace package = odlex::package;

namespace {

constexpr int kLastSequence = 32767;  // the largest sequence number and disk id

TalError failed(unsigned code, const TalString& subject, const std::string& text) {
  return TalError(code, TalString::FromUtf8(text), subject);
}

// The names of the files already in `directory`.
odlex::directory::FolderFileNames namesIn(const engine::Database& database,
                                          std::u16string_view directory) {
  std::set<std::u16string> owners;
  if (const engine::Table* table = database.findTable(u"Component")) {
    const package::TableColumns components(database, *table);
    for (std::size_t row = 0; row < components.rows(); ++row) {
      if (components.text(row, u"Directory_") == directory)
        owners.emplace(components.text(row, u"Component"));
    }
  }
  odlex::directory::FolderFileNames names;
  if (const engine::Table* table = database.findTable(u"File")) {
    const package::TableColumns files(database, *table);
    for (std::size_t row = 0; row < files.rows(); ++row) {
      if (owners.count(std::u16string(files.text(row, u"Component_"))))
        names.add(files.text(row, u"FileName"));
    }
  }
  return names;
}

}  // namespace

bool ODLEXPackageFileEditor::AddFiles(const TalString& component,
                                      const std::vector<TalString>& files,
                                      std::vector<TalString>& keys, TalError& error) {
  engine::Database& database = *state_->database;
  const engine::Table* components = database.findTable(u"Component");
  const std::optional<std::size_t> componentRow =
      components ? package::rowWithKey(database, *components, component.u16()) : std::nullopt;
  if (package::isMergeModule(database)) {
    error = failed(engine::kInvalidParameter, component,
                   "a merge module keeps its files in its own cabinet, not on disks");
    return false;
  }
  if (!componentRow || files.empty()) {
    error = failed(engine::kInvalidParameter, component,
                   files.empty() ? "no files to add" : "no such component in the package");
    return false;
  }
  const int directoryColumn = components->columnIndex(u"Directory_");
  const std::u16string directory(directoryColumn < 0
                                     ? std::u16string_view()
                                     : components->text(database.strings(), *componentRow,
                                                        static_cast<std::size_t>(directoryColumn)));

  // Everything about the new files first, so that a failure changes nothing.
  struct NewFile {
    std::filesystem::path path;
    std::u16string key;
    std::u16string fileName;
    package::FileFacts facts;
  };
  std::vector<NewFile> added;
  std::set<std::u16string> takenKeys;
  for (const ODLEXPackageFile& file : state_->files)
    takenKeys.insert(file.key.u16());
  odlex::directory::FolderFileNames names = namesIn(database, directory);
  for (const TalString& host : files) {
    NewFile file;
    file.path = host.ToUtf8();
    if (!package::readFileFacts(file.path, file.facts, error))
      return false;
    const std::u16string longName = TalString::FromUtf8(file.path.filename().string()).u16();
    auto fileName = names.addNew(longName);
    if (!fileName) {
      error = TalError(engine::kInvalidParameter, TalString(fileName.error()), host);
      return false;
    }
    file.fileName = std::move(*fileName);
    file.key = odlex::directory::makeFileKey(longName, [&](std::u16string_view key) {
      return takenKeys.count(std::u16string(key)) > 0;
    });
    takenKeys.insert(file.key);
    added.push_back(std::move(file));
  }
  const package::MediaEnd end = package::mediaEndOf(database);
  const int diskId = end.lastDiskId + 1;
  if (end.lastSequence + static_cast<std::int64_t>(added.size()) > kLastSequence ||
      diskId > kLastSequence) {
    error = failed(engine::kFunctionFailed, component, "no sequence numbers are left");
    return false;
  }
  package::CabinetWriter writer;
  for (const NewFile& file : added)
    writer.add(TalString(file.key).ToUtf8(), file.path);
  std::string why;
  const auto cabinet = package::packCabinet(writer, state_->scratch, why);
  if (!cabinet) {
    error = failed(engine::kFunctionFailed, component, why);
    return false;
  }
  const bool hashed = std::any_of(added.begin(), added.end(),
                                  [](const NewFile& file) { return !file.facts.version; });
  engine::Table* fileTable = package::standardTable(database, u"File", error);
  engine::Table* media = fileTable ? package::standardTable(database, u"Media", error) : nullptr;
  if (!media || (hashed && !package::standardTable(database, u"MsiFileHash", error)))
    return false;

  const int attributes = package::attributesInCabinet(database, 0);
  int sequence = end.lastSequence;
  keys.clear();
  for (const NewFile& file : added) {
    const std::size_t row = fileTable->addRow();
    package::setText(database, *fileTable, row, u"File", file.key);
    package::setText(database, *fileTable, row, u"Component_", component.u16());
    package::setText(database, *fileTable, row, u"FileName", file.fileName);
    package::setInteger(*fileTable, row, u"Attributes", attributes);
    package::setInteger(*fileTable, row, u"Sequence", ++sequence);
    package::recordFileFacts(database, file.key, file.facts, error);
    keys.emplace_back(file.key);
  }
  const std::u16string stream = package::freeCabinetName(
      u"added", diskId, [&](const std::u16string& name) { return database.hasStream(name); });
  database.setStreamSource(stream, cabinet);
  const std::size_t row = media->addRow();
  package::setInteger(*media, row, u"DiskId", diskId);
  package::setInteger(*media, row, u"LastSequence", sequence);
  package::setText(database, *media, row, u"Cabinet", u"#" + stream);
  return state_->refresh(error);
}
