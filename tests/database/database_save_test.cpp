// Opening into an output file (the source is only read), the open types, and saving, closing and
// rolling back: what reaches the file, the modified state, the package code and the order in
// which related tables are written.

#include <odlex/msi/MSIRows.h>
#include <odlex/msi/MSISystemTables.h>
#include <odlex/support/RWFactory.h>
#include <odlex/tables/ODLEXTables.h>

#include <filesystem>
#include <functional>
#include <vector>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// The package code msiinfo reads from a package's summary information.
std::string packageCodeIn(const fs::path& package) {
  const ProcessResult summary = msiinfoSuminfo(package);
  EXPECT_TRUE(summary.ok()) << summary.describe();
  for (const std::string& line : splitLines(summary.out)) {
    if (line.rfind("Revision number (UUID): ", 0) == 0)
      return line.substr(line.find(": ") + 2);
  }
  return {};
}

class DatabaseSaveTest : public DatabaseTest {};

TEST_F(DatabaseSaveTest, SavedChangesReachTheFileAndTheDatabaseStaysModifiedUntilClosed) {
  ODLEXDatabase& db = openPackage();
  EXPECT_FALSE(db.IsModified());
  addSearch(db);
  EXPECT_TRUE(db.IsModified());
  EXPECT_TRUE(db.SaveChanges());
  EXPECT_TRUE(db.IsModified());
  EXPECT_EQ(msiinfoRows(package(), "AppSearch"), std::vector<std::string>{kSearchRow});
  db.Close(true);
  EXPECT_FALSE(db.IsModified());

  // Changes outside the tables count as modified but are not interior ones.
  db.SetExteriorModify(true);
  EXPECT_TRUE(db.IsModified());
  EXPECT_FALSE(db.GetInteriorModify());
  db.Close(false);
  EXPECT_FALSE(db.GetExteriorModify());
}

bool hostAnswer = false;
int hostAsked = 0;
bool askedHost() {
  ++hostAsked;
  return hostAnswer;
}

// Whether a save renews the package code, by policy, host answer and how the change was made;
// the database's information follows the file, and a code renewed once is not renewed again.
TEST_F(DatabaseSaveTest, PackageCodePolicyDecidesOnSave) {
  struct Case {
    int policy;
    bool (*host)();
    bool answer;
    bool databaseModified;  // the flag a changed table passes to Modify
    bool renewed;
    int asked;
  };
  const Case cases[] = {
      {ODLEXDatabaseInfo::ePackageCodeAlways, nullptr, false, false, false, 0},
      {ODLEXDatabaseInfo::ePackageCodeAlways, nullptr, false, true, true, 0},
      {ODLEXDatabaseInfo::ePackageCodeAskHost, &askedHost, true, true, true, 1},
      {ODLEXDatabaseInfo::ePackageCodeAskHost, &askedHost, false, true, false, 1},
      {ODLEXDatabaseInfo::ePackageCodeAskHost, nullptr, false, true, false, 0},
  };
  for (const Case& c : cases) {
    const fs::path copy = copyPackage("policy.msi");
    const std::string original = packageCodeIn(copy);
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(copy));
    ODLEXDatabaseInfo info = db.GetDatabaseInfo();
    info.packageCodePolicy = c.policy;
    db.SetDatabaseInfo(info, nullptr);
    db.GetError().Modify(c.databaseModified);
    ODLEXDatabase::SetGlobalAutoUpdatePackageCode(c.host);
    hostAnswer = c.answer;
    hostAsked = 0;
    EXPECT_TRUE(db.SaveChanges());
    const std::string saved = packageCodeIn(copy);
    EXPECT_EQ(saved != original, c.renewed) << c.policy << " " << c.answer;
    EXPECT_EQ(hostAsked, c.asked) << c.policy;
    EXPECT_EQ(db.GetDatabaseInfo().packageCode.ToUtf8(), saved);
    EXPECT_EQ(db.GetDatabaseInfo().packageCodeChanged, c.renewed);
    if (c.renewed) {
      db.GetError().Modify(true);
      EXPECT_TRUE(db.SaveChanges());
      EXPECT_EQ(packageCodeIn(copy), saved) << "renewed once since opening";
    }
    ODLEXDatabase::SetGlobalAutoUpdatePackageCode(nullptr);
    db.RemoveFromList(false);
  }
}

