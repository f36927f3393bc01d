// The summary information's stamp on every save (read back by msiinfo), SetSummaryInformation,
// and the lookups of the system table objects.

#include <odlex/support/UserName.h>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

class SystemTablesTest : public DatabaseTest {
 protected:
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

TEST_F(SystemTablesTest, EverySaveStampsTheTimeAndTheAuthor) {
  ASSERT_EQ(suminfo().count("Last saved"), 0u);
  ODLEXDatabase& db = openPackage();
  addSearch(db);
  ASSERT_TRUE(db.SaveChanges());
  std::map<std::string, std::string> fields = suminfo();
  EXPECT_EQ(fields["Last author"], CurrentUserName().ToUtf8());
  EXPECT_FALSE(fields["Last saved"].empty());
  EXPECT_EQ(fields["Title"], "Installation Database");

  // The stamp is the row's: what msiinfo reads is what the library reads back.
  const NullableQuad saved = db.Get_SummaryInformation().GetLastSaveDateTime();
  EXPECT_FALSE(saved.IsNull());
}

TEST_F(SystemTablesTest, SetSummaryInformationAlwaysMarksTheDatabaseModified) {
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
  ASSERT_TRUE(db.SaveChanges());
  const std::map<std::string, std::string> fields = suminfo();
  EXPECT_EQ(fields.at("Title"), "New title");
  EXPECT_EQ(fields.at("Comments"), "Remarks");
  EXPECT_EQ(fields.at("Source"), "2 (2)");  // the package's compression stays
}

TEST_F(SystemTablesTest, LookupsOfSystemTables) {
  ODLEXDatabase& db = openPackage();
  ODLEXT_SummaryInformation unloaded;
  // A summary object without a row: GetEntry fails, stamping and persisting do nothing.
  EXPECT_EQ(thrownCode([&] { unloaded.GetEntry(); }), 36);
  EXPECT_EQ(thrownCode([&] { unloaded.Persist(); }), -1);
  EXPECT_EQ(thrownCode([&] { db.Get_TransformView().GetEntry(u"File", u"Name", u"a"); }), 38);
  EXPECT_EQ(thrownCode([&] { db.Get_Storages().Get_StoragesWithID(u"none"); }), 40);
  EXPECT_EQ(thrownCode([&] { db.Get_Tables().GetTableWithID(u"NoSuchTable"); }), 32);
  EXPECT_EQ(db.Get_Tables().GetTableWithID(u"Property").GetName(), u"Property");
}

// A stream takes any file; a storage only a compound file. What is added is written on save.
TEST_F(SystemTablesTest, StreamsAndStoragesAddedFromFiles) {
  writeFileBytes(file("data.bin"), "stream data");
  ODLEXDatabase& db = openPackage();
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
