// Class-wide settings of the database class: start-up, directories, the message catalog, the
// host's callbacks and progress sinks.

#include <algorithm>
#include <span>

#include "database/MessageCatalog.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/package/ODLEXMergeErrors.h"
#include "odlex/support/DebugOutput.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "tables/TableRegistry.h"

RWFactory* ODLEXDatabase::factory = nullptr;
unsigned ODLEXDatabase::initCalls = 0;
// Fixed by the library's table types, known before INIT.
unsigned ODLEXDatabase::totalODLEXTObjects = odlex::tables::kTableObjectClasses;
unsigned ODLEXDatabase::nonODLEXRWCollectables = 0;
TalString ODLEXDatabase::programDirectory;
TalString ODLEXDatabase::currentDirectory;
TalString ODLEXDatabase::schemaPath;
TalString ODLEXDatabase::orvaneCustomActionDLL;
std::unique_ptr<SingleProgress> ODLEXDatabase::singleProgress;
std::unique_ptr<DualProgress> ODLEXDatabase::dualProgress;
bool (*ODLEXDatabase::userPermits)() = nullptr;
bool (*ODLEXDatabase::copySingleFile)(const TalString&, const TalString&) = nullptr;
bool (*ODLEXDatabase::autoUpdatePackageCode)() = nullptr;
std::unique_ptr<ODLEXMergeErrors> ODLEXDatabase::merge_errors;

namespace {

// Above this many classes the factory's table is grown, so that lookups by class id stay short.
constexpr unsigned kFactoryComfortableEntries = 64;

}  // namespace

void ODLEXDatabase::INIT() {
  if (initCalls++ > 0)
    return;
  databaseList.clear();
  factory = getRWFactory();
  if (!factory)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eNoFactory);
  // The table-object classes (and the ODLEXTObject base) registered with the factory when the
  // library was loaded; the rest of the factory's entries are other collectables.
  odlex::tables::registeredTableClasses();
  const unsigned entries = static_cast<unsigned>(factory->entries());
  nonODLEXRWCollectables = entries - std::min(entries, totalODLEXTObjects);
  if (totalODLEXTObjects + nonODLEXRWCollectables > kFactoryComfortableEntries)
    factory->resize(factory->buckets() * (nonODLEXRWCollectables + totalODLEXTObjects));
}

void ODLEXDatabase::SetResources(TalString path) {
  messageCatalog.reset();
  std::string why;
  std::optional<std::string> bytes = odlex::database::readCatalogFile(path, why);
  if (bytes) {
    const std::span<const unsigned char> data(reinterpret_cast<const unsigned char*>(bytes->data()),
                                              bytes->size());
    if (auto catalog = odlex::database::MessageCatalog::Parse(data, why)) {
      messageCatalog = std::make_unique<odlex::database::MessageCatalog>(std::move(*catalog));
      return;
    }
  }
  odlex::DebugOutput::write(u"ODLEX: SetResources: " + path + u": " + TalString::FromUtf8(why) +
                            u"\r\n");
}

void ODLEXDatabase::SetSchemaCAB(const TalString& path) {
  schemaPath = path;
}

void ODLEXDatabase::SetProgramDir(const TalString& path) {
  programDirectory = path;
}

const TalString& ODLEXDatabase::GetProgramDirectory() {
  return programDirectory;
}

void ODLEXDatabase::SetCurrentDirectoryW(const TalString& path) {
  currentDirectory = path;
}

const TalString& ODLEXDatabase::GetCurrentDirectoryW() {
  return currentDirectory;
}

// The library owns a sink once it is set; setting the sink already held keeps it.
void ODLEXDatabase::SetSingleProgress(SingleProgress* progress) {
  if (progress != singleProgress.get())
    singleProgress.reset(progress);
}

void ODLEXDatabase::SetDualProgress(DualProgress* progress) {
  if (progress != dualProgress.get())
    dualProgress.reset(progress);
}

void ODLEXDatabase::ClearSingleProgress() {
  singleProgress.reset();
}

void ODLEXDatabase::ClearDualProgress() {
  dualProgress.reset();
}

SingleProgress& ODLEXDatabase::GetSingleProgress() {
  if (!singleProgress)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eNoProgressSink);
  return *singleProgress;
}

DualProgress& ODLEXDatabase::GetDualProgress() {
  if (!dualProgress)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eNoProgressSink);
  return *dualProgress;
}

void ODLEXDatabase::SetCopySingleFile(bool (*copy)(const TalString& from, const TalString& to)) {
  copySingleFile = copy;
}

// Without a host callback nothing is copied and the answer is yes.
bool ODLEXDatabase::CopySingleFile(const TalString& from, const TalString& to) {
  return copySingleFile ? copySingleFile(from, to) : true;
}

void ODLEXDatabase::SetUserPermitsFunction(bool (*permits)()) {
  userPermits = permits;
}

bool ODLEXDatabase::UserPermits() {
  return userPermits ? userPermits() : true;
}

void ODLEXDatabase::SetGlobalAutoUpdatePackageCode(bool (*autoUpdate)()) {
  autoUpdatePackageCode = autoUpdate;
}

ODLEXMergeErrors* ODLEXDatabase::GetMergeErrors() {
  return merge_errors.get();
}

void ODLEXDatabase::SetOrvaneCustomAction(const TalString& dllPath) {
  orvaneCustomActionDLL = dllPath;
}

const TalString& ODLEXDatabase::GetOrvaneCustomActionDLL() {
  return orvaneCustomActionDLL;
}
