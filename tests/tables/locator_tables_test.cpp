// The operations of the file-search table objects (Signature, the four locator tables,
// AppSearch and CCPSearch) on a copy of the idt package, which has none of these tables:
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
  ODLEXDatabase& db = openPackage();
  ODLEXTSignature& signatures = db.GetSignature();
  ODLEXTRegLocator& regs = db.GetRegLocator();
  ODLEXTIniLocator& inis = db.GetIniLocator();
  ODLEXTCompLocator& comps = db.GetCompLocator();
  ODLEXTDrLocator& dirs = db.GetDrLocator();
  MSIESignature& signature = addRow(signatures, MSIESignature(u"AppExe"));
  signatures.Delete(addRow(signatures, MSIESignature(u"OldExe")));
  MSIERegLocator& reg = addRow(regs, MSIERegLocator(u"AppExe"));
  MSIEIniLocator& ini = addRow(inis, MSIEIniLocator(u"AppIni"));
  MSIECompLocator& comp = addRow(comps, MSIECompLocator(u"AppComp"));
  dirs.Delete(addRow(dirs, drLocatorOf(u"AppDir", u"C:\\A")));
  MSIEDrLocator& second = addRow(dirs, drLocatorOf(u"AppDir", u"C:\\B"));
  addRow(dirs, drLocatorOf(u"AppDir", u"C:\\C"));
  const Lookup lookups[] = {
      {[&] { return &signatures.GetWithSignature(u"AppExe"); },
       [&] { signatures.GetWithSignature(u"appexe"); }, 24, &signature},
      {[&] { return &signatures.GetWithSignature(u"AppExe"); },
       [&] { signatures.GetWithSignature(u"OldExe"); }, 24},
      {[&] { return &regs.GetWithSignature(u"AppExe"); }, [&] { regs.GetWithSignature(u"AppIni"); },
       24, &reg},
      {[&] { return &inis.GetWithSignature(u"AppIni"); }, [&] { inis.GetWithSignature(u"AppExe"); },
       24, &ini},
      {[&] { return &comps.GetWithSignature(u"AppComp"); },
       [&] { comps.GetWithSignature(u"AppDir"); }, 24, &comp},
      // The first live row in key order.
      {[&] { return &dirs.GetWithSignature(u"AppDir"); },
       [&] { dirs.GetWithSignature(u"AppComp"); }, 24, &second},
  };
  expectLookups(lookups);
}

TEST_F(LocatorTablesTest, AppSearchFollowsItsSignatureIntoEachTable) {
  ODLEXDatabase& db = openPackage();
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
  ODLEXDatabase& db = openPackage();
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
