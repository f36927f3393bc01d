// Opening a package for its files and extracting them.

#include <algorithm>

#include "odlex/package/ODLEXPackageFiles.h"
#include "package/files/ExtractRoot.h"
#include "package/files/FileLayout.h"
#include "package/files/FileWriting.h"
#include "package/files/PackageFilesState.h"

using odlex::package::problem;

namespace {

using odlex::engine::Database;
namespace engine = odlex::engine;
namespace storage = odlex::storage;

}  // namespace

ODLEXPackageFiles::ODLEXPackageFiles(std::unique_ptr<State> state) : state_(std::move(state)) {}

ODLEXPackageFiles::~ODLEXPackageFiles() = default;

std::unique_ptr<ODLEXPackageFiles> ODLEXPackageFiles::Open(const TalString& package,
                                                           TalError& error) {
  const std::filesystem::path path = package.ToUtf8();
  auto state = std::make_unique<State>();
  engine::Error failure;
  state->database =
      Database::open(storage::FileSystem::current(), path, Database::OpenMode::kReadOnly, failure);
  if (state->database) {
    state->path = path;
    state->folder = path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
    std::unique_ptr<ODLEXPackageFiles> files(new ODLEXPackageFiles(std::move(state)));
    if (odlex::package::resolveFiles(*files->state_->database, files->files_, failure))
      return files;
  }
  error = TalError(failure.code, TalString::FromUtf8(failure.text), package);
  return nullptr;
}

bool ODLEXPackageFiles::Extract(const TalString& directory, const ODLEXExtractOptions& options,
                                std::vector<TalError>& problems) {
  const std::size_t before = problems.size();
  std::vector<std::pair<const ODLEXPackageFile*, std::u16string>> chosen;
  auto choose = [&](const ODLEXPackageFile& file) {
    std::u16string relative = file.targetPath.u16();
    if (options.flat && !relative.empty())
      relative = relative.substr(relative.rfind(u'/') + 1);
    chosen.emplace_back(&file, std::move(relative));
  };
  if (options.fileKeys.empty()) {
    for (const ODLEXPackageFile& file : files_)
      choose(file);
  } else {
    for (const TalString& key : options.fileKeys) {
      const auto found =
          std::find_if(files_.begin(), files_.end(),
                       [&](const ODLEXPackageFile& file) { return file.key == key; });
      if (found == files_.end())
        problems.push_back(problem(engine::kInvalidParameter, key, "no such file in the package"));
      else
        choose(*found);
    }
  }
  odlex::package::ExtractRoot root(directory.ToUtf8());
  std::string error;
  if (!root.create(error)) {
    problems.push_back(problem(engine::kCreateFailed, directory, error));
    return false;
  }
  odlex::package::writeFiles(*state_->database, state_->folder, root, chosen, problems);
  if (options.binary)
    odlex::package::writeBinaryStreams(*state_->database, state_->folder, root, problems);
  return problems.size() == before;
}
