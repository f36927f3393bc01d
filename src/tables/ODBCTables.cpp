// Operations of the ODBCAttribute, ODBCDataSource, ODBCDriver, ODBCSourceAttribute and
// ODBCTranslator table objects.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectRowsOfComponent;
using odlex::tables::collectRowsWithValue;
using odlex::tables::followReference;

namespace {

// The File row `fileID` that `row` of table `from` names (a driver's or translator's file or
// setup file), or the File table's not-found error with the row.
MSIEFile& fileOf(ODLEXDatabase& database, ODLEXTObject::typeID from, const MSIEntry& row,
                 const TalString& fileID) {
  return followReference(database.GetFile().Lookup(fileID), from, row,
                         ODLEXDatabaseError::eFileNotFound);
}

}  // namespace

RWBTree& ODLEXTODBCAttribute::GetAttributes(RWBTree& out, const MSIEODBCDriver& driver) {
  return collectRowsWithValue(GetEntries(), out, &MSIEODBCAttribute::GetDriver, driver.GetDriver());
}

MSIEODBCDataSource& ODLEXTODBCDataSource::GetDataSource(const TalString& name) {
  return FindOrThrow(GetTable().FindByDescription(name), ODLEXDatabaseError::eDataSourceNotFound);
}

MSIEODBCDataSource& ODLEXTODBCDataSource::GetDataSourceWithID(const TalString& dataSourceID) {
  return FindOrThrow(GetTable().Find(dataSourceID), ODLEXDatabaseError::eDataSourceNotFound);
}

RWBTree& ODLEXTODBCDataSource::GetDataSources(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTODBCDriver::GetAttributes(RWBTree& out, const MSIEODBCDriver& driver) {
  return GetDatabase().GetODBCAttribute().GetAttributes(out, driver);
}

RWBTree& ODLEXTODBCDriver::GetDrivers(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

MSIEFile& ODLEXTODBCDriver::GetFile(const MSIEODBCDriver& driver) {
  return fileOf(GetDatabase(), kType, driver, driver.GetFile());
}

MSIEFile& ODLEXTODBCDriver::GetFileSetup(const MSIEODBCDriver& driver) {
  return fileOf(GetDatabase(), kType, driver, driver.GetFileSetup());
}

MSIEODBCDataSource& ODLEXTODBCSourceAttribute::GetDataSource(const MSIEODBCSourceAttribute& row) {
  return followReference(GetDatabase().GetODBCDataSource().Lookup(row.GetDataSource()), kType, row,
                         ODLEXDatabaseError::eDataSourceNotFound);
}

RWBTree& ODLEXTODBCSourceAttribute::GetSourceAttributes(RWBTree& out,
                                                        const MSIEODBCDataSource& dataSource) {
  return collectRowsWithValue(GetEntries(), out, &MSIEODBCSourceAttribute::GetDataSource,
                              dataSource.GetDataSource());
}

MSIEFile& ODLEXTODBCTranslator::GetFile(const MSIEODBCTranslator& translator) {
  return fileOf(GetDatabase(), kType, translator, translator.GetFile());
}

MSIEFile& ODLEXTODBCTranslator::GetFileSetup(const MSIEODBCTranslator& translator) {
  return fileOf(GetDatabase(), kType, translator, translator.GetFileSetup());
}

RWBTree& ODLEXTODBCTranslator::GetTranslators(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}
