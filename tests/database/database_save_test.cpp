// Opening into an output file (the source is only read), the open types, and saving, closing and
// rolling back: what reaches the file, the modified state, the package code, the order in which
// related tables are written, and that a save writes the file only when something changed since
// the last save wrote it. The transform members: a transform written on save while creating one,
// generated from the changes since the file was opened, embedded and applied by name, shown in
// _TransformView, and the error codes of each.

#include <odlex/msi/MSIRows.h>
#include <odlex/msi/MSISystemTables.h>
#include <odlex/support/RWFactory.h>

#include <functional>

#include "common/DatabaseTest.h"
#include "storage/FileSystem.h"
#include "storage/ForwardingFileSystem.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

class DatabaseSaveTest : public DatabaseTest {};

TEST_F(DatabaseSaveTest, SavedChangesReachTheFileAndTheDatabaseStaysModifiedUntilClosed) {
  ODLEXDatabase& db = openPackage();
  EXPECT_FALSE(db.IsModified());
  addSearch(db);
  EXPECT_TRUE(db.IsModified());
  EXPECT_TRUE(db.SaveChanges());
  EXPECT_TRUE(db.IsModified());
  EXPECT_EQ(msiinfoRows(package(), "AppSearch"), std::vector<std::string>{kSearchRow});
  EXPECT_EQ(thrownCode([&] { db.SetCreatingTransform(true); }),
            ODLEXDatabaseError::eCannotCreateTransform)
      << "a database opened in place";
  EXPECT_FALSE(db.IsCreatingTransform()) << "the refusal changes nothing";
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
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(copy));
    ODLEXDatabaseInfo info = db.GetDatabaseInfo();
    const TalString original = info.packageCode;
    info.packageCodePolicy = c.policy;
    db.SetDatabaseInfo(info, nullptr);
    db.GetError().Modify(c.databaseModified);
    ODLEXDatabase::SetGlobalAutoUpdatePackageCode(c.host);
    hostAnswer = c.answer;
    hostAsked = 0;
    EXPECT_TRUE(db.SaveChanges());
    const TalString saved = db.GetDatabaseInfo().packageCode;
    EXPECT_EQ(saved != original, c.renewed) << c.policy << " " << c.answer;
    EXPECT_EQ(hostAsked, c.asked) << c.policy;
    EXPECT_EQ(db.GetDatabaseInfo().packageCodeChanged, c.renewed);
    if (c.renewed) {
      db.GetError().Modify(true);
      EXPECT_TRUE(db.SaveChanges());
    }
    ODLEXDatabase::SetGlobalAutoUpdatePackageCode(nullptr);
    db.RemoveFromList(false);
    // The file holds the code the database gave, renewed once since opening.
    EXPECT_EQ(ODLEXDatabase::AddDatabaseToList(text(copy)).GetDatabaseInfo().packageCode, saved);
    ODLEXDatabase::KillDatabaseList();
  }
}

// Rolling back drops what was saved and what was not: an output file is the package as first
// opened again, and a package opened in place keeps its file.
TEST_F(DatabaseSaveTest, RollbackPutsTheFileBackAsFirstOpened) {
  const std::string before = readFileBytes(package());
  for (const bool intoOutput : {true, false}) {
    SCOPED_TRACE(intoOutput ? "into an output file" : "in place");
    ODLEXOpenType how = intoOutput ? ODLEXOpenType(text(file("out.msi")).data())
                                   : ODLEXOpenType(MSIDatabase::ePersistDirect);
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()), how);
    addSearch(db);
    if (intoOutput) {
      ASSERT_TRUE(db.SaveChanges());
      ASSERT_NE(readFileBytes(file("out.msi")), before);
    }
    db.Rollback();
    EXPECT_EQ(readFileBytes(intoOutput ? file("out.msi") : package()), before);
    EXPECT_EQ(db.GetFilePath(), text(package()));
    EXPECT_EQ(db.GetAppSearch().GetEntries().entries(), 0u);
    EXPECT_FALSE(db.IsModified());
    ODLEXDatabase::KillDatabaseList();
  }
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

