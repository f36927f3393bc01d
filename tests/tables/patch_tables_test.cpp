// The operations of the patch-creation table objects, on rows added to a copy of the idt
// package: families FAM and OTHER, upgraded images U1 (FAM) and U2 (OTHER), target images T1
// (from U1) and T2 (from U2), and one file "app" of each kind of file row.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

MSIEUpgradedImages upgradedOf(const char16_t* key, const char16_t* family) {
  MSIEUpgradedImages row(key);
  row.SetFamily(family);
  return row;
}

MSIETargetImages targetOf(const char16_t* key, const char16_t* upgraded) {
  MSIETargetImages row(key);
  row.SetUpgraded(upgraded);
  return row;
}

class PatchTablesTest : public DatabaseTest {};

TEST_F(PatchTablesTest, RowsByKeyAndByImage) {
  ODLEXDatabase& db = openPackage();
  ODLEXTExternalFiles& external = db.GetExternalFiles();
  ODLEXTFamilyFileRanges& ranges = db.GetFamilyFileRanges();
  ODLEXTImageFamilies& families = db.GetImageFamilies();
  ODLEXTTargetImages& targets = db.GetTargetImages();
  ODLEXTTargetFiles_OptionalData& targetFiles = db.GetTargetFiles_OptionalData();
  ODLEXTUpgradedImages& upgraded = db.GetUpgradedImages();
  ODLEXTUpgradedFilesToIgnore& ignored = db.GetUpgradedFilesToIgnore();
  ODLEXTUpgradedFiles_OptionalData& upgradedFiles = db.GetUpgradedFiles_OptionalData();
  MSIEImageFamilies family(u"FAM");
  family.SetMediaSrcPropName(u"FAMSRC");
  MSIEImageFamilies& fam = addRow(families, family);
  addRow(families, MSIEImageFamilies(u"OTHER"));
  MSIEUpgradedImages& u1 = addRow(upgraded, upgradedOf(u"U1", u"FAM"));
  addRow(upgraded, upgradedOf(u"U2", u"OTHER"));
  MSIETargetImages& t1 = addRow(targets, targetOf(u"T1", u"U1"));
  addRow(targets, targetOf(u"T2", u"U2"));
  addRow(external, MSIEExternalFiles(u"FAM", u"app", u"C:\\old\\app.exe"));
  addRow(ranges, MSIEFamilyFileRanges(u"FAM", u"app"));
  MSIETargetFiles_OptionalData& targetFile =
      addRow(targetFiles, MSIETargetFiles_OptionalData(u"T1", u"app"));
  addRow(ignored, MSIEUpgradedFilesToIgnore(u"U1", u"app"));
  addRow(upgradedFiles, MSIEUpgradedFiles_OptionalData(u"U1", u"app"));
  addRow(db.GetProperties(), MSIEProperties(u"PatchGUID"));

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
       [&] { families.GetWithMediaSrcPropName(u"FAM"); }, 69, &fam},
      {[&] { return &targets.GetWithTarget(u"T1"); }, [&] { targets.GetWithTarget(u"U1"); }, 70},
      {[&] { return &targets.GetWithUpgraded(u"U1"); }, [&] { targets.GetWithUpgraded(u"T1"); }, 70,
       &t1},
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

  upgraded.Delete(addRow(upgraded, upgradedOf(u"U3", u"FAM")));
  families.Delete(families.GetWithFamily(u"OTHER"));
  const Collector collectors[] = {
      {[&](RWBTree& tree) { upgraded.GetEntries(tree, fam); }, {&u1}},
      {[&](RWBTree& tree) { families.GetEntries(tree); }, {&fam}},
      {[&](RWBTree& tree) { targets.GetEntries(tree, u1); }, {&t1}},
      {[&](RWBTree& tree) { targetFiles.GetEntries(tree, t1); }, {&targetFile}},
  };
  expectCollectors(collectors);
  EXPECT_EQ(upgraded.GetEntries().entries(), 3u) << "the table's own rows, deleted included";
}

}  // namespace
}  // namespace odlex::test
