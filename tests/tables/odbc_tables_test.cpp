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
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
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
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  ODLEXTODBCDataSource& sources = db.GetODBCDataSource();
  MSIEODBCDataSource& source = addRow(sources, dataSourceOf(u"Orders", u"Order Database"));
  EXPECT_EQ(&sources.GetDataSourceWithID(u"Orders"), &source);
  EXPECT_EQ(&sources.GetDataSource(u"Order Database"), &source);
  EXPECT_EQ(thrownCode([&] { sources.GetDataSourceWithID(u"Order Database"); }), 23);
  EXPECT_EQ(thrownCode([&] { sources.GetDataSource(u"Orders"); }), 23);

  ODLEXTODBCSourceAttribute& attributes = db.GetODBCSourceAttribute();
  MSIEODBCSourceAttribute& attribute =
      addRow(attributes, MSIEODBCSourceAttribute(u"Orders", u"Server"));
  MSIEODBCSourceAttribute& dangling =
      addRow(attributes, MSIEODBCSourceAttribute(u"Gone", u"Server"));
  EXPECT_EQ(&attributes.GetDataSource(attribute), &source);
  expectErrorWithEntry([&] { attributes.GetDataSource(dangling); },
                       ODLEXDatabaseError::eDataSourceNotFound, ODLEXTObject::eODBCSourceAttribute,
                       dangling);
}

TEST_F(ODBCTablesTest, CollectorsGiveLiveRowsOfTheirOwner) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  MSIEODBCDriver& driver = addRow(db.GetODBCDriver(), driverOf(u"Driver", u"HelperDll", u""));
  addRow(db.GetODBCDriver(), driverOf(u"Other", u"HelperDll", u""));
  ODLEXTODBCAttribute& attributes = db.GetODBCAttribute();
  MSIEODBCAttribute& kept = addRow(attributes, MSIEODBCAttribute(u"Driver", u"CPTimeout"));
  attributes.Delete(addRow(attributes, MSIEODBCAttribute(u"Driver", u"FileUsage")));
  addRow(attributes, MSIEODBCAttribute(u"Other", u"CPTimeout"));

  RWBTree ofDriver;
  db.GetODBCDriver().GetAttributes(ofDriver, driver);
  EXPECT_EQ(itemsOf(ofDriver), (std::set<RWCollectable*>{&kept}));

  MSIEODBCDataSource& source = addRow(db.GetODBCDataSource(), dataSourceOf(u"Orders", u"Orders"));
  MSIEODBCSourceAttribute& server =
      addRow(db.GetODBCSourceAttribute(), MSIEODBCSourceAttribute(u"Orders", u"Server"));
  RWBTree ofSource;
  db.GetODBCSourceAttribute().GetSourceAttributes(ofSource, source);
  EXPECT_EQ(itemsOf(ofSource), (std::set<RWCollectable*>{&server}));
}

}  // namespace
}  // namespace odlex::test
