// Generating, applying and embedding transforms on the engine database behind this object.

#include "msi/engine/Database.h"
#include "msi/engine/Text.h"
#include "msi/transform/Transform.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTables.h"
#include "storage/FileSystem.h"

namespace {

using odlex::engine::Database;
using odlex::engine::Error;

std::filesystem::path pathOf(const TalString& path) {
  return path.ToUtf8();
}

TalString textOf(const std::string& text) {
  return TalString::FromUtf8(text);
}

}  // namespace

TalString ODLEXDatabase::GetTransformPath() const {
  return transformPath_.isNull() ? ChangeFilePathToExt(GetDatabasePath(), u".mst") : transformPath_;
}

// A transform is only made while working on a separate, writable copy of the file.
void ODLEXDatabase::SetCreatingTransform(bool creating) {
  if (creating && (readOnly_ || GetFilePath() == GetDatabasePath()))
    throw ODLEXDatabaseError(ODLEXDatabaseError::eCannotCreateTransform);
  creatingTransform_ = creating;
}

bool ODLEXDatabase::GenerateTransform(const TalString& basePath, const TalString& transformPath,
                                      int errorConditions, int validation) {
  Database* target = database_.engineDatabase();
  if (!target)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eGenerateTransformFailed);
  odlex::storage::FileSystem& fs = odlex::storage::FileSystem::current();
  Error error;
  auto base = Database::open(fs, pathOf(basePath), Database::OpenMode::kReadOnly, error);
  if (!base) {
    database_.AddError(TalError(error.code, textOf(error.text), u"GenerateTransform"));
    throw ODLEXDatabaseError(ODLEXDatabaseError::eGenerateTransformFailed);
  }
  PersistTables();
  const odlex::transform::TransformOptions options{static_cast<std::uint32_t>(errorConditions),
                                                   static_cast<std::uint32_t>(validation)};
  odlex::storage::CompoundNode transform;
  bool differs = false;
  if (!odlex::transform::generateTransform(*base, *target, options, transform, differs, error) ||
      (differs &&
       !odlex::transform::writeTransformFile(fs, pathOf(transformPath), transform, error))) {
    database_.AddError(TalError(error.code, textOf(error.text), u"GenerateTransform"));
    throw ODLEXDatabaseErrorWithErrorCode(ODLEXDatabaseError::eTransformServiceFailed, error.code);
  }
  return differs;
}

bool ODLEXDatabase::GenerateTransformFromUIInstall(const TalString& transformPath,
                                                   int errorConditions, int validation) {
  try {
    return GenerateTransform(GetFilePath(), transformPath, errorConditions, validation);
  } catch (const ODLEXDatabaseErrorWithErrorCode&) {
    throw;
  } catch (const ODLEXDatabaseError&) {
    throw ODLEXDatabaseErrorWithErrorCode(ODLEXDatabaseError::eTransformServiceFailed,
                                          odlex::engine::kOpenFailed);
  }
}

void ODLEXDatabase::ApplyTransform(const TalString& transform, int errorConditions) {
  Database* db = database_.engineDatabase();
  auto fail = [this](const Error& error) {
    database_.AddError(TalError(error.code, textOf(error.text), u"ApplyTransform"));
    throw ODLEXDatabaseError(ODLEXDatabaseError::eApplyTransformFailed);
  };
  if (!db)
    fail(Error{odlex::engine::kInvalidHandle, "the database is not open"});
  Error error;
  odlex::storage::CompoundNode tree;
  const std::u16string& name = transform.u16();
  if (name.starts_with(u':')
          ? !db->readStorage(name.substr(1), tree, error)
          : !odlex::transform::readTransformFile(odlex::storage::FileSystem::current(),
                                                 pathOf(transform), tree, error))
    fail(error);
  PersistTables();
  odlex::transform::DecodedTransform decoded;
  if (!odlex::transform::decodeTransform(tree, *db, decoded, error))
    fail(error);
  const auto flags = static_cast<std::uint32_t>(errorConditions);
  if (flags & odlex::transform::kViewTransform) {
    auto* view = static_cast<MSIT_TransformView*>(Get_TransformView().GetLowerTable());
    for (const auto& row : odlex::transform::transformViewRows(decoded, *db))
      view->Add(row.table, row.column, row.row, row.data, row.current);
    return;
  }
  std::vector<odlex::transform::Conflict> conflicts;
  const std::uint32_t result =
      odlex::transform::applyTransform(*db, decoded, flags, conflicts, error);
  for (const auto& conflict : conflicts) {
    database_.AddError(TalError(odlex::engine::kTransformFailure,
                                textOf((conflict.suppressed ? "skipped: " : "") + conflict.text),
                                u"ApplyTransform"));
  }
  if (result != odlex::engine::kSuccess)
    fail(error);
  // The table objects read their rows again from the changed tables.
  for (auto& table : tableObjects_) {
    if (table) {
      table->Unload();
      table->Load(*this);
    }
  }
  AcquireDatabaseInfo();
  SetModified(true);
}

void ODLEXDatabase::EmbedTransform(const TalString& transformPath, const TalString& name) {
  Database* db = database_.engineDatabase();
  Error error;
  odlex::storage::CompoundNode tree;
  odlex::transform::DecodedTransform decoded;
  if (!db ||
      !odlex::transform::readTransformFile(odlex::storage::FileSystem::current(),
                                           pathOf(transformPath), tree, error) ||
      !odlex::transform::decodeTransform(tree, *db, decoded, error)) {
    database_.AddError(TalError(error.code, textOf(error.text), u"EmbedTransform"));
    throw ODLEXDatabaseError(ODLEXDatabaseError::eApplyTransformFailed);
  }
  db->setStorage(name.u16(), std::move(tree));
  SetModified(true);
}
