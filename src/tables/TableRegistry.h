#pragma once
// The table-object classes registered with the collectable factory.

namespace odlex::tables {

// How many table-object classes are registered (ODLEXTObject and one per table type). Calling
// it also keeps the registrations linked into programs that use the database.
unsigned registeredTableClasses();

}  // namespace odlex::tables
