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
    targetFile_ =
        &addRow(db.GetTargetFiles_OptionalData(), MSIETargetFiles_OptionalData(u"T1", u"app"));
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
  MSIETargetFiles_OptionalData* targetFile_ = nullptr;
};

TEST_F(PatchTablesTest, LookupsFindTheirRowOrThrowTheTablesCode) {
  ODLEXDatabase& db = openPackage();
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
      {[&] { return &external.GetEntry(u"FAM", u"app", u"C:\\old\\app.exe"); },
       [&] { external.GetEntry(u"FAM", u"app", u"C:\\app.exe"); }, 68},
      {[&] { return &external.GetWithFamily(u"FAM"); }, [&] { external.GetWithFamily(u"OTHER"); },
       68},
      {[&] { return &ranges.GetEntry(u"FAM", u"app"); }, [&] { ranges.GetEntry(u"OTHER", u"app"); },
       73},
      {[&] { return &ranges.GetWithFamily(u"FAM"); }, [&] { ranges.GetWithFamily(u"fam"); }, 73},
      {[&] { return &families.GetWithFamily(u"FAM"); }, [&] { families.GetWithFamily(u"NONE"); },
       69},
      {[&] { return &families.GetWithMediaSrcPropName(u"FAMSRC"); },
       [&] { families.GetWithMediaSrcPropName(u"FAM"); }, 69, fam_},
      {[&] { return &targets.GetWithTarget(u"T1"); }, [&] { targets.GetWithTarget(u"U1"); }, 70},
      {[&] { return &targets.GetWithUpgraded(u"U1"); }, [&] { targets.GetWithUpgraded(u"T1"); }, 70,
       t1_},
      {[&] { return &targetFiles.GetEntry(u"T1", u"app"); },
       [&] { targetFiles.GetEntry(u"T2", u"app"); }, 74},
      {[&] { return &targetFiles.GetWithTarget(u"T1"); }, [&] { targetFiles.GetWithTarget(u"T2"); },
       74},
      {[&] { return &upgraded.GetWithUpgraded(u"U1"); }, [&] { upgraded.GetWithUpgraded(u"FAM"); },
       72},
      {[&] { return &upgraded.GetWithFamily(u"FAM"); }, [&] { upgraded.GetWithFamily(u"U1"); }, 72},
      {[&] { return &ignored.GetEntry(u"U1", u"app"); }, [&] { ignored.GetEntry(u"U2", u"app"); },
       76},
      {[&] { return &ignored.GetWithUpgraded(u"U1"); }, [&] { ignored.GetWithUpgraded(u"U2"); },
       76},
      {[&] { return &upgradedFiles.GetEntry(u"U1", u"app"); },
       [&] { upgradedFiles.GetEntry(u"U1", u"App"); }, 75},
      {[&] { return &upgradedFiles.GetWithUpgraded(u"U1"); },
       [&] { upgradedFiles.GetWithUpgraded(u"U2"); }, 75},
      {[&] { return &db.GetProperties().GetWithName(u"PatchGUID"); },
       [&] { db.GetProperties().GetWithName(u"PatchGuid"); }, 71},
  };
  expectLookups(lookups);
}

TEST_F(PatchTablesTest, EntriesOfAnImageLeaveOutDeletedRows) {
  ODLEXDatabase& db = openPackage();
  addImages(db);
  ODLEXTUpgradedImages& upgraded = db.GetUpgradedImages();
  upgraded.Delete(addRow(upgraded, upgradedOf(u"U3", u"FAM")));
  ODLEXTImageFamilies& families = db.GetImageFamilies();
  families.Delete(families.GetWithFamily(u"OTHER"));
  const Collector collectors[] = {
      {[&](RWBTree& tree) { upgraded.GetEntries(tree, *fam_); }, {u1_}},
      {[&](RWBTree& tree) { families.GetEntries(tree); }, {fam_}},
      {[&](RWBTree& tree) { db.GetTargetImages().GetEntries(tree, *u1_); }, {t1_}},
      {[&](RWBTree& tree) { db.GetTargetFiles_OptionalData().GetEntries(tree, *t1_); },
       {targetFile_}},
  };
  expectCollectors(collectors);
  EXPECT_EQ(upgraded.GetEntries().entries(), 3u) << "the table's own rows, deleted included";
}

}  // namespace
}  // namespace odlex::test
