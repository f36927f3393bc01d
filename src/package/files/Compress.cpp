// Compressing a package: every file's bytes into one new embedded cabinet, the tables and the
// summary saying so.

#include <algorithm>
#include <map>
#include <system_error>

#include "package/files/FileEditorState.h"
#include "package/files/FileLayout.h"
#include "package/files/FileWriting.h"
#include "package/files/TableCells.h"

namespace engine = odlex::engine;
namespace package = odlex::package;
namespace storage = odlex::storage;

namespace {

// The File rows renumbered by `numbers` (key to new sequence number), without the attributes
// that place a file in or out of a cabinet.
void renumberFiles(engine::Database& database, const std::map<std::u16string, int>& numbers) {
  engine::Table* files = database.findTable(u"File");
  const int key = files ? files->columnIndex(u"File") : -1;
  const int attributes = files ? files->columnIndex(u"Attributes") : -1;
  for (std::size_t row = 0; key >= 0 && row < files->rowCount(); ++row) {
    const std::u16string name(files->text(database.strings(), row, static_cast<std::size_t>(key)));
    package::setInteger(*files, row, u"Sequence", numbers.at(name));
    if (attributes >= 0 && !files->isNull(row, static_cast<std::size_t>(attributes)))
      package::setInteger(*files, row, u"Attributes",
                          files->integer(row, static_cast<std::size_t>(attributes)) &
                              ~(package::kFileCompressed | package::kFileNoncompressed));
  }
}

// One Media row for the cabinet `stream` holding files 1 to `last`; the old embedded cabinets
// removed.
void replaceMedia(engine::Database& database, engine::Table& media,
                  std::shared_ptr<const storage::StreamSource> cabinet, int last) {
  const int column = media.columnIndex(u"Cabinet");
  for (std::size_t row = 0; column >= 0 && row < media.rowCount(); ++row) {
    const std::u16string_view name =
        media.text(database.strings(), row, static_cast<std::size_t>(column));
    if (name.starts_with(u'#'))
      database.removeStream(name.substr(1));
  }
  media.clearRows();
  const std::u16string stream = package::freeCabinetName(
      u"files", 1, [&](const std::u16string& name) { return database.hasStream(name); });
  database.setStreamSource(stream, std::move(cabinet));
  const std::size_t row = media.addRow();
  package::setInteger(media, row, u"DiskId", 1);
  package::setInteger(media, row, u"LastSequence", last);
  package::setText(database, media, row, u"Cabinet", u"#" + stream);
}

}  // namespace

bool ODLEXPackageFileEditor::Compress(TalError& error) {
  engine::Database& database = *state_->database;
  std::vector<const ODLEXPackageFile*> ordered;
  for (const ODLEXPackageFile& file : state_->files)
    ordered.push_back(&file);
  if (ordered.empty() || package::isMergeModule(database)) {
    error = TalError(engine::kInvalidParameter,
                     TalString(ordered.empty() ? u"the package has no files"
                                               : u"a merge module's files are in its own cabinet"));
    return false;
  }
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const ODLEXPackageFile* a, const ODLEXPackageFile* b) {
                     return a->sequence < b->sequence;
                   });

  // Every file out, each under its number in a scratch folder.
  const std::filesystem::path folder = state_->scratch.newPath("files");
  package::ExtractRoot root(folder);
  std::string why;
  if (state_->scratch.path().empty() || !root.create(why)) {
    error = TalError(engine::kFunctionFailed, TalString(u"no scratch folder can be made"));
    return false;
  }
  std::vector<package::ChosenFile> chosen;
  for (std::size_t i = 0; i < ordered.size(); ++i)
    chosen.emplace_back(ordered[i], TalString::FromUtf8(std::to_string(i + 1)).u16());
  std::vector<TalError> problems;
  package::writeFiles(database, state_->folder, root, chosen, problems);
  std::error_code ignored;
  if (!problems.empty()) {
    std::filesystem::remove_all(folder, ignored);
    error = problems.front();
    return false;
  }
  package::CabinetWriter writer;
  std::map<std::u16string, int> numbers;
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    writer.add(ordered[i]->key.ToUtf8(), folder / std::to_string(i + 1));
    numbers[ordered[i]->key.u16()] = static_cast<int>(i + 1);
  }
  const auto cabinet = package::packCabinet(writer, state_->scratch, why);
  std::filesystem::remove_all(folder, ignored);
  engine::Table* media = cabinet ? package::standardTable(database, u"Media", error) : nullptr;
  if (!cabinet) {
    error = TalError(engine::kFunctionFailed, TalString::FromUtf8(why));
    return false;
  }
  if (!media)
    return false;

  renumberFiles(database, numbers);
  replaceMedia(database, *media, cabinet, static_cast<int>(ordered.size()));
  storage::SummaryInformation summary = database.summary().value_or(storage::SummaryInformation{});
  summary.properties[storage::kPidWordCount] = storage::SummaryValue{
      storage::SummaryValue::kInteger,
      package::kSourceCompressed | (package::wordCountOf(database) & package::kSourceNoElevation),
      {},
      0};
  database.setSummary(std::move(summary));
  return state_->refresh(error);
}
