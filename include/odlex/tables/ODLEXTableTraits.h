#pragma once
// What each table type is made of: its lower-layer table and row classes, its common edits, its
// attributes and its class name, from the list of table types.

#include "odlex/msi/MSIRows.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/tables/ODLEXTEdits.h"
#include "odlex/tables/ODLEXTObject.h"

template <ODLEXTObject::typeID type>
struct ODLEXTableTraits;

#define ODLEX_TABLE_TYPE(Table, id, edits, attributes)         \
  template <>                                                  \
  struct ODLEXTableTraits<ODLEXTObject::e##Table> {            \
    using LowerTable = MSIT##Table;                            \
    using Entry = MSIE##Table;                                 \
    static constexpr unsigned kEdits = edits;                  \
    static constexpr unsigned long kAttributes = [] {          \
      using enum ODLEXTableAttributes::eAttributeType;         \
      return static_cast<unsigned long>(attributes);           \
    }();                                                       \
    static constexpr const char* kClassName = "ODLEXT" #Table; \
  };
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE

// The other way round, for templates written over a lower-layer table class: the table-object
// class and typeID of the table whose lower-layer table is T.
template <class T>
struct ODLEXTableOfLowerTable;

#define ODLEX_TABLE_TYPE(Table, id, edits, attributes)                    \
  class ODLEXT##Table;                                                    \
  template <>                                                             \
  struct ODLEXTableOfLowerTable<MSIT##Table> {                            \
    using Class = ODLEXT##Table;                                          \
    static constexpr ODLEXTObject::typeID kType = ODLEXTObject::e##Table; \
  };
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE

// The set of tables a table type belongs to: the six tables of a file search form set 1.
constexpr eTableSets tableSetOf(ODLEXTObject::typeID type) {
  switch (type) {
    case ODLEXTObject::eAppSearch:
    case ODLEXTObject::eCompLocator:
    case ODLEXTObject::eDrLocator:
    case ODLEXTObject::eIniLocator:
    case ODLEXTObject::eRegLocator:
    case ODLEXTObject::eSignature:
      return eFileSearchTables;
    default:
      return eNoTableSet;
  }
}
