// Factory registration of every table-object class, under its class id and its class name, for
// as long as the library is loaded.

#include "tables/TableRegistry.h"

#include "odlex/support/RWFactory.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

const odlex::FactoryRegistration tableObjectClass(&odlex::CreateDefault<ODLEXTObject>,
                                                  ODLEXTObject::eTableObjectClass,
                                                  RWStringID("ODLEXTObject"));

#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) \
  const odlex::FactoryRegistration register##Table(    \
      &odlex::CreateDefault<ODLEXT##Table>, ODLEXTObject::e##Table, RWStringID("ODLEXT" #Table));
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE

}  // namespace

unsigned odlex::tables::registeredTableClasses() {
  return kTableObjectClasses;
}
