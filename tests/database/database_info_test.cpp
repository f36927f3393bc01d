// Product information: reading it from the Property table, checking and writing it back, the
// GUID and version helpers, and reading properties of a package that is not opened; the summary
// information's stamp on every save (read back by msiinfo), SetSummaryInformation, and the
// system table objects.

#include <odlex/support/UserName.h>

#include <map>

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

  // "Field: value" lines of msiinfo suminfo.
  std::map<std::string, std::string> suminfo() {
    std::map<std::string, std::string> fields;
    for (const std::string& line : splitLines(msiinfoSuminfo(package()).out)) {
      const std::size_t colon = line.find(": ");
      if (colon != std::string::npos)
        fields[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return fields;
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
  EXPECT_EQ(suminfo().at("Template"), ODLEXDatabase::GetTemplateSumProp(text(package())).ToUtf8());
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

// Every save stamps the time and the author; SetSummaryInformation always marks the database
// modified, and what it sets is saved beside the package's compression.
TEST_F(DatabaseInfoTest, SummaryInformationIsSetAndEverySaveStampsIt) {
  ASSERT_EQ(suminfo().count("Last saved"), 0u);
  ODLEXDatabase& db = openPackage();
  ODLEXT_SummaryInformation& summary = db.Get_SummaryInformation();
  msidbSumInfoSourceType source{};
  MSIDatabase::ePlatform platform{};
  TalString title, subject, author, comments;
  NullableQuad created, saved;
  ASSERT_TRUE(summary.GetSummaryInformation(source, platform, title, subject, author, comments,
                                            created, saved));
  summary.SetSummaryInformation(title, subject, author, comments);
  EXPECT_TRUE(db.IsModified());
  summary.SetSummaryInformation(u"New title", subject, author, u"Remarks");
  addSearch(db);
  ASSERT_TRUE(db.SaveChanges());
  const std::map<std::string, std::string> fields = suminfo();
  EXPECT_EQ(fields.at("Title"), "New title");
  EXPECT_EQ(fields.at("Comments"), "Remarks");
  EXPECT_EQ(fields.at("Source"), "2 (2)");  // the package's compression stays
  EXPECT_EQ(fields.at("Last author"), CurrentUserName().ToUtf8());
  EXPECT_FALSE(fields.at("Last saved").empty());
  EXPECT_FALSE(summary.GetLastSaveDateTime().IsNull()) << "the stamp is the row's";
}

TEST_F(DatabaseInfoTest, SystemTablesLookupsAndStreamsAndStoragesAddedFromFiles) {
  ODLEXDatabase& db = openPackage();
  ODLEXT_SummaryInformation unloaded;
  // A summary object without a row: GetEntry fails, stamping and persisting do nothing.
  EXPECT_EQ(thrownCode([&] { unloaded.GetEntry(); }), 36);
  EXPECT_EQ(thrownCode([&] { unloaded.Persist(); }), -1);
  EXPECT_EQ(thrownCode([&] { db.Get_TransformView().GetEntry(u"File", u"Name", u"a"); }), 38);
  EXPECT_EQ(thrownCode([&] { db.Get_Storages().Get_StoragesWithID(u"none"); }), 40);
  EXPECT_EQ(thrownCode([&] { db.Get_Tables().GetTableWithID(u"NoSuchTable"); }), 32);
  EXPECT_EQ(db.Get_Tables().GetTableWithID(u"Property").GetName(), u"Property");

  // A stream takes any file; a storage only a compound file. What is added is written on save.
  writeFileBytes(file("data.bin"), "stream data");
  db.Get_Streams().Add(u"Extra", text(file("data.bin")));
  EXPECT_EQ(db.Get_Streams().GetTempEntries().entries(), 1u);
  db.Get_Storages().Add(u"NotAStorage", text(file("data.bin")), false);
  EXPECT_TRUE(db.Get_Storages().GetTempEntries().isEmpty());
  db.Get_Storages().Add(u"Embedded", text(copyPackage("embedded.msi")), false);
  EXPECT_EQ(db.Get_Storages().GetTempEntries().entries(), 1u);
  ASSERT_TRUE(db.SaveChanges());
  EXPECT_EQ(msiinfoExtract(package(), "Extra").out, "stream data");
  EXPECT_EQ(db.Get_Storages().Get_StoragesWithID(u"Embedded").GetName(), u"Embedded");
}

}  // namespace
}  // namespace odlex::test
