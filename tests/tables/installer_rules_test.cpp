// Table-family operations read the tables as the installer reads them: formatted text, icons by
// source file, removed files, patch-creation wildcards, and merge-module identifiers.

#include <functional>
#include <set>
#include <vector>

#include "common/RowText.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

// On a copy of the idt package: file MainExe (IDTAPP~1.EXE|idt app.exe) of component MainExe, in
// BinDir = [ProgramFilesFolder]IDTPROD|Idt Product\bin.
class InstallerRulesTest : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    db_ = &openPackage();
  }

  ODLEXDatabase* db_ = nullptr;
};

TEST_F(InstallerRulesTest, ExpandAnswersTheFormsThePackageHolds) {
  // Properties are formatted as the lower layer formats them (translate_test); these are the
  // forms only the package can answer.
  ODLEXTProperty& properties = db_->GetProperty();
  properties.SetValue(u"PB", u"x");
  const std::vector<std::pair<const char16_t*, const char16_t*>> cases = {
      {u"[#MainExe]", u"[ProgramFilesFolder]Idt Product\\bin\\idt app.exe"},
      {u"[!MainExe]", u"[ProgramFilesFolder]Idt Product\\bin\\idt app.exe"},
      {u"[$MainExe] [PB]", u"[ProgramFilesFolder]Idt Product\\bin\\ x"},
      {u"[#Gone] [$Gone] [Unset]", u"[#Gone] [$Gone] [Unset]"},
  };
  for (const auto& [text, expanded] : cases) {
    SCOPED_TRACE(TalString(text).ToUtf8());
    EXPECT_EQ(properties.Expand(text), expanded);
  }
}

TEST_F(InstallerRulesTest, IconsAreFoundByTheFileTheirDataCameFrom) {
  const std::filesystem::path source = file("app.ico");
  writeFileBytes(source, "icon");
  ODLEXTIcon& icons = db_->GetIcon();
  icons.Add(u"FromFile", text(source));
  ASSERT_EQ(icons.GetTempEntries().entries(), 1u);
  EXPECT_EQ(&icons.GetIconWithSourceFile(text(source)), *icons.GetTempEntries().begin());
  icons.Add(u"Missing", text(file("missing.ico")));
  EXPECT_EQ(icons.GetTempEntries().entries(), 0u);
  // Rows read from the package came from no file, not from the empty path.
  ASSERT_TRUE(db_->SaveChanges());
  db_->Reload();
  for (const TalString& unknown : {TalString(u""), text(source), text(file("other.ico"))})
    EXPECT_EQ(thrownCode([&] { icons.GetIconWithSourceFile(unknown); }),
              ODLEXDatabaseError::eIconNotFound);
}

TEST_F(InstallerRulesTest, ARemovedFileStartsInItsComponentsFolderAtUninstall) {
  MSIEComponent main(u"Main");
  main.SetDirectoryID(u"INSTALLDIR");
  MSIERemoveFile row(u"Logs");
  row.SetFileName(u"*.log");
  db_->GetRemoveFile().init(row, main);
  EXPECT_EQ(rowText(row), "Logs\tMain\t*.log\tINSTALLDIR\t" +
                              std::to_string(ODLEXTRemoveFile::eRemoveOnUninstall));
}

