// Administrative images: the files in the source layout, and a copy of the package that says
// they are there.

#include "msi/engine/Database.h"
#include "odlex/database/ODLEXDatabase.h"
#include "package/files/ExtractRoot.h"
#include "package/files/FileLayout.h"
#include "package/files/FileWriting.h"
#include "package/files/PackageFilesState.h"
#include "package/files/TableColumns.h"

namespace odlex::package {

namespace {

// The package's copy for the image: Media rows without cabinets, File rows without the
// Compressed attribute, no embedded cabinets, and the image's word count.
void makeImagePackage(engine::Database& image, int wordCount) {
  if (engine::Table* media = image.findTable(u"Media")) {
    const int cabinet = media->columnIndex(u"Cabinet");
    for (std::size_t row = 0; cabinet >= 0 && row < media->rowCount(); ++row) {
      const std::u16string_view name = media->text(image.strings(), row, cabinet);
      if (name.starts_with(u'#'))
        image.removeStream(name.substr(1));
      media->setCell(row, cabinet, 0);
    }
  }
  if (engine::Table* files = image.findTable(u"File")) {
    const int attributes = files->columnIndex(u"Attributes");
    for (std::size_t row = 0; attributes >= 0 && row < files->rowCount(); ++row) {
      if (!files->isNull(row, attributes))
        files->setCell(
            row, attributes,
            static_cast<std::uint32_t>(files->integer(row, attributes) & ~kFileCompressed));
    }
  }
  storage::SummaryInformation summary = image.summary().value_or(storage::SummaryInformation{});
  summary.properties[storage::kPidWordCount] =
      storage::SummaryValue{storage::SummaryValue::kInteger, wordCount, {}, 0};
  image.setSummary(std::move(summary));
}

}  // namespace

}  // namespace odlex::package

bool ODLEXPackageFiles::MakeAdministrativeImage(const TalString& directory,
                                                std::vector<TalError>& problems) {
  using namespace odlex::package;
  namespace engine = odlex::engine;
  const std::size_t before = problems.size();
  const int wordCount = kSourceAdminImage | (wordCountOf(*state_->database) & kSourceNoElevation);
  std::vector<ODLEXPackageFile> layout;
  engine::Error failure;
  if (!resolveFiles(*state_->database, layout, failure, wordCount)) {
    problems.push_back(problem(failure.code, directory, failure.text));
    return false;
  }
  std::vector<std::pair<const ODLEXPackageFile*, std::u16string>> chosen;
  for (std::size_t i = 0; i < files_.size(); ++i)
    chosen.emplace_back(&files_[i], layout[i].sourcePath.u16());
  ExtractRoot root(directory.ToUtf8());
  std::string error;
  if (!root.create(error)) {
    problems.push_back(problem(engine::kCreateFailed, directory, error));
    return false;
  }
  std::filesystem::path imagePath;
  const TalString name = TalString::FromUtf8(state_->path.filename().string());
  if (const std::uint32_t code = root.claim(name.u16(), imagePath, error)) {
    problems.push_back(problem(code, name, error));
    return false;
  }
  writeFiles(*state_->database, state_->folder, root, chosen, problems);
  if (problems.size() != before)
    return false;
  std::unique_ptr<engine::Database> image = engine::Database::openInto(
      odlex::storage::FileSystem::current(), state_->path, imagePath, failure);
  if (image) {
    makeImagePackage(*image, wordCount);
    if (image->commit(failure) == engine::kSuccess)
      return true;
  }
  problems.push_back(problem(failure.code, name, failure.text));
  return false;
}

bool ODLEXDatabase::MakeAdministrativeImage(const TalString& packagePath,
                                            const TalString& directory) {
  TalError error;
  std::unique_ptr<ODLEXPackageFiles> files = ODLEXPackageFiles::Open(packagePath, error);
  std::vector<TalError> problems;
  return files && files->MakeAdministrativeImage(directory, problems);
}
