// The File table object's source path of a file.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::followReference;

TalString ODLEXTFile::GetLongFilePathSource(const MSIEFile& file) {
  ODLEXDatabase& database = GetDatabase();
  const MSIEComponent& component =
      followReference(database.GetComponent().Lookup(file.GetComponent()), kType, file,
                      ODLEXDatabaseError::eComponentNotFound);
  const MSIEDirectory& directory =
      followReference(database.GetDirectory().Lookup(component.GetDirectoryID()),
                      ODLEXTObject::eComponent, component, ODLEXDatabaseError::eDirectoryNotFound);
  const TalString folder = directory.GetSourcePath(true, false, false);
  if (folder.isNull())
    return folder;
  TalString shortName;
  TalString longName;
  MSIEDirectory::SplitString(file.GetFileName(), u'|', shortName, longName);
  return TalString(folder.u16() + (longName.isNull() ? shortName : longName).u16());
}
