// A save writes the file only when something changed since the last save wrote it: saving
// again, removing from the list with a save and closing with a save after a save write nothing,
// and every kind of change in between is written.

#include <functional>

#include "common/DatabaseTest.h"
#include "storage/FileSystem.h"
#include "storage/ForwardingFileSystem.h"

namespace odlex::test {
namespace {

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

class DatabaseUnchangedSaveTest : public DatabaseTest {};

TEST_F(DatabaseUnchangedSaveTest, WritesOnlyWhatChangedSinceTheLastSave) {
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

}  // namespace
}  // namespace odlex::test
