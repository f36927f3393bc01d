#pragma once
// Removing a component's rows from one table, and what hangs off them in other tables.
//
// A table of the component cascade loses every live row that belongs to the component: the
// row's component reference (MSIEntry::GetComponentKey) names it, or, for IsolatedComponent,
// either of its two component columns does. The File table's step also clears the
// component's rows of CreateFolder, DuplicateFile, MoveFile and PublishComponent, which belong
// to a component but have no step of their own. The keys of the rows removed are then followed
// into the tables that refer to them, table by table:
//
//   File            -> MsiFileHash.File_, Font.File_, SelfReg.File_, BindImage.File_,
//                      DuplicateFile.File_ (copies of the file made by any component),
//                      Patch.File_, ODBCDriver.File_, ODBCTranslator.File_ (a driver or
//                      translator whose library is gone), LockPermissions.LockObject where
//                      Table is "File" (the file's permissions)
//   Registry        -> LockPermissions.LockObject where Table is "Registry"
//   CreateFolder    -> LockPermissions.LockObject where Table is "CreateFolder" (a created
//                      folder's permissions, keyed by its Directory_, go with the last live
//                      CreateFolder row of that folder: while another component still creates
//                      it, they stay)
//   Shortcut        -> (nothing in this library's tables)
//   Class (CLSID)   -> ProgId.Class_
//   ProgId          -> ProgId.ProgId_Parent (version-independent ProgIds of a removed one)
//   Extension       -> Verb.Extension_, MIME.Extension_
//   ODBCDriver      -> ODBCAttribute.Driver_
//   ODBCDataSource  -> ODBCSourceAttribute.DataSource_
//
// A referring row is removed only when no live row of the referred table still holds the key
// (Class and Extension rows are keyed with the component too, so a CLSID or an extension may
// live on in another component). Rows removed in turn are followed the same way; a row already
// deleted is never followed again, so a cycle of references (ProgId parents) ends.
//
// Cost: rows are found through the lower layer's index of the column that names the component
// or the key (MSITable::FindEntriesBy), built by one pass over a table and kept while rows are
// only marked deleted; so deleting many components in a row costs one pass per table touched
// plus time in proportion to the rows removed, never a pass per component or per removed row.

#include "odlex/msi/MSIRows.h"

class ODLEXTObject;

namespace odlex::tables {

// Marks deleted the live rows of `table` that belong to `component`, and their dependants as
// above. Marks each table that lost a row modified.
void deleteRowsOfComponent(ODLEXTObject& table, const MSIEComponent& component);

}  // namespace odlex::tables
