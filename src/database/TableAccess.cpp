// The table objects of a database: made through the collectable factory on first use, kept in
// slot 4194 - typeID, and handed out by type or through the typed accessors.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

constexpr int kLowestTableType = std::min({
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) id,
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
});

bool isTableType(ODLEXTObject::typeID type) {
  return type >= kLowestTableType && type < ODLEXTObject::eNoTable;
}

// The tables that need a newer schema than the oldest a database may declare: their accessors
// refuse them when the database's schema cannot hold them.
bool needsNewerSchema(ODLEXTObject::typeID type) {
  switch (type) {
    case ODLEXTObject::eFileSFPCatalog:
    case ODLEXTObject::eSFPCatalog:
    case ODLEXTObject::eMsiAssembly:
    case ODLEXTObject::eMsiAssemblyName:
    case ODLEXTObject::eMsiDigitalCertificate:
    case ODLEXTObject::eMsiDigitalSignature:
    case ODLEXTObject::eMsiFileHash:
      return true;
    default:
      return false;
  }
}

}  // namespace

ODLEXTObject& ODLEXDatabase::GetTableObject(ODLEXTObject::typeID type) {
  return GetTableObject(type, true);
}

// An unknown type, or a factory that does not make a table object of that type, is an internal
// failure: every table type registers its class when the library is loaded.
ODLEXTObject& ODLEXDatabase::GetTableObject(ODLEXTObject::typeID type, bool load) {
  if (!isTableType(type))
    throw ODLEXDatabaseError(ODLEXDatabaseError::eInternalFailure);
  std::unique_ptr<ODLEXTObject>& slot = tableObjects_.at(SlotOf(type));
  if (!slot) {
    if (!factory)
      throw ODLEXDatabaseError(ODLEXDatabaseError::eNoFactory);
    std::unique_ptr<RWCollectable> made(factory->create(static_cast<RWClassID>(type)));
    auto* table = dynamic_cast<ODLEXTObject*>(made.get());
    if (!table || table->isA() != type)
      throw ODLEXDatabaseError(ODLEXDatabaseError::eInternalFailure);
    made.release();
    slot.reset(table);
    if (load) {
      table->Load(*this);
    } else {
      // Bound to this database without reading its rows.
      if (MSITable* lower = table->GetLowerTable())
        lower->SetDatabase(database_);
      table->database_ = this;
    }
  } else if (load && !slot->IsLoaded()) {
    slot->Load(*this);
  }
  return *slot;
}

#define ODLEX_TABLE_TYPE(Table, id, edits, attributes)                                     \
  ODLEXT##Table& ODLEXDatabase::Get##Table() {                                             \
    if (needsNewerSchema(ODLEXTObject::e##Table) && !IsTableValid(ODLEXTObject::e##Table)) \
      throw ODLEXDatabaseError(ODLEXDatabaseError::eTableNotInSchema);                     \
    return static_cast<ODLEXT##Table&>(GetTableObject(ODLEXTObject::e##Table));            \
  }
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE

MSITranslate& ODLEXDatabase::GetTranslator() {
  return GetProperty().GetTranslator();
}

TalString ODLEXDatabase::GetSourceRoot() const {
  if (!sourceRoot_.u16().empty())
    return sourceRoot_;
  const std::u16string path = GetFilePath().u16();
  const std::size_t slash = path.find_last_of(u"/\\");
  return slash == std::u16string::npos ? TalString() : TalString(path.substr(0, slash + 1));
}
