#pragma once
// The table-object classes registered with the collectable factory.

namespace odlex::tables {

// The number of table-object classes: ODLEXTObject and one per table type.
inline constexpr unsigned kTableObjectClasses = 1
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) +1
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
    ;

// How many table-object classes are registered (ODLEXTObject and one per table type). Calling
// it also keeps the registrations linked into programs that use the database.
unsigned registeredTableClasses();

}  // namespace odlex::tables
