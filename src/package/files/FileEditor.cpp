// Opening a package to change its files, and saving it.

#include "package/files/FileEditorState.h"
#include "package/files/FileLayout.h"

namespace engine = odlex::engine;
namespace storage = odlex::storage;

bool ODLEXPackageFileEditor::State::refresh(TalError& error) {
  engine::Error failure;
  if (odlex::package::resolveFiles(*database, files, failure))
    return true;
  error = TalError(failure.code, TalString::FromUtf8(failure.text));
  return false;
}

ODLEXPackageFileEditor::ODLEXPackageFileEditor(std::unique_ptr<State> state)
    : state_(std::move(state)) {}

ODLEXPackageFileEditor::~ODLEXPackageFileEditor() = default;

std::unique_ptr<ODLEXPackageFileEditor> ODLEXPackageFileEditor::Open(const TalString& package,
                                                                     const TalString& output,
                                                                     TalError& error) {
  const std::filesystem::path path = package.ToUtf8();
  auto state = std::make_unique<State>();
  engine::Error failure;
  storage::FileSystem& fs = storage::FileSystem::current();
  state->database =
      output.u16().empty()
          ? engine::Database::open(fs, path, engine::Database::OpenMode::kUpdate, failure)
          : engine::Database::openInto(fs, path, output.ToUtf8(), failure);
  if (!state->database) {
    error = TalError(failure.code, TalString::FromUtf8(failure.text), package);
    return nullptr;
  }
  state->folder = path.parent_path().empty() ? std::filesystem::path(".") : path.parent_path();
  if (!state->refresh(error))
    return nullptr;
  return std::unique_ptr<ODLEXPackageFileEditor>(new ODLEXPackageFileEditor(std::move(state)));
}

const std::vector<ODLEXPackageFile>& ODLEXPackageFileEditor::GetFiles() const {
  return state_->files;
}

bool ODLEXPackageFileEditor::Save(TalError& error) {
  engine::Error failure;
  if (state_->database->commit(failure) == engine::kSuccess)
    return true;
  error = TalError(failure.code, TalString::FromUtf8(failure.text),
                   TalString::FromUtf8(state_->database->path().string()));
  return false;
}
