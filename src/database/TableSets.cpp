// Table types, table sets and the tables each schema version can hold.

#include <algorithm>

#include "database/SchemaTables.h"
#include "odlex/database/ODLEXDatabase.h"

std::multimap<eTableSets, ODLEXTObject::typeID> ODLEXDatabase::related_tables;

namespace {

using Type = ODLEXTObject::typeID;

// Lists of table types, each ended by eNoTable.
constexpr Type kPatchCreationTables[] = {ODLEXTObject::eExternalFiles,
                                         ODLEXTObject::eFamilyFileRanges,
                                         ODLEXTObject::eImageFamilies,
                                         ODLEXTObject::eProperties,
                                         ODLEXTObject::eTargetFiles_OptionalData,
                                         ODLEXTObject::eTargetImages,
                                         ODLEXTObject::eUpgradedFilesToIgnore,
                                         ODLEXTObject::eUpgradedFiles_OptionalData,
                                         ODLEXTObject::eUpgradedImages,
                                         ODLEXTObject::eNoTable};
constexpr Type kSchema110Tables[] = {ODLEXTObject::eComplus, ODLEXTObject::eIsolatedComponent,
                                     ODLEXTObject::eUpgrade, ODLEXTObject::eNoTable};
constexpr Type kCatalogTables[] = {ODLEXTObject::eFileSFPCatalog, ODLEXTObject::eSFPCatalog,
                                   ODLEXTObject::eNoTable};
constexpr Type kSchema200Tables[] = {
    ODLEXTObject::eMsiAssembly,           ODLEXTObject::eMsiAssemblyName,
    ODLEXTObject::eMsiDigitalCertificate, ODLEXTObject::eMsiDigitalSignature,
    ODLEXTObject::eMsiFileHash,           ODLEXTObject::eNoTable};

// Whether `type` comes before the terminator of `list`.
bool listed(const Type* list, Type type) {
  for (; *list != ODLEXTObject::eNoTable; ++list) {
    if (*list == type)
      return true;
  }
  return false;
}

}  // namespace

bool odlex::database::tableFitsSchema(Type type, eSchemaVersion version) {
  switch (version) {
    case eSchema120:
      return !listed(kSchema200Tables, type);
    case eSchema110:
      return !listed(kCatalogTables, type) && !listed(kSchema200Tables, type);
    case eSchema100:
      return !listed(kSchema110Tables, type) && !listed(kCatalogTables, type) &&
             !listed(kSchema200Tables, type);
    case eSchema30:
    case eSchemaNone:
      return !listed(kPatchCreationTables, type) && !listed(kSchema110Tables, type) &&
             !listed(kCatalogTables, type) && !listed(kSchema200Tables, type);
    default:
      return true;
  }
}

// The version that counts is the older of the database's and the newest this library knows.
bool ODLEXDatabase::CanCreateTable(Type type, const ODLEXDatabase& db) {
  const eSchemaVersion version = std::min(MSIDatabase::GetMSIVersion(), db.GetVersion());
  return odlex::database::tableFitsSchema(type, version);
}

bool ODLEXDatabase::IsTableValid(Type type) const {
  return CanCreateTable(type, *this);
}

// The tables of a file search are written together, AppSearch first and Signature last.
void ODLEXDatabase::InitRelatedTables() {
  if (!related_tables.empty())
    return;
  for (Type type : {ODLEXTObject::eAppSearch, ODLEXTObject::eCompLocator, ODLEXTObject::eRegLocator,
                    ODLEXTObject::eDrLocator, ODLEXTObject::eIniLocator, ODLEXTObject::eSignature})
    related_tables.emplace(eFileSearchTables, type);
}

ODLEXTObject::typeID ODLEXDatabase::GetTableType(const TalString& name) {
  return ODLEXTObject::GetTableType(name);
}
