// Opening, re-opening, closing and committing a database, and its error list.

#include <odlex/msi/MSIDatabase.h>

#include "msi/engine/Database.h"
#include "msi/lower/PathText.h"
#include "storage/SummaryInformation.h"

namespace engine = odlex::engine;
using odlex::lower::toPath;

namespace {

bool isCreate(MSIDatabase::ePersistMode mode) {
  return mode == MSIDatabase::ePersistCreate || mode == MSIDatabase::ePersistCreateDirect;
}

bool isKnownMode(int mode) {
  return mode >= MSIDatabase::ePersistTransact && mode <= MSIDatabase::ePersistCreateDirect;
}

// A new database declares its schema version in the summary information, as the installer
// does when it creates one.
void declareSchema(engine::Database& db, eSchemaVersion schema) {
  if (schema == eSchemaNone)
    return;
  odlex::storage::SummaryInformation info;
  odlex::storage::SummaryValue pageCount;
  pageCount.integer = schema;
  info.properties[odlex::storage::kPidPageCount] = pageCount;
  db.setSummary(std::move(info));
}

}  // namespace

MSIDatabase::MSIDatabase(eSchemaVersion schema) : schema_(schema) {}

MSIDatabase::MSIDatabase(const TalString& path, ePersistMode mode, eSchemaVersion schema)
    : schema_(schema) {
  open(path, mode);
}

MSIDatabase::~MSIDatabase() = default;

unsigned MSIDatabase::open(const TalString& path, ePersistMode mode) {
  inPath_ = TalString();
  path_ = path;
  mode_ = mode;
  committedOutput_ = false;
  return startEngine(false);
}

unsigned MSIDatabase::open(const TalString& in, const TalString& out) {
  inPath_ = in;
  path_ = out;
  mode_ = ePersistDirect;
  committedOutput_ = false;
  if (in.isNull()) {
    close(false);
    return fail(engine::kBadPathname, u"open", "no source file name given");
  }
  return startEngine(false);
}

unsigned MSIDatabase::open() {
  if (path_.isNull())
    return fail(engine::kInvalidHandle, u"open", "no file has been opened to open again");
  return startEngine(true);
}

unsigned MSIDatabase::startEngine(bool reopen) {
  engine_.reset();
  ++generation_;
  if (!isKnownMode(mode_))
    return fail(
        engine::kInvalidParameter, u"open",
        "persist mode " + std::to_string(static_cast<int>(mode_)) + " is not one of 1 to 5");
  if (path_.isNull())
    return fail(engine::kBadPathname, u"open", "no file name given");

  engine::Error error;
  odlex::storage::FileSystem& fs = odlex::storage::FileSystem::current();
  const std::filesystem::path target = toPath(path_);
  if (!inPath_.isNull() && !committedOutput_) {
    engine_ = engine::Database::openInto(fs, toPath(inPath_), target, error);
  } else if (isCreate(mode_) && !(reopen && fs.exists(target))) {
    engine_ = engine::Database::open(fs, target, engine::Database::OpenMode::kCreate, error);
    if (engine_)
      declareSchema(*engine_, schema_);
  } else {
    const auto openMode = mode_ == ePersistReadOnly ? engine::Database::OpenMode::kReadOnly
                                                    : engine::Database::OpenMode::kUpdate;
    engine_ = engine::Database::open(fs, target, openMode, error);
  }
  if (!engine_)
    return fail(error.code, u"open", error.text);
  return engine::kSuccess;
}

unsigned MSIDatabase::close(bool commitChanges) {
  unsigned result = engine::kSuccess;
  if (commitChanges && engine_ && !engine_->readOnly())
    result = commit();
  engine_.reset();
  ++generation_;
  return result;
}

unsigned MSIDatabase::commit() {
  if (unsigned code = requireOpen(u"commit"))
    return code;
  engine::Error error;
  if (engine_->commit(error) != engine::kSuccess)
    return fail(error.code, u"commit", error.text);
  if (!inPath_.isNull())
    committedOutput_ = true;
  return engine::kSuccess;
}

bool MSIDatabase::committedUnchanged() const {
  return engine_ && engine_->committedUnchanged();
}

bool MSIDatabase::isValid() const {
  return engine_ != nullptr;
}

bool MSIDatabase::isReadOnly() const {
  return engine_ && engine_->readOnly();
}

TalError* MSIDatabase::GetError() {
  if (errors_.empty())
    return nullptr;
  taken_ = std::move(errors_.front());
  errors_.pop_front();
  return &taken_;
}

void MSIDatabase::ClearErrors() {
  errors_.clear();
}

void MSIDatabase::AddError(TalError error) {
  errors_.push_back(std::move(error));
}

unsigned MSIDatabase::fail(unsigned code, const char16_t* operation, const std::string& text) {
  AddError(TalError(code, TalString(operation) + u": " + TalString::FromUtf8(text), operation));
  return code;
}

unsigned MSIDatabase::requireOpen(const char16_t* operation) {
  return engine_ ? engine::kSuccess
                 : fail(engine::kInvalidHandle, operation, "the database is not open");
}

unsigned MSIDatabase::requireWritable(const char16_t* operation) {
  if (unsigned code = requireOpen(operation))
    return code;
  return engine_->readOnly()
             ? fail(engine::kAccessDenied, operation, path_.ToUtf8() + " is open read-only")
             : engine::kSuccess;
}
