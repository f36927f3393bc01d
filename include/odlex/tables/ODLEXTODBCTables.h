#pragma once
// Table objects of the ODBC tables: drivers, translators, data sources and their attributes.
//
// Collectors ("Get<Rows>(RWBTree& out, ...)") insert the matching rows that are not marked
// deleted into `out`, keep whatever `out` already held, and return `out`. Lookups by key or
// column return the row (deleted rows are never found) or throw the table's not-found
// ODLEXDatabaseError; lookups that follow a row's reference into another table throw
// ODLEXDatabaseErrorWithEntry naming the row and its table.

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTODBCAttribute
    : public ODLEXTRowTable<ODLEXTODBCAttribute, ODLEXTObject::eODBCAttribute> {
 public:
  // The attributes that configure the driver `driver`.
  RWBTree& GetAttributes(RWBTree& out, const MSIEODBCDriver& driver);
};

class ODLEXTODBCDataSource
    : public ODLEXTRowTable<ODLEXTODBCDataSource, ODLEXTObject::eODBCDataSource> {
 public:
  // The data source registered under the name `name` (its Description, the name ODBC knows it
  // by); code 23 when there is none.
  MSIEODBCDataSource& GetDataSource(const TalString& name);
  // The data source keyed `dataSourceID`; code 23 when there is none.
  MSIEODBCDataSource& GetDataSourceWithID(const TalString& dataSourceID);
  // The data sources that `component` registers.
  RWBTree& GetDataSources(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTODBCDriver : public ODLEXTRowTable<ODLEXTODBCDriver, ODLEXTObject::eODBCDriver> {
 public:
  // The ODBCAttribute rows of `driver`, as ODLEXTODBCAttribute::GetAttributes gives them.
  RWBTree& GetAttributes(RWBTree& out, const MSIEODBCDriver& driver);
  // The drivers that `component` installs.
  RWBTree& GetDrivers(RWBTree& out, const MSIEComponent& component);
  // The driver's file; ODLEXDatabaseErrorWithEntry (this table, `driver`, code 20) when it
  // does not exist.
  MSIEFile& GetFile(const MSIEODBCDriver& driver);
  // The driver's setup file; ODLEXDatabaseErrorWithEntry (this table, `driver`, code 20) when
  // it does not exist, including when the driver names none.
  MSIEFile& GetFileSetup(const MSIEODBCDriver& driver);
};

class ODLEXTODBCSourceAttribute
    : public ODLEXTRowTable<ODLEXTODBCSourceAttribute, ODLEXTObject::eODBCSourceAttribute> {
 public:
  // The data source the attribute configures; ODLEXDatabaseErrorWithEntry (this table, `row`,
  // code 23) when it does not exist.
  MSIEODBCDataSource& GetDataSource(const MSIEODBCSourceAttribute& row);
  // The attributes that configure the data source `dataSource`.
  RWBTree& GetSourceAttributes(RWBTree& out, const MSIEODBCDataSource& dataSource);
};

class ODLEXTODBCTranslator
    : public ODLEXTRowTable<ODLEXTODBCTranslator, ODLEXTObject::eODBCTranslator> {
 public:
  // The translator's file; ODLEXDatabaseErrorWithEntry (this table, `translator`, code 20) when
  // it does not exist.
  MSIEFile& GetFile(const MSIEODBCTranslator& translator);
  // The translator's setup file; ODLEXDatabaseErrorWithEntry (this table, `translator`, code
  // 20) when it does not exist, including when the translator names none.
  MSIEFile& GetFileSetup(const MSIEODBCTranslator& translator);
  // The translators that `component` installs.
  RWBTree& GetTranslators(RWBTree& out, const MSIEComponent& component);
};
