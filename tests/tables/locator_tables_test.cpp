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

// AppSearch and CCPSearch rows follow their signature into the five tables alike.
TEST_F(LocatorTablesTest, SearchesFollowTheirSignatureIntoEachTable) {
  ODLEXDatabase& db = openPackage();
  MSIESignature& signature = addRow(db.GetSignature(), MSIESignature(u"AppExe"));
  MSIERegLocator& reg = addRow(db.GetRegLocator(), MSIERegLocator(u"AppExe"));
  MSIEDrLocator& dir = addRow(db.GetDrLocator(), drLocatorOf(u"AppExe", u"C:\\A"));
  ODLEXTAppSearch& appSearches = db.GetAppSearch();
  MSIEAppSearch& search = addRow(appSearches, MSIEAppSearch(u"APPEXE", u"AppExe"));
  ODLEXTCCPSearch& ccpSearches = db.GetCCPSearch();
  MSIECCPSearch& ccp = addRow(ccpSearches, MSIECCPSearch(u"AppExe"));
  const auto expectFound = [&](auto& searches, const auto& row, ODLEXTObject::typeID type) {
    EXPECT_EQ(&searches.GetSignature(row), &signature);
    EXPECT_EQ(&searches.GetRegLocator(row), &reg);
    EXPECT_EQ(&searches.GetDrLocator(row), &dir);
    EXPECT_EQ(searches.GetSignatureTypes(row),
              eSignatureInSignature | eSignatureInRegLocator | eSignatureInDrLocator);
    expectErrorWithEntry([&] { searches.GetIniLocator(row); },
                         ODLEXDatabaseError::eSignatureNotFound, type, row);
    expectErrorWithEntry([&] { searches.GetCompLocator(row); },
                         ODLEXDatabaseError::eSignatureNotFound, type, row);
  };
  expectFound(appSearches, search, ODLEXTObject::eAppSearch);
  expectFound(ccpSearches, ccp, ODLEXTObject::eCCPSearch);

  db.GetSignature().Delete(signature);
  db.GetDrLocator().Delete(dir);
  EXPECT_FALSE(appSearches.HasSignature(search));
  EXPECT_EQ(appSearches.GetSignatureTypes(search), eSignatureInRegLocator);
  expectErrorWithEntry([&] { appSearches.GetSignature(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);
  EXPECT_EQ(ccpSearches.GetSignatureTypes(addRow(ccpSearches, MSIECCPSearch(u"Nowhere"))),
            eNoSignatureType);
}

}  // namespace
}  // namespace odlex::test