TEST_F(InstallerRulesTest, FilesToIgnoreHonourTheWildcards) {
  ODLEXTUpgradedFilesToIgnore& ignored = db_->GetUpgradedFilesToIgnore();
  for (const auto& [image, ftk] :
       std::vector<std::pair<const char16_t*, const char16_t*>>{{u"Old", u"App"},
                                                                {u"*", u"Shared"},
                                                                {u"Old", u"Lib*"},
                                                                {u"*", u"Li*"},
                                                                {u"Other", u"X"}})
    addRow(ignored, MSIEUpgradedFilesToIgnore(image, ftk));
  struct Case {
    const char16_t* image;
    const char16_t* file;
    const char16_t* matchedImage;  // null: no row leaves the file out
    const char16_t* matchedFtk;
  };
  for (const Case& c :
       {Case{u"Old", u"App", u"Old", u"App"}, Case{u"New", u"Shared", u"*", u"Shared"},
        Case{u"Old", u"Lib2", u"Old", u"Lib*"}, Case{u"New", u"Lib2", u"*", u"Li*"},
        Case{u"Old", u"Li", u"*", u"Li*"}, Case{u"New", u"App", nullptr, nullptr}}) {
    SCOPED_TRACE(TalString(c.image).ToUtf8() + "/" + TalString(c.file).ToUtf8());
    if (!c.matchedImage) {
      EXPECT_EQ(thrownCode([&] { ignored.GetEntry(c.image, c.file); }),
                ODLEXDatabaseError::eUpgradedFilesToIgnoreNotFound);
      continue;
    }
    const MSIEUpgradedFilesToIgnore& row = ignored.GetEntry(c.image, c.file);
    EXPECT_EQ(row.GetUpgraded(), c.matchedImage);
    EXPECT_EQ(row.GetFTK(), c.matchedFtk);
  }
  RWBTree forNew;
  std::set<std::u16string> ftks;
  for (RWCollectable* item : ignored.GetEntries(forNew, MSIEUpgradedImages(u"New")))
    ftks.insert(static_cast<MSIEUpgradedFilesToIgnore*>(item)->GetFTK().u16());
  EXPECT_EQ(ftks, (std::set<std::u16string>{u"Shared", u"Li*"}));
  EXPECT_EQ(ignored.GetWithUpgraded(u"New").GetFTK(), u"Li*");
  EXPECT_EQ(ignored.GetWithUpgraded(u"Old").GetFTK(), u"App");
}

TEST(ModuleIdentifiers, ConvertBetweenTheTwoForms) {
  using Signature = ODLEXTModuleSignature;
  const TalString id = u"Mod.A1B2C3D4_E5F6_A7B8_C9D0_E1F2A3B4C5D6";
  EXPECT_EQ(Signature::CombineMergeModuleID(u"Mod", u"{A1B2C3D4-E5F6-A7B8-C9D0-E1F2A3B4C5D6}"), id);
  EXPECT_EQ(Signature::GetModuleGUIDFromDisplayGUID(u"a1-{b}2"), u"a1_b2");
  EXPECT_EQ(Signature::GetDisplayGUIDFromModuleGUID(u"a1_b2"), u"{a1-b2}");
  struct Case {
    const char16_t* id;
    const char16_t* name;
    const char16_t* guid;
  };
  for (const Case& c : {Case{u"Mod.A1B2C3D4_E5F6_A7B8_C9D0_E1F2A3B4C5D6", u"Mod",
                             u"{A1B2C3D4-E5F6-A7B8-C9D0-E1F2A3B4C5D6}"},
                        Case{u"NoFullStop", u"kept", u"kept"}, Case{u".X", u"kept", u"{X}"},
                        Case{u"Mod.", u"Mod", u"kept"}, Case{u"A.B.C", u"A", u"{B.C}"}}) {
    SCOPED_TRACE(TalString(c.id).ToUtf8());
    TalString name = u"kept", guid = u"kept";
    Signature::SplitMergeModuleID(name, guid, c.id);
    EXPECT_EQ(name, c.name);
    EXPECT_EQ(guid, c.guid);
  }
}

TEST_F(InstallerRulesTest, ModuleTablesFollowTheirSignature) {
  const TalString old = u"Mod.OLD";
  db_->GetModuleComponents().Add(MSIEModuleComponents(u"C1", old, 1033));
  db_->GetModuleDependency().Add(MSIEModuleDependency(old, 1033, u"Req.X", 0));
  db_->GetModuleExclusion().Add(MSIEModuleExclusion(old, 1033, u"Ex.Y", 0));
  // The signature, given its GUID in the display form: the rows get the installer's form.
  const MSIEModuleSignature signature(u"Mod.{A1-B2}", 1031);
  db_->GetModuleComponents().FixComponents(signature);
  db_->GetModuleDependency().FixDependency(signature);
  db_->GetModuleExclusion().FixExclusion(signature);
  const TalString fixed = u"Mod.A1_B2";
  EXPECT_TRUE(db_->GetModuleComponents().Lookup(TalString(u"C1"), fixed, short{1031}));
  EXPECT_TRUE(db_->GetModuleDependency().Lookup(fixed, short{1031}, TalString(u"Req.X"), short{0}));
  EXPECT_TRUE(db_->GetModuleExclusion().Lookup(fixed, short{1031}, TalString(u"Ex.Y"), short{0}));
  EXPECT_FALSE(db_->GetModuleComponents().Lookup(TalString(u"C1"), old, short{1033}));
}

}  // namespace
}  // namespace odlex::test