// Has the factory make the recording classes of the file-search tables (or the plain ones).
template <class... Tables>
void registerClasses(bool recording) {
  (rwAddToFactory(recording ? &CreateDefault<RecordingTable<Tables>> : &CreateDefault<Tables>,
                  Tables::classIsA(), RWStringID(Tables::className())),
   ...);
}

void record(bool recording) {
  registerClasses<ODLEXTAppSearch, ODLEXTCompLocator, ODLEXTRegLocator, ODLEXTDrLocator,
                  ODLEXTIniLocator, ODLEXTSignature>(recording);
}

class RelatedTablesTest : public DatabaseSaveTest {
 protected:
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

// A copy owns its own output path: it outlives the assignment of another kind to the original.
TEST(OpenTypeTest, CopiesOwnTheirOutputPath) {
  ODLEXOpenType output(u"out.msi");
  const ODLEXOpenType copied = output;
  output = ODLEXOpenType(MSIDatabase::ePersistDirect);
  EXPECT_TRUE(output.IsEnum());
  EXPECT_TRUE(TalString(output).isNull());
  EXPECT_EQ(TalString(copied), u"out.msi");
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(copied), MSIDatabase::ePersistReadOnly)
      << "the source of an output file is only read";
}

// Counts the files created: every write of a package makes its new file beside the old one.
class CreationCounter final : public storage::ForwardingFileSystem {
 public:
  using ForwardingFileSystem::ForwardingFileSystem;
  std::unique_ptr<storage::WritableFile> createFile(const std::filesystem::path& path,
                                                    const storage::NewFileOptions& options,
                                                    std::string& error) override {
    ++created;
    return ForwardingFileSystem::createFile(path, options, error);
  }
  int created = 0;
};

struct Case {
  const char* name;
  // Runs after an edit and a first save.
  std::function<void(ODLEXDatabase&)> then;
  int writes;  // of the package, the first save's included
};

const Case kCases[] = {
    {"save again", [](ODLEXDatabase& db) { EXPECT_TRUE(db.SaveChanges()); }, 1},
    {"remove from the list with a save", [](ODLEXDatabase& db) { db.RemoveFromList(true); }, 1},
    {"close with a save", [](ODLEXDatabase& db) { db.Close(true); }, 1},
    {"change a row and save",
     [](ODLEXDatabase& db) {
       db.GetProperty().SetValue(u"ProductName", u"Again");
       EXPECT_TRUE(db.SaveChanges());
     },
     2},
    {"delete a row and save",
     [](ODLEXDatabase& db) {
       ODLEXTAppSearch& searches = db.GetAppSearch();
       searches.Delete(static_cast<MSIEAppSearch&>(**searches.GetEntries().begin()));
       EXPECT_TRUE(db.SaveChanges());
     },
     2},
    {"change the summary information and remove with a save",
     [](ODLEXDatabase& db) {
       db.Get_SummaryInformation().SetSummaryInformation(u"Title", u"Subject", u"Author", u"");
       db.RemoveFromList(true);
     },
     2},
    {"change a table through the lower layer and save",
     [](ODLEXDatabase& db) {
       ASSERT_EQ(db.GetDatabase().AddTable(u"ZrChangeLog"), 0u);
       EXPECT_TRUE(db.SaveChanges());
     },
     2},
};

TEST_F(DatabaseSaveTest, WritesOnlyWhatChangedSinceTheLastSave) {
  for (const Case& step : kCases) {
    SCOPED_TRACE(step.name);
    const std::filesystem::path package = copyPackage("case.msi");
    CreationCounter counter(storage::FileSystem::real());
    storage::ScopedFileSystem use(counter);
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
    addSearch(db);
    ASSERT_TRUE(db.SaveChanges());
    step.then(db);
    EXPECT_EQ(counter.created, step.writes);
    ODLEXDatabase::KillDatabaseList();
  }
}

using Error = ODLEXDatabaseError;

