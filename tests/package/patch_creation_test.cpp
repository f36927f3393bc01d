// Patch-creation files open and edit like any other database; building a patch package from
// one needs the Windows patch wizard and fails with its code and a text that says so.

#include <gtest/gtest.h>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

TEST(PatchCreationTest, EditsSaveAndBuildingAPatchIsRefusedPlainly) {
  TempDir dir;
  writeFileBytes(dir / "ImageFamilies.idt",
                 "Family\tMediaSrcPropName\tMediaDiskId\tFileSequenceStart\tDiskPrompt\t"
                 "VolumeLabel\r\ns8\tS72\tI2\tI4\tS128\tS32\r\nImageFamilies\tFamily\r\n"
                 "FAM\tFAMSRC\t2\t100\t\t\r\n");
  const std::filesystem::path pcp = dir / "patch.pcp";
  ASSERT_TRUE(msibuildImport(pcp, {dir / "ImageFamilies.idt"}));

  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(pcp));
  EXPECT_TRUE(db.IsPCP());
  EXPECT_EQ(db.GetImageFamilies().GetWithFamily(u"FAM").GetMediaSrcPropName(), u"FAMSRC");
  db.GetImageFamilies().Add(MSIEImageFamilies(u"NEW"));
  ASSERT_TRUE(db.SaveChanges());
  const std::string saved = readFileBytes(pcp);

  EXPECT_EQ(db.CreatePatchPackage(text(dir / "patch.msp")), 120u);
  EXPECT_NE(db.GetTalError().GetText().ToUtf8().find("patch wizard"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(dir / "patch.msp"));
  ODLEXDatabase::KillDatabaseList();

  EXPECT_EQ(readFileBytes(pcp), saved);
  EXPECT_EQ(msiinfoRows(pcp, "ImageFamilies"),
            (std::vector<std::string>{"FAM\tFAMSRC\t2\t100\t\t", "NEW\t\t\t\t\t"}));
}

}  // namespace
}  // namespace odlex::test
