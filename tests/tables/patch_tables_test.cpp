// The operations of the patch-creation table objects, on rows added to a copy of the idt
// package: families FAM and OTHER, upgraded images U1 (FAM) and U2 (OTHER), target images T1
// (from U1) and T2 (from U2), and one file "app" of each kind of file row.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class PatchTablesTest : public DatabaseTest {
 protected:
  void addImages(ODLEXDatabase& db) {
    MSIEImageFamilies family(u"FAM");
    family.SetMediaSrcPropName(u"FAMSRC");
    fam_ = &addRow(db.GetImageFamilies(), family);
    addRow(db.GetImageFamilies(), MSIEImageFamilies(u"OTHER"));
    u1_ = &addRow(db.GetUpgradedImages(), upgradedOf(u"U1", u"FAM"));
    addRow(db.GetUpgradedImages(), upgradedOf(u"U2", u"OTHER"));
    t1_ = &addRow(db.GetTargetImages(), targetOf(u"T1", u"U1"));
    addRow(db.GetTargetImages(), targetOf(u"T2", u"U2"));
    addRow(db.GetExternalFiles(), MSIEExternalFiles(u"FAM", u"app", u"C:\\old\\app.exe"));
    addRow(db.GetFamilyFileRanges(), MSIEFamilyFileRanges(u"FAM", u"app"));
    addRow(db.GetTargetFiles_OptionalData(), MSIETargetFiles_OptionalData(u"T1", u"app"));
    addRow(db.GetUpgradedFilesToIgnore(), MSIEUpgradedFilesToIgnore(u"U1", u"app"));
    addRow(db.GetUpgradedFiles_OptionalData(), MSIEUpgradedFiles_OptionalData(u"U1", u"app"));
    addRow(db.GetProperties(), MSIEProperties(u"PatchGUID"));
  }

  static MSIEUpgradedImages upgradedOf(const char16_t* key, const char16_t* family) {
    MSIEUpgradedImages row(key);
    row.SetFamily(family);
    return row;
  }

  static MSIETargetImages targetOf(const char16_t* key, const char16_t* upgraded) {
    MSIETargetImages row(key);
    row.SetUpgraded(upgraded);
    return row;
  }

  MSIEImageFamilies* fam_ = nullptr;
  MSIEUpgradedImages* u1_ = nullptr;
  MSIETargetImages* t1_ = nullptr;
};

TEST_F(PatchTablesTest, LookupsFindTheirRowOrThrowTheTablesCode) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  addImages(db);
  ODLEXTExternalFiles& external = db.GetExternalFiles();
  ODLEXTFamilyFileRanges& ranges = db.GetFamilyFileRanges();
  ODLEXTImageFamilies& families = db.GetImageFamilies();
  ODLEXTTargetImages& targets = db.GetTargetImages();
  ODLEXTTargetFiles_OptionalData& targetFiles = db.GetTargetFiles_OptionalData();
  ODLEXTUpgradedImages& upgraded = db.GetUpgradedImages();
  ODLEXTUpgradedFilesToIgnore& ignored = db.GetUpgradedFilesToIgnore();
  ODLEXTUpgradedFiles_OptionalData& upgradedFiles = db.GetUpgradedFiles_OptionalData();
  const Lookup lookups[] = {
      {[&] { external.GetEntry(u"FAM", u"app", u"C:\\old\\app.exe"); },
       [&] { external.GetEntry(u"FAM", u"app", u"C:\\app.exe"); }, 68},
      {[&] { external.GetWithFamily(u"FAM"); }, [&] { external.GetWithFamily(u"OTHER"); }, 68},
      {[&] { ranges.GetEntry(u"FAM", u"app"); }, [&] { ranges.GetEntry(u"OTHER", u"app"); }, 73},
      {[&] { ranges.GetWithFamily(u"FAM"); }, [&] { ranges.GetWithFamily(u"fam"); }, 73},
      {[&] { families.GetWithFamily(u"FAM"); }, [&] { families.GetWithFamily(u"NONE"); }, 69},
      {[&] { families.GetWithMediaSrcPropName(u"FAMSRC"); },
       [&] { families.GetWithMediaSrcPropName(u"FAM"); }, 69},
      {[&] { targets.GetWithTarget(u"T1"); }, [&] { targets.GetWithTarget(u"U1"); }, 70},
      {[&] { targets.GetWithUpgraded(u"U1"); }, [&] { targets.GetWithUpgraded(u"T1"); }, 70},
      {[&] { targetFiles.GetEntry(u"T1", u"app"); }, [&] { targetFiles.GetEntry(u"T2", u"app"); },
       74},
      {[&] { targetFiles.GetWithTarget(u"T1"); }, [&] { targetFiles.GetWithTarget(u"T2"); }, 74},
      {[&] { upgraded.GetWithUpgraded(u"U1"); }, [&] { upgraded.GetWithUpgraded(u"FAM"); }, 72},
      {[&] { upgraded.GetWithFamily(u"FAM"); }, [&] { upgraded.GetWithFamily(u"U1"); }, 72},
      {[&] { ignored.GetEntry(u"U1", u"app"); }, [&] { ignored.GetEntry(u"U2", u"app"); }, 76},
      {[&] { ignored.GetWithUpgraded(u"U1"); }, [&] { ignored.GetWithUpgraded(u"U2"); }, 76},
      {[&] { upgradedFiles.GetEntry(u"U1", u"app"); },
       [&] { upgradedFiles.GetEntry(u"U1", u"App"); }, 75},
      {[&] { upgradedFiles.GetWithUpgraded(u"U1"); }, [&] { upgradedFiles.GetWithUpgraded(u"U2"); },
       75},
      {[&] { db.GetProperties().GetWithName(u"PatchGUID"); },
       [&] { db.GetProperties().GetWithName(u"PatchGuid"); }, 71},
  };
  expectLookups(lookups);
  EXPECT_EQ(&families.GetWithMediaSrcPropName(u"FAMSRC"), fam_);
  EXPECT_EQ(&targets.GetWithUpgraded(u"U1"), t1_);
}

TEST_F(PatchTablesTest, EntriesOfAnImageLeaveOutDeletedRows) {
  ODLEX_OPEN_PACKAGE(db, PackageKind::kIdt);
  addImages(db);
  ODLEXTUpgradedImages& upgraded = db.GetUpgradedImages();
  upgraded.Delete(addRow(upgraded, upgradedOf(u"U3", u"FAM")));
  RWBTree ofFamily;
  upgraded.GetEntries(ofFamily, *fam_);
  EXPECT_EQ(itemsOf(ofFamily), (std::set<RWCollectable*>{u1_}));
  EXPECT_EQ(upgraded.GetEntries().entries(), 3u);

  ODLEXTImageFamilies& families = db.GetImageFamilies();
  families.Delete(families.GetWithFamily(u"OTHER"));
  RWBTree allFamilies;
  EXPECT_EQ(itemsOf(families.GetEntries(allFamilies)), (std::set<RWCollectable*>{fam_}));

  RWBTree ofUpgraded;
  db.GetTargetImages().GetEntries(ofUpgraded, *u1_);
  EXPECT_EQ(itemsOf(ofUpgraded), (std::set<RWCollectable*>{t1_}));
  RWBTree optionsOfTarget;
  db.GetTargetFiles_OptionalData().GetEntries(optionsOfTarget, *t1_);
  EXPECT_EQ(optionsOfTarget.entries(), 1u);
}

}  // namespace
}  // namespace odlex::test