class DatabaseTransformTest : public DatabaseTest {
 protected:
  // The transform that adds kSearchRow to the package, made from an output-file open.
  fs::path searchTransform() {
    ODLEXOpenType how(text(file("work.msi")).data());
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()), how);
    addSearch(db);
    const fs::path transform = file("search.mst");
    EXPECT_TRUE(db.GenerateTransformFromUIInstall(text(transform)));
    ODLEXDatabase::KillDatabaseList();
    return transform;
  }
};

TEST_F(DatabaseTransformTest, SavingWhileCreatingWritesTheTransformOfTheEdits) {
  const std::string before = readFileBytes(package());
  ODLEXOpenType how(text(file("out.msi")).data());
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()), how);
  db.SetCreatingTransform(true);
  addSearch(db);
  ASSERT_TRUE(db.SaveChanges());
  EXPECT_EQ(db.GetTransformPath(), text(file("out.mst")));
  ODLEXDatabase::KillDatabaseList();
  EXPECT_EQ(readFileBytes(package()), before);

  ODLEXDatabase& original = openPackage();
  original.ApplyTransform(text(file("out.mst")));
  ASSERT_TRUE(original.SaveChanges());
  EXPECT_EQ(msiinfoRows(package(), "AppSearch"), std::vector<std::string>{kSearchRow});
}

// Embedded as a sub-storage, the transform is shown in _TransformView with the view bit, applied
// by name, and refused (code 44, the conflict in the error list) when applied a second time. What
// an applied embedded transform saves is checked by database_faults_test.
TEST_F(DatabaseTransformTest, EmbeddedTransformIsShownAndAppliedByName) {
  const fs::path transform = searchTransform();
  ODLEXDatabase& db = openPackage();
  db.EmbedTransform(text(transform), u"search");
  ASSERT_TRUE(db.SaveChanges());
  db.Reload();

  db.ApplyTransform(u":search", 0x100);
  std::vector<std::string> shown;
  for (RWCollectable* item : db.Get_TransformView().GetEntries()) {
    const auto* row = static_cast<const MSIE_TransformView*>(item);
    shown.push_back(row->GetTable().ToUtf8() + "/" + row->GetColumn().ToUtf8() + "/" +
                    row->GetRow().ToUtf8());
  }
  // The package has no AppSearch table: the transform creates it, with its two columns.
  EXPECT_EQ(shown,
            (std::vector<std::string>{"AppSearch/CREATE/", "AppSearch/INSERT/FOUNDPROP\tSearchSig",
                                      "AppSearch/Property/", "AppSearch/Signature_/"}));

  db.ApplyTransform(u":search");
  db.GetDatabase().ClearErrors();
  EXPECT_EQ(thrownCode([&] { db.ApplyTransform(u":search"); }), Error::eApplyTransformFailed);
  ASSERT_NE(db.GetDatabase().GetError(), nullptr);
}

TEST_F(DatabaseTransformTest, FailuresHaveTheirCodes) {
  const fs::path transform = searchTransform();
  struct Case {
    const char* name;
    std::function<void(ODLEXDatabase&)> call;
    int code;
  };
  const std::vector<Case> cases = {
      {"apply a missing file",
       [&](ODLEXDatabase& db) { db.ApplyTransform(text(file("none.mst"))); },
       Error::eApplyTransformFailed},
      {"apply a missing embedded transform", [](ODLEXDatabase& db) { db.ApplyTransform(u":none"); },
       Error::eApplyTransformFailed},
      {"generate from a missing base",
       [&](ODLEXDatabase& db) { db.GenerateTransform(text(file("none.msi")), text(transform)); },
       Error::eGenerateTransformFailed},
      {"generate into a folder that does not exist",
       [&](ODLEXDatabase& db) {
         addSearch(db);
         db.GenerateTransform(text(package()), text(file("no/such/dir.mst")));
       },
       Error::eTransformServiceFailed},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    ODLEXDatabase& db = openPackage();
    EXPECT_EQ(thrownCode([&] { test.call(db); }), test.code);
    ODLEXDatabase::KillDatabaseList();
  }
  ODLEXDatabase& db = openPackage();
  EXPECT_FALSE(db.GenerateTransform(text(package()), text(file("same.mst"))));
  EXPECT_FALSE(fs::exists(file("same.mst")));
}

}  // namespace
}  // namespace odlex::test
