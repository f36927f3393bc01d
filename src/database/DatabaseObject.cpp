// The database object itself: construction, destruction and its place among the collectables
// (class id 387, ordered by the working path).

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/package/ODLEXMergeErrors.h"
#include "odlex/tables/ODLEXDatabaseError.h"

const odlex::FactoryRegistration ODLEXDatabase::factoryRegistration(
    []() -> RWCollectable* { return new (std::nothrow) ODLEXDatabase(); }, myAtom,
    RWStringID("ODLEXDatabase"));

ODLEXDatabase::ODLEXDatabase() : database_(eSchema110) {
  init();
}

ODLEXDatabase::ODLEXDatabase(const TalString& path) : database_(eSchema110) {
  init();
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  if (!SetDatabasePath(path, forUpdate))
    throw ODLEXDatabaseError(ODLEXDatabaseError::eDatabaseOpenFailed);
}

void ODLEXDatabase::init() {
  // The slot array is sized from the registered table classes, which INIT counts.
  INIT();
  tableObjects_.clear();
  tableObjects_.resize(totalODLEXTObjects + 1);
  stringChecker_.reset();
  storage_ = nullptr;
  merge_errors.reset();
  database_.SetSchemaCAB(schemaPath);
  readOnly_ = false;
  compressed_ = false;
  modified_ = false;
  exteriorModify_ = false;
  creatingTransform_ = false;
  mergeModuleState_ = 0;
}

// The table objects go before the lower-layer database their tables are bound to. A
// database's destruction also discards the errors of the last merge.
ODLEXDatabase::~ODLEXDatabase() {
  stringChecker_.reset();
  tableObjects_.clear();
  merge_errors.reset();
}

RWCollectable* ODLEXDatabase::newSpecies() const {
  return new (std::nothrow) ODLEXDatabase();
}

// An open database cannot be duplicated: there is no copy.
RWCollectable* ODLEXDatabase::copy() const {
  return nullptr;
}

RWClassID ODLEXDatabase::isA() const {
  return myAtom;
}

int ODLEXDatabase::compareTo(const RWCollectable* other) const {
  if (!other || other->isA() != myAtom)
    return -1;
  const auto& database = static_cast<const ODLEXDatabase&>(*other);
  return canonicalPath_.compareTo(database.canonicalPath_, RWWString::exact);
}

unsigned ODLEXDatabase::hash() const {
  return canonicalPath_.hash(RWWString::exact);
}

bool ODLEXDatabase::isEqual(const RWCollectable* other) const {
  return compareTo(other) == 0;
}
