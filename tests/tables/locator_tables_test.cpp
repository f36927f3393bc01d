// The operations of the file-search table objects (Signature, the four locator tables,
// AppSearch and CCPSearch) on a copy of the msibuild package, which has none of these tables:
// each test adds the rows it needs.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

MSIEDrLocator drLocatorOf(const TalString& signature, const TalString& path) {
  return MSIEDrLocator(signature, u"", path);
}

class LocatorTablesTest : public DatabaseTest {};

TEST_F(LocatorTablesTest, RowsBySignatureOrCode24) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  MSIESignature& signature = addRow(db.GetSignature(), MSIESignature(u"AppExe"));
  MSIERegLocator& reg = addRow(db.GetRegLocator(), MSIERegLocator(u"AppExe"));
  MSIEIniLocator& ini = addRow(db.GetIniLocator(), MSIEIniLocator(u"AppIni"));
  MSIECompLocator& comp = addRow(db.GetCompLocator(), MSIECompLocator(u"AppComp"));
  MSIEDrLocator& first = addRow(db.GetDrLocator(), drLocatorOf(u"AppDir", u"C:\\A"));
  addRow(db.GetDrLocator(), drLocatorOf(u"AppDir", u"C:\\B"));

  EXPECT_EQ(&db.GetSignature().GetWithSignature(u"AppExe"), &signature);
  EXPECT_EQ(&db.GetRegLocator().GetWithSignature(u"AppExe"), &reg);
  EXPECT_EQ(&db.GetIniLocator().GetWithSignature(u"AppIni"), &ini);
  EXPECT_EQ(&db.GetCompLocator().GetWithSignature(u"AppComp"), &comp);
  EXPECT_EQ(&db.GetDrLocator().GetWithSignature(u"AppDir"), &first) << "the first in key order";

  EXPECT_EQ(thrownCode([&] { db.GetSignature().GetWithSignature(u"appexe"); }), 24);
  EXPECT_EQ(thrownCode([&] { db.GetRegLocator().GetWithSignature(u"AppIni"); }), 24);
  EXPECT_EQ(thrownCode([&] { db.GetIniLocator().GetWithSignature(u"AppExe"); }), 24);
  EXPECT_EQ(thrownCode([&] { db.GetCompLocator().GetWithSignature(u"AppDir"); }), 24);
  EXPECT_EQ(thrownCode([&] { db.GetDrLocator().GetWithSignature(u"AppComp"); }), 24);

  db.GetDrLocator().Delete(first);
  EXPECT_EQ(db.GetDrLocator().GetWithSignature(u"AppDir").GetPath(), TalString(u"C:\\B"));
  db.GetSignature().Delete(signature);
  EXPECT_EQ(thrownCode([&] { db.GetSignature().GetWithSignature(u"AppExe"); }), 24);
}

TEST_F(LocatorTablesTest, AppSearchFollowsItsSignatureIntoEachTable) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  MSIESignature& signature = addRow(db.GetSignature(), MSIESignature(u"AppExe"));
  MSIERegLocator& reg = addRow(db.GetRegLocator(), MSIERegLocator(u"AppExe"));
  MSIEDrLocator& dir = addRow(db.GetDrLocator(), drLocatorOf(u"AppExe", u"C:\\A"));
  ODLEXTAppSearch& searches = db.GetAppSearch();
  MSIEAppSearch& search = addRow(searches, MSIEAppSearch(u"APPEXE", u"AppExe"));

  EXPECT_EQ(&searches.GetSignature(search), &signature);
  EXPECT_EQ(&searches.GetRegLocator(search), &reg);
  EXPECT_EQ(&searches.GetDrLocator(search), &dir);
  EXPECT_TRUE(searches.HasSignature(search));
  EXPECT_TRUE(searches.HasRegLocator(search));
  EXPECT_TRUE(searches.HasDrLocator(search));
  EXPECT_FALSE(searches.HasIniLocator(search));
  EXPECT_FALSE(searches.HasCompLocator(search));
  EXPECT_EQ(searches.GetSignatureTypes(search),
            eSignatureInSignature | eSignatureInRegLocator | eSignatureInDrLocator);
  expectErrorWithEntry([&] { searches.GetIniLocator(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);
  expectErrorWithEntry([&] { searches.GetCompLocator(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);

  db.GetSignature().Delete(signature);
  db.GetDrLocator().Delete(dir);
  EXPECT_FALSE(searches.HasSignature(search));
  EXPECT_EQ(searches.GetSignatureTypes(search), eSignatureInRegLocator);
  expectErrorWithEntry([&] { searches.GetSignature(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);
}

TEST_F(LocatorTablesTest, CCPSearchFollowsItsSignatureIntoEachTable) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  MSIEIniLocator& ini = addRow(db.GetIniLocator(), MSIEIniLocator(u"OldProduct"));
  MSIECompLocator& comp = addRow(db.GetCompLocator(), MSIECompLocator(u"OldProduct"));
  ODLEXTCCPSearch& searches = db.GetCCPSearch();
  MSIECCPSearch& search = addRow(searches, MSIECCPSearch(u"OldProduct"));
  MSIECCPSearch& unknown = addRow(searches, MSIECCPSearch(u"Nowhere"));

  EXPECT_EQ(&searches.GetIniLocator(search), &ini);
  EXPECT_EQ(&searches.GetCompLocator(search), &comp);
  EXPECT_EQ(searches.GetSignatureTypes(search), eSignatureInIniLocator | eSignatureInCompLocator);
  EXPECT_EQ(searches.GetSignatureTypes(unknown), eNoSignatureType);
  EXPECT_FALSE(searches.HasRegLocator(unknown));
  expectErrorWithEntry([&] { searches.GetRegLocator(unknown); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eCCPSearch, unknown);
  expectErrorWithEntry([&] { searches.GetDrLocator(unknown); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eCCPSearch, unknown);
}

}  // namespace
}  // namespace odlex::test