TEST_F(DatabaseSaveTest, RollbackPutsTheWorkingFileBackAsFirstOpened) {
  const fs::path output = file("out.msi");
  ODLEXOpenType how(text(output).data());
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()), how);
  addSearch(db);
  db.SaveChanges();
  ASSERT_NE(readFileBytes(output), readFileBytes(package()));
  db.Rollback();
  EXPECT_EQ(readFileBytes(output), readFileBytes(package()));
  EXPECT_EQ(db.GetFilePath(), text(package()));
  EXPECT_EQ(db.GetAppSearch().GetEntries().entries(), 0u);
  EXPECT_FALSE(db.IsModified());
}

TEST_F(DatabaseSaveTest, RollbackOfAnInPlaceDatabaseDropsUnsavedChanges) {
  const std::string before = readFileBytes(package());
  ODLEXDatabase& db = openPackage();
  addSearch(db);
  db.Rollback();
  EXPECT_EQ(db.GetAppSearch().GetEntries().entries(), 0u);
  EXPECT_TRUE(fs::exists(package()));
  EXPECT_EQ(readFileBytes(package()), before);
}

// Table objects of the file-search set that record the order in which they are written.
std::vector<RWClassID> persisted;

template <class Table>
class RecordingTable : public Table {
 public:
  void Persist() override {
    persisted.push_back(this->isA());
    Table::Persist();
  }
};

template <class Table>
void registerClass(RWUserCreator creator) {
  rwAddToFactory(creator, Table::classIsA(), RWStringID(Table::className()));
}

class RelatedTablesTest : public DatabaseSaveTest {
 protected:
  // Has the factory make the recording classes of the file-search tables (or the plain ones).
  static void record(bool recording) {
    registerClasses<ODLEXTAppSearch, ODLEXTCompLocator, ODLEXTRegLocator, ODLEXTDrLocator,
                    ODLEXTIniLocator, ODLEXTSignature>(recording);
  }
  template <class... Tables>
  static void registerClasses(bool recording) {
    (registerClass<Tables>(recording ? &CreateDefault<RecordingTable<Tables>>
                                     : &CreateDefault<Tables>),
     ...);
  }

  void SetUp() override {
    DatabaseSaveTest::SetUp();
    persisted.clear();
    record(true);
  }
  void TearDown() override {
    DatabaseSaveTest::TearDown();
    record(false);
  }
};

TEST_F(RelatedTablesTest, MembersOfATableSetAreWrittenBeforeTheModifiedTable) {
  ODLEXDatabase& db = openPackage();
  addSearch(db);
  db.SaveChanges();
  const std::vector<RWClassID> expected = {ODLEXTObject::eAppSearch,  ODLEXTObject::eCompLocator,
                                           ODLEXTObject::eRegLocator, ODLEXTObject::eDrLocator,
                                           ODLEXTObject::eIniLocator, ODLEXTObject::eSignature,
                                           ODLEXTObject::eAppSearch};
  EXPECT_EQ(persisted, expected);
  EXPECT_TRUE(db.GetTableObject(ODLEXTObject::eSignature, false).IsLoaded());
  // The set is the same however often the database is saved.
  persisted.clear();
  db.GetAppSearch().Add(MSIEAppSearch(u"OTHERPROP", u"SearchSig"));
  db.SaveChanges();
  EXPECT_EQ(persisted, expected);
}

