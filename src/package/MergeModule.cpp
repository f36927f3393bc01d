// ODLEXDatabase::MergeModule: opening the module, handing both databases to the merge, and
// bringing the table objects up to date with what it wrote.

#include <memory>
#include <string_view>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTDirectory.h"
#include "package/merge/ModuleMerge.h"

namespace {

// The table type of each table name, for the table objects to unload after a merge.
struct NamedType {
  std::u16string_view name;
  ODLEXTObject::typeID type;
};
constexpr NamedType kTableTypes[] = {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) {u"" #Table, ODLEXTObject::e##Table},
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
};

// The module as a database object, for the directory table's conflict check: the one open
// already, or one opened read-only for the merge and closed after it.
class ModuleDatabase {
 public:
  explicit ModuleDatabase(const TalString& path) {
    if (ODLEXDatabase::IsDatabaseFilePathLoaded(path)) {
      database_ = &ODLEXDatabase::GetDatabaseWithFilePath(path);
    } else {
      ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
      database_ = &ODLEXDatabase::AddDatabaseToList(path, readOnly);
      opened_ = true;
    }
  }
  ~ModuleDatabase() {
    if (opened_)
      database_->RemoveFromList(false);
  }
  ModuleDatabase(const ModuleDatabase&) = delete;
  ModuleDatabase& operator=(const ModuleDatabase&) = delete;

  ODLEXDatabase& get() { return *database_; }

 private:
  ODLEXDatabase* database_ = nullptr;
  bool opened_ = false;
};

// Whether the module's folder `row` is placed under the chosen `directory` by the merge: its
// parent is a root of the module (a folder without a parent), which the chosen one replaces.
bool underModuleRoot(ODLEXTDirectory& module, const MSIEDirectory& row) {
  const MSIEDirectory* parent = module.Lookup(row.GetDirectoryParent());
  return parent && (parent->GetDirectoryParent().isNull() ||
                    parent->GetDirectoryParent() == parent->GetDirectory());
}

// The folders of the module that conflict with the package's, as the directory table tells
// them, one line each; empty when none. A folder the package holds already because the module
// was merged before, under the chosen directory, is the same folder and no conflict.
std::u16string DirectoryConflicts(ODLEXTDirectory& package, ODLEXTDirectory& module,
                                  const TalString& directory) {
  std::vector<TalString> packageKeys;
  std::vector<TalString> moduleKeys;
  package.CheckForConflictingPaths(module.GetDatabase(), packageKeys, moduleKeys);
  std::u16string text;
  for (std::size_t i = 0; i < packageKeys.size(); ++i) {
    const MSIEDirectory* ours = package.Lookup(packageKeys[i]);
    const MSIEDirectory* theirs = module.Lookup(moduleKeys[i]);
    if (!ours || !theirs)
      continue;
    if (packageKeys[i] == moduleKeys[i] && ours->GetDirectoryParent() == directory &&
        ours->GetDefaultDir() == theirs->GetDefaultDir() && underModuleRoot(module, *theirs))
      continue;
    text += (text.empty() ? u"" : u"\n") +
            (u"the module's folder " + moduleKeys[i].u16() + u" (" + theirs->GetDefaultDir().u16() +
             u") conflicts with the package's folder " + packageKeys[i].u16() + u" (" +
             ours->GetDefaultDir().u16() + u")");
  }
  return text;
}

std::u16string describeError(MSIDatabase& database) {
  const TalError* error = database.GetError();
  return error ? error->GetText().u16() : std::u16string(u"it is not an installer database");
}

}  // namespace

ODLEXMergeSummary ODLEXDatabase::MergeModule(
    const TalString& modulePath, const TalString& feature, const TalString& directory,
    const std::vector<std::pair<TalString, TalString>>& configuration) {
  // The list is published when the merge ends, however it ends: after the module's database
  // object is gone, as the end of any database object clears the last merge's errors.
  struct Publish {
    std::unique_ptr<ODLEXMergeErrors> errors = std::make_unique<ODLEXMergeErrors>();
    ~Publish() { merge_errors = std::move(errors); }
  } publish;
  odlex::merge::MergeLog log(*publish.errors);
  MSIDatabase module(modulePath, MSIDatabase::ePersistReadOnly);
  if (!module.isValid() || !module.engineDatabase())
    log.stop(ODLEXDatabaseError::eDatabaseOpenFailed, ODLEXMergeError::eModuleUnreadable,
             u"the module " + modulePath.u16() + u" cannot be read: " + describeError(module));
  if (readOnly_ || !database_.engineDatabase())
    log.stop(ODLEXDatabaseError::eMergeStep48, ODLEXMergeError::ePackageUnwritable,
             u"the package " + filePath_.u16() + u" is open read-only");
  std::unique_ptr<ModuleDatabase> moduleDatabase;
  try {
    moduleDatabase = std::make_unique<ModuleDatabase>(modulePath);
  } catch (const ODLEXDatabaseError&) {
    log.stop(ODLEXDatabaseError::eDatabaseOpenFailed, ODLEXMergeError::eModuleUnreadable,
             u"the module " + modulePath.u16() + u" cannot be read");
  }
  // The merge works on the database's own tables: edits still held by table objects go there
  // first.
  PersistTables();
  odlex::merge::MergeRequest request{feature.u16(), directory.u16(), {}, {}};
  for (const auto& [name, value] : configuration)
    request.configuration.emplace_back(name.u16(), value.u16());
  request.directoryConflicts = [this, &moduleDatabase, &directory] {
    return DirectoryConflicts(GetDirectory(), moduleDatabase->get().GetDirectory(), directory);
  };
  const odlex::merge::MergeResult result = odlex::merge::mergeModule(
      *database_.engineDatabase(), *module.engineDatabase(), request, log);

  ODLEXMergeSummary summary;
  for (const auto& [table, rows] : result.rowsPerTable) {
    summary.rowsPerTable.emplace_back(TalString(table), rows);
    for (const NamedType& named : kTableTypes) {
      if (named.name == table && tableObjects_[SlotOf(named.type)])
        tableObjects_[SlotOf(named.type)]->Unload();
    }
  }
  summary.files = result.files;
  summary.mediaDiskId = result.mediaDiskId;
  Modify(true);
  return summary;
}

unsigned ODLEXDatabase::CreatePatchPackage(const TalString& patchPath) {
  constexpr unsigned kCallNotImplemented = 120;
  database_.AddError(TalError(
      kCallNotImplemented,
      TalString(u"building the patch package " + patchPath.u16() + u" from " + filePath_.u16() +
                u" needs the Windows patch wizard, which is not available on this platform"),
      TalString(u"CreatePatchPackage")));
  return kCallNotImplemented;
}
