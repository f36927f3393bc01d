#pragma once
// Which tables a database of a given installer schema version can hold.

#include "odlex/msi/eSchemaVersion.h"
#include "odlex/tables/ODLEXTObject.h"

namespace odlex::database {

// Whether a table of type `type` may exist in a database of schema `version`. Schema 120
// refuses the tables of schema 200 (the assembly, digital signature and file hash tables); 110
// also the file-protection catalogs; 100 also Complus, IsolatedComponent and Upgrade; 30 and
// 999 (no version declared) also the patch-creation tables. Every other version allows every
// table.
bool tableFitsSchema(ODLEXTObject::typeID type, eSchemaVersion version);

}  // namespace odlex::database