// Opened on a source and an output file, listed that way or pointed at the output once open, the
// source is only read; the output receives the changes and the source's streams.
TEST_F(DatabaseSaveTest, OutputFileOpenWritesOnlyTheOutput) {
  const std::string before = readFileBytes(package());
  const struct {
    const char* name;
    std::function<ODLEXDatabase&(const fs::path& output)> open;
  } ways[] = {
      {"listed with the output",
       [&](const fs::path& output) -> ODLEXDatabase& {
         ODLEXOpenType how(text(output).data());
         ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()), how);
         EXPECT_TRUE(how.IsEnum());
         return db;
       }},
      {"output set once open",
       [&](const fs::path& output) -> ODLEXDatabase& {
         ODLEXDatabase& db = openPackage();
         ODLEXOpenType intoOutput(text(output).data());
         EXPECT_TRUE(db.SetDatabasePath(text(package()), intoOutput));
         return db;
       }},
  };
  for (const auto& way : ways) {
    SCOPED_TRACE(way.name);
    const fs::path output = file(std::string(way.name) + ".msi");
    ODLEXDatabase& db = way.open(output);
    EXPECT_FALSE(db.IsReadOnly());
    EXPECT_EQ(db.GetFilePath(), text(package()));
    EXPECT_EQ(db.GetDatabasePath(), text(output));
    EXPECT_NO_THROW(db.SetCreatingTransform(true));
    db.SetCreatingTransform(false);
    addSearch(db);
    ODLEXDatabase::RemoveDatabaseFromList(text(package()), true);
    EXPECT_EQ(readFileBytes(package()), before);
    EXPECT_EQ(msiinfoRows(output, "AppSearch"), std::vector<std::string>{kSearchRow});
    const ProcessResult sourceStreams = msiinfoStreams(package());
    const ProcessResult outputStreams = msiinfoStreams(output);
    ASSERT_TRUE(sourceStreams.ok() && outputStreams.ok()) << outputStreams.describe();
    EXPECT_TRUE(
        linesEqual(sortedLines(sourceStreams.out), sortedLines(outputStreams.out), "streams"));
  }
}

TEST_F(DatabaseSaveTest, InPlaceDatabaseCannotCreateATransform) {
  ODLEXDatabase& db = openPackage();
  EXPECT_EQ(thrownCode([&] { db.SetCreatingTransform(true); }),
            ODLEXDatabaseError::eCannotCreateTransform);
  db.SetCreatingTransform(false);
  EXPECT_FALSE(db.IsCreatingTransform());
}

TEST_F(DatabaseSaveTest, SourceWithASubStorageCannotBeOpenedIntoAnOutputFile) {
  const fs::path withStorage = file("with-storage.msi");
  fs::copy_file(package(), withStorage);
  {
    MSIDatabase lower(text(withStorage), MSIDatabase::ePersistDirect);
    ASSERT_TRUE(lower.isValid());
    MSIT_Storages storages;
    storages.SetDatabase(lower);
    ASSERT_TRUE(storages.Populate());
    ASSERT_NE(storages.Add(u"Embedded", text(package()), false), nullptr);
    ASSERT_TRUE(storages.Persist());
    ASSERT_EQ(lower.commit(), 0u);
  }
  ODLEXDatabase& db = openPackage();
  ODLEXOpenType intoOutput(text(file("out.msi")).data());
  EXPECT_EQ(thrownCode([&] { db.SetDatabasePath(text(withStorage), intoOutput); }),
            ODLEXDatabaseError::eStorageFileRefused);
}

TEST(OpenTypeTest, KindsAndTheirConversions) {
  const ODLEXOpenType onlyLooking;
  EXPECT_TRUE(onlyLooking.IsOnlyLooking());
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(onlyLooking), MSIDatabase::ePersistReadOnly);
  EXPECT_TRUE(TalString(onlyLooking).isNull());

  const ODLEXOpenType inPlace(MSIDatabase::ePersistDirect);
  EXPECT_TRUE(inPlace.IsEnum());
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(inPlace), MSIDatabase::ePersistDirect);

  ODLEXOpenType output(u"out.msi");
  EXPECT_TRUE(output.IsFilePath());
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(output), MSIDatabase::ePersistReadOnly);
  EXPECT_EQ(TalString(output), u"out.msi");

  const ODLEXOpenType copied = output;
  output = inPlace;
  EXPECT_TRUE(output.IsEnum());
  EXPECT_TRUE(TalString(output).isNull());
  EXPECT_EQ(TalString(copied), u"out.msi");
}

}  // namespace
}  // namespace odlex::test
