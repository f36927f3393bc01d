// The operations of the ODBC table objects on a copy of the idt package (files MainExe,
// Readme, Handbuch, HelperDll; components MainExe, Docs, GermanDocs, Helpers).

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class ODBCTablesTest : public DatabaseTest {};

MSIEODBCDriver driverOf(const char16_t* key, const char16_t* file, const char16_t* setupFile) {
  MSIEODBCDriver row(key);
  row.SetComponent(u"Helpers");
  row.SetFile(file);
  row.SetFileSetup(setupFile);
  return row;
}

MSIEODBCDataSource dataSourceOf(const char16_t* key, const char16_t* name) {
  MSIEODBCDataSource row(key);
  row.SetComponent(u"Helpers");
  row.SetDescription(name);
  return row;
}

TEST_F(ODBCTablesTest, DriversAndTranslatorsFollowTheirFiles) {
  ODLEXDatabase& db = openPackage();
  ODLEXTODBCDriver& drivers = db.GetODBCDriver();
  MSIEODBCDriver& driver = addRow(drivers, driverOf(u"Driver", u"HelperDll", u""));
  EXPECT_EQ(drivers.GetFile(driver).GetFileID(), TalString(u"HelperDll"));
  expectErrorWithEntry([&] { drivers.GetFileSetup(driver); }, ODLEXDatabaseError::eFileNotFound,
                       ODLEXTObject::eODBCDriver, driver);

  ODLEXTODBCTranslator& translators = db.GetODBCTranslator();
  MSIEODBCTranslator values(u"Translator");
  values.SetFile(u"Gone");
  values.SetFileSetup(u"MainExe");
  MSIEODBCTranslator& translator = addRow(translators, values);
  EXPECT_EQ(translators.GetFileSetup(translator).GetFileID(), TalString(u"MainExe"));
  expectErrorWithEntry([&] { translators.GetFile(translator); }, ODLEXDatabaseError::eFileNotFound,
                       ODLEXTObject::eODBCTranslator, translator);
}

TEST_F(ODBCTablesTest, DataSourcesByKeyByNameAndFromTheirAttributes) {
  ODLEXDatabase& db = openPackage();
  ODLEXTODBCDataSource& sources = db.GetODBCDataSource();
  MSIEODBCDataSource& source = addRow(sources, dataSourceOf(u"Orders", u"Order Database"));
  ODLEXTODBCSourceAttribute& attributes = db.GetODBCSourceAttribute();
  MSIEODBCSourceAttribute& attribute =
      addRow(attributes, MSIEODBCSourceAttribute(u"Orders", u"Server"));
  MSIEODBCSourceAttribute& dangling =
      addRow(attributes, MSIEODBCSourceAttribute(u"Gone", u"Server"));
  const Lookup lookups[] = {
      {[&] { return &sources.GetDataSourceWithID(u"Orders"); },
       [&] { sources.GetDataSourceWithID(u"Order Database"); }, 23, &source},
      {[&] { return &sources.GetDataSource(u"Order Database"); },
       [&] { sources.GetDataSource(u"Orders"); }, 23, &source},
      {[&] { return &attributes.GetDataSource(attribute); },
       [&] { attributes.GetDataSource(dangling); }, 23, &source},
  };
  expectLookups(lookups);
  expectErrorWithEntry([&] { attributes.GetDataSource(dangling); },
                       ODLEXDatabaseError::eDataSourceNotFound, ODLEXTObject::eODBCSourceAttribute,
                       dangling);
}

TEST_F(ODBCTablesTest, CollectorsGiveLiveRowsOfTheirOwner) {
  ODLEXDatabase& db = openPackage();
  MSIEODBCDriver& driver = addRow(db.GetODBCDriver(), driverOf(u"Driver", u"HelperDll", u""));
  addRow(db.GetODBCDriver(), driverOf(u"Other", u"HelperDll", u""));
  ODLEXTODBCAttribute& attributes = db.GetODBCAttribute();
  MSIEODBCAttribute& kept = addRow(attributes, MSIEODBCAttribute(u"Driver", u"CPTimeout"));
  attributes.Delete(addRow(attributes, MSIEODBCAttribute(u"Driver", u"FileUsage")));
  addRow(attributes, MSIEODBCAttribute(u"Other", u"CPTimeout"));
  ODLEXTODBCSourceAttribute& sourceAttributes = db.GetODBCSourceAttribute();
  MSIEODBCDataSource& source = addRow(db.GetODBCDataSource(), dataSourceOf(u"Orders", u"Orders"));
  MSIEODBCSourceAttribute& server =
      addRow(sourceAttributes, MSIEODBCSourceAttribute(u"Orders", u"Server"));
  sourceAttributes.Delete(addRow(sourceAttributes, MSIEODBCSourceAttribute(u"Orders", u"Port")));
  addRow(sourceAttributes, MSIEODBCSourceAttribute(u"Other", u"Server"));
  const Collector collectors[] = {
      {[&](RWBTree& tree) { db.GetODBCDriver().GetAttributes(tree, driver); }, {&kept}},
      {[&](RWBTree& tree) { sourceAttributes.GetSourceAttributes(tree, source); }, {&server}},
  };
  expectCollectors(collectors);
}

}  // namespace
}  // namespace odlex::test
