// Table-family operations read the tables as the installer reads them: formatted text, icons by
// source file, removed files, patch-creation wildcards and merge-module identifiers; and the
// checkers, and search and replace in one table and across a package, which only ever match or
// change text columns that are neither keys nor references.

#include <odlex/tables/ODLEXCheckers.h>

#include "common/RowText.h"
#include "msi/schema/Schema.h"
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
  // Properties are formatted as the lower layer formats them (lower_values_test); these are the
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

MSISchemaColumn columnOf(const char16_t* table, const char16_t* column) {
  const auto* schema = odlex::schema::findTable(table);
  return MSISchemaColumn(TalString(table), TalString(column), schema->findColumn(column)->type);
}

TEST(Checkers, MatchOnlyTextColumnsThatAreNoKeyOrReference) {
  const TalString m = u"m";
  const TalString value = u"Value";
  const RWWRegexp anything(u"x*");
  const RWWRegexp unclosed(u"(");
  const ODLEXStringChecker exact(value, 0, RWWString::exact);
  const ODLEXStringChecker folded(value, 0, RWWString::ignoreCase);
  const ODLEXStringChecker before(m, 1, RWWString::exact);
  const ODLEXStringChecker after(m, 7, RWWString::exact);
  const ODLEXRegExpChecker empty(anything);
  const ODLEXRegExpChecker bad(unclosed);
  const struct {
    const ODLEXBaseChecker& checker;
    const char16_t* table;
    const char16_t* column;
    const char16_t* value;
    bool matches;
  } cases[] = {
      {exact, u"Environment", u"Value", u"value", false},
      {folded, u"Environment", u"Value", u"value", true},
      {ODLEXStringChecker(folded), u"Environment", u"Value", u"VALUE", true},
      {folded, u"Environment", u"Value", u"Values", false},  // whole values only
      {before, u"Environment", u"Value", u"a", true},
      {before, u"Environment", u"Value", u"z", false},
      {after, u"Environment", u"Value", u"z", true},
      {after, u"Environment", u"Value", u"a", false},
      {exact, u"Environment", u"Environment", u"Value", false},  // key
      {exact, u"Environment", u"Component_", u"Value", false},   // reference
      {empty, u"Environment", u"Name", u"", true},
      {ODLEXRegExpChecker(empty), u"Environment", u"Name", u"abc", true},
      {empty, u"Environment", u"Environment", u"", false},
      {empty, u"Component", u"Attributes", u"4", false},  // not text
      {bad, u"Environment", u"Name", u"(", false},
      {ODLEXBaseChecker(), u"Environment", u"Name", u"", false},
  };
  TalString text = u"aaa";
  EXPECT_EQ(SubStringReplace(text, u"", u"b"), 0u) << "an empty text is found everywhere";
  EXPECT_EQ(ODLEXTObject().Search(exact), 0u) << "a table object of no table";
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    EXPECT_EQ(cases[i].checker(columnOf(cases[i].table, cases[i].column),
                               MSIRecordColumn::String(TalString(cases[i].value))),
              cases[i].matches);
  }
}

TEST_F(InstallerRulesTest, ReplacesInTextColumnsOnly) {
  const struct {
    const char16_t* find;
    const char16_t* replace;
    unsigned long flags;
    unsigned count;
    const char16_t* name;
    const char16_t* value;
  } cases[] = {
      {u"Contoso", u"Fabrikam", 0, 1, u"CONTOSO_HOME", u"C:\\Fabrikam\\contoso"},
      {u"contoso", u"x", eSearchIgnoreCase, 3, u"x_HOME", u"C:\\x\\x"},
      {u"o", u"oo", 0, 6, u"CONTOSO_HOME", u"C:\\Coontoosoo\\coontoosoo"},
      {u"C:\\Contoso\\contoso", u"D:", eSearchWholeValue, 1, u"CONTOSO_HOME", u"D:"},
      {u"contoso", u"y", eSearchWholeValue, 0, u"CONTOSO_HOME", u"C:\\Contoso\\contoso"},
      // Name cannot be empty: the replacement is not made.
      {u"CONTOSO_HOME", u"", eSearchWholeValue, 0, u"CONTOSO_HOME", u"C:\\Contoso\\contoso"},
      {u"", u"z", 0, 0, u"CONTOSO_HOME", u"C:\\Contoso\\contoso"},
  };
  ODLEXDatabase& db = openPackage();
  ODLEXTEnvironment& table = db.GetEnvironment();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    MSIEEnvironment values(u"Contoso");
    values.SetName(u"CONTOSO_HOME");
    values.SetValue(u"C:\\Contoso\\contoso");
    values.SetComponent(u"Contoso");
    MSIEEnvironment& row = addRow(table, values);
    ASSERT_TRUE(db.SaveChanges());
    EXPECT_EQ(table.SearchAndReplace(cases[i].find, cases[i].replace, cases[i].flags),
              cases[i].count);
    EXPECT_EQ(rowText(row), "Contoso\t" + TalString(cases[i].name).ToUtf8() + "\t" +
                                TalString(cases[i].value).ToUtf8() + "\tContoso");
    EXPECT_EQ(row.IsModified(), cases[i].count > 0);
    table.Delete(row);
  }
}

TEST_F(InstallerRulesTest, PackageWideSearchAndReplaceKeepTheProductsIdentity) {
  ODLEXDatabase& db = openPackage();
  const TalString productCode = db.GetProperty().GetValue(u"ProductCode");
  const RWWRegexp oracle(u"Oracle");
  std::vector<ODLEXSearchMatch> matches;
  const auto found = db.Search(ODLEXRegExpChecker(oracle), &matches);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].table, u"Property");
  ASSERT_EQ(matches.size(), 1u);
  EXPECT_EQ(matches[0].column, u"Value");
  EXPECT_EQ(db.GetProperty().Search(ODLEXRegExpChecker(oracle)), 1u);

  const struct {
    TalString find;
    std::size_t tables;
  } cases[] = {{u"Oracle", 1}, {productCode.subString(1, 8), 0}};
  for (const auto& replace : cases) {
    SCOPED_TRACE(replace.find.ToUtf8());
    EXPECT_EQ(db.SearchAndReplace(replace.find, u"New", 0).size(), replace.tables);
  }
  EXPECT_EQ(db.GetProperty().GetValue(u"ProductCode"), productCode);
}

}  // namespace
}  // namespace odlex::test
