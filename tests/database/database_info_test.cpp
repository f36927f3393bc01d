// Product information: reading it from the Property table, checking and writing it back, the
// GUID and version helpers, and reading properties of a package that is not opened.

#include <odlex/tables/ODLEXTables.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

TEST(DatabaseInfoTexts, GuidsAreCheckedUpperCasedAndCut) {
  struct Case {
    const char16_t* text;
    unsigned mask;
    const char16_t* after;  // the text as IsValidGUID leaves it
  };
  const Case cases[] = {
      {u"{6d3f1e2a-4b5c-4d7e-8f90-a1b2c3d4e5f6}", 0, u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}"},
      {u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}xyz", 0, u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}"},
      // 37 characters: too short, and every position present is still checked.
      {u"(6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6", 1 | 2, nullptr},
      {u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5FG}", 4, nullptr},
      {u"{6D3F1E2A04B5C-4D7E-8F90-A1B2C3D4E5F6}", 8, nullptr},
      {u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6)", 16, nullptr},
      {u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6)ab", 16 | 32,
       u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6)AB"},
      {u"", 1, u""},
  };
  for (const Case& c : cases) {
    TalString guid = c.text;
    unsigned mask = 99;
    EXPECT_EQ(ODLEXDatabase::IsValidGUID(guid, mask), c.mask == 0) << TalString(c.text).ToUtf8();
    EXPECT_EQ(mask, c.mask) << TalString(c.text).ToUtf8();
    if (c.after) {
      EXPECT_EQ(guid, c.after);
    }
  }
  EXPECT_EQ(ODLEXDatabase::GetModuleGUID(u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}"),
            u"6D3F1E2A_4B5C_4D7E_8F90_A1B2C3D4E5F6");
  EXPECT_EQ(ODLEXDatabase::GetModuleGUID(u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6"), u"");
}

TEST(DatabaseInfoTexts, SchemaVersionsMapBothWays) {
  EXPECT_EQ(ODLEXDatabase::MungeVersion(u"200"), u"200");
  EXPECT_EQ(ODLEXDatabase::MungeVersion(u"201"), u"") << "not a schema version";
  EXPECT_EQ(ODLEXDatabase::MungeVersion(u""), u"");
  EXPECT_EQ(ODLEXDatabase::DeMungeVersion(u"405"), u"405");
  EXPECT_EQ(ODLEXDatabase::DeMungeVersion(u""), u"");
  EXPECT_EQ(ODLEXDatabase::DeMungeVersion(u"999"), u"") << "the version that names none";
  EXPECT_EQ(ODLEXDatabase::GetVersionFromEnum(eSchema301), u"301");
}

class DatabaseInfoTest : public DatabaseTest {
 protected:
  // Sets the properties, saves, and reads the product information again from the file.
  ODLEXDatabaseInfo reread(ODLEXDatabase& db,
                           const std::vector<std::pair<const char16_t*, const char16_t*>>& set) {
    for (const auto& [name, value] : set)
      db.GetProperty().SetValue(name, value);
    EXPECT_TRUE(db.SaveChanges());
    db.Reload();
    return db.GetDatabaseInfo();
  }
};

TEST_F(DatabaseInfoTest, PropertiesAreConvertedAsRead) {
  ODLEXDatabase& db = openPackage();
  ODLEXDatabaseInfo info = db.GetDatabaseInfo();
  EXPECT_EQ(info.productCode, u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}");
  EXPECT_EQ(info.upgradeCode, u"{0A1B2C3D-4E5F-4061-8273-94A5B6C7D8E9}");
  EXPECT_EQ(info.allUsers, 1);

  info = reread(db, {{u"ALLUSERS", u"2"},
                     {u"ARPNOREMOVE", u"01"},
                     {u"ARPNOREPAIR", u"1"},
                     {u"ARPSIZE", u"2048"}});
  EXPECT_EQ(info.allUsers, 2);
  EXPECT_FALSE(info.noRemove) << "only \"1\" sets a flag";
  EXPECT_TRUE(info.noRepair);
  EXPECT_EQ(info.estimatedSize, 2048);
  EXPECT_EQ(reread(db, {{u"ALLUSERS", u"3"}}).allUsers, 2) << "other values leave it as it was";
  EXPECT_EQ(reread(db, {{u"ALLUSERS", u""}}).allUsers, 0);
  // Without a product code the package code stands in.
  info = reread(db, {{u"ProductCode", u""}});
  EXPECT_EQ(info.productCode, info.packageCode);
}

// A merge module's product code is its module signature's identifier, which the lower layer is
// given as well; the ProductCode property does not count.
TEST_F(DatabaseInfoTest, MergeModuleProductCodeIsTheModuleID) {
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(copyPackage("module.msm")));
  const TalString id = u"Mod.6D3F1E2A_4B5C_4D7E_8F90_A1B2C3D4E5F6";
  MSIEModuleSignature signature(id, 1033);
  signature.SetVersion(u"1.0");
  db.GetModuleSignature().Add(signature);
  ASSERT_TRUE(db.SaveChanges());
  db.Reload();
  EXPECT_EQ(db.GetDatabaseInfo().productCode, id);
  EXPECT_EQ(db.GetDatabase().GetModuleID(), id);
}

