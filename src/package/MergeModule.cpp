// ODLEXDatabase::MergeModule: opening the module, handing both databases to the merge, and
// bringing the table objects up to date with what it wrote.

#include <string_view>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXDatabaseError.h"
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

std::u16string describeError(MSIDatabase& database) {
  const TalError* error = database.GetError();
  return error ? error->GetText().u16() : std::u16string(u"it is not an installer database");
}

}  // namespace

ODLEXMergeSummary ODLEXDatabase::MergeModule(
    const TalString& modulePath, const TalString& feature, const TalString& directory,
    const std::vector<std::pair<TalString, TalString>>& configuration) {
  merge_errors = std::make_unique<ODLEXMergeErrors>();
  odlex::merge::MergeLog log(*merge_errors);
  MSIDatabase module(modulePath, MSIDatabase::ePersistReadOnly);
  if (!module.isValid() || !module.engineDatabase())
    log.stop(ODLEXDatabaseError::eDatabaseOpenFailed, ODLEXMergeError::eModuleUnreadable,
             u"the module " + modulePath.u16() + u" cannot be read: " + describeError(module));
  if (readOnly_ || !database_.engineDatabase())
    log.stop(ODLEXDatabaseError::eMergeStep48, ODLEXMergeError::ePackageUnwritable,
             u"the package " + filePath_.u16() + u" is open read-only");
  // The merge works on the database's own tables: edits still held by table objects go there
  // first.
  PersistTables();
  odlex::merge::MergeRequest request{feature.u16(), directory.u16(), {}};
  for (const auto& [name, value] : configuration)
    request.configuration.emplace_back(name.u16(), value.u16());
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
