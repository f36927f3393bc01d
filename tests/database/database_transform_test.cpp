// The database object's transform members: a transform written on save while creating one,
// generated from the changes since the file was opened, embedded and applied by name, shown in
// _TransformView, and the error codes of each.

#include <odlex/msi/MSISystemTables.h>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;
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