TEST_F(DatabaseInfoTest, RecordIsCheckedThenWrittenToTheProperties) {
  ODLEXDatabase& db = openPackage();
  ODLEXDatabaseInfo info = db.GetDatabaseInfo();
  info.productName = u"Produkt \u4E2D";
  info.comments = u"\u4E2D";
  info.productVersion = u"\u4E2D";
  info.upgradeCode = u"\u4E2D";  // not checked
  unsigned mask = 0;
  EXPECT_FALSE(db.IsValid(info, mask));
  EXPECT_EQ(mask, 16u | 1u | 1024u);
  TalString reason;
  db.SetDatabaseInfo(info, &reason);
  EXPECT_EQ(reason, u"1041");
  EXPECT_FALSE(db.IsModified());
  EXPECT_EQ(db.GetDatabaseInfo().productName, u"Idt Oracle Product");

  // A record that fits is written to the properties; cleared values remove theirs.
  info = db.GetDatabaseInfo();
  info.estimatedSize = 12;
  info.allUsers = 0;
  info.productName = u"Renamed Product";
  info.noRemove = true;
  info.manufacturer = TalString();
  db.SetDatabaseInfo(info, &reason);
  EXPECT_EQ(reason, u"0");
  EXPECT_TRUE(db.IsModified());
  for (const auto& [name, value] : {std::pair{u"ARPSIZE", u"12"},
                                    {u"ALLUSERS", u""},
                                    {u"ProductName", u"Renamed Product"},
                                    {u"ARPNOREMOVE", u"1"},
                                    {u"Manufacturer", u""}})
    EXPECT_EQ(db.GetProperty().GetValue(name), value) << TalString(name).ToUtf8();
}

// Properties of a package that is not opened as a database: each failing step has its code and
// its debug line, followed by the line of the lower layer's code.
TEST_F(DatabaseInfoTest, PropertiesOfAnUnopenedPackage) {
  TalString name;
  TalString code;
  ODLEXDatabase::GetProductNameAndCode(name, code, text(package()));
  EXPECT_EQ(name, u"Idt Oracle Product");
  EXPECT_EQ(code, u"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}");
  EXPECT_FALSE(ODLEXDatabase::IsDatabaseFilePathLoaded(text(package())));
  const std::vector<std::string> summary = splitLines(msiinfoSuminfo(package()).out);
  EXPECT_NE(std::find(summary.begin(), summary.end(),
                      "Template: " + ODLEXDatabase::GetTemplateSumProp(text(package())).ToUtf8()),
            summary.end());
  EXPECT_EQ(thrownCode([&] { ODLEXDatabase::GetTemplateSumProp(text(file("missing.msi"))); }),
            ODLEXDatabaseError::eDatabaseOpenFailed);
  EXPECT_EQ(thrownCode([&] {
              ODLEXDatabase::GetProductNameAndCode(name, code, text(file("missing.msi")));
            }),
            ODLEXDatabaseError::eDatabaseOpenFailed);

  const std::filesystem::path noCode = file("no-code.msi");
  const std::filesystem::path noTable = file("no-table.msi");
  const std::filesystem::path idt = file("Property.idt");
  writeFileBytes(idt, "Property\tValue\ns72\tl0\nProperty\tProperty\nProductName\tP\n");
  for (const auto& path : {noCode, noTable}) {
    MSIDatabase db(text(path), MSIDatabase::ePersistCreate);
    if (path == noCode) {
      ASSERT_EQ(db.Import(text(idt)), 0u);
    }
    ASSERT_EQ(db.commit(), 0u);
  }
  struct Case {
    std::filesystem::path package;
    int code;
    std::string line;
  };
  const Case cases[] = {
      {noTable, ODLEXDatabaseError::ePropertyViewFailed,
       "ODLEX: GetDatabaseProperty - can't open view:\r\n"},
      {noCode, ODLEXDatabaseError::ePropertyFetchFailed,
       "ODLEX: GetDatabaseProperty - can't fetch row:\r\n"},
  };
  for (const Case& c : cases) {
    DebugCapture debug;
    EXPECT_EQ(
        thrownCode([&] { ODLEXDatabase::GetProductNameAndCode(name, code, text(c.package)); }),
        c.code);
    ASSERT_GE(debug.lines.size(), 2u) << c.line;
    EXPECT_EQ(debug.lines[0], c.line);
    EXPECT_TRUE(debug.lines[1].starts_with("MSI: ") || debug.lines[1].starts_with("Unknown"))
        << debug.lines[1];
  }
}

}  // namespace
}  // namespace odlex::test
