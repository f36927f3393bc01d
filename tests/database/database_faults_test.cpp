// Every file-system call that a database object makes fails in turn (a full disk among them), in
// each way it writes a file: saving in place, closing with a save, importing a table file,
// applying a transform from a file or embedded in the package, merging a module (in place, and
// reading the package into an output file), opening into an output file and saving there, and
// rolling back to the file first opened. After each failure the files are whole: the package as
// it was, or with the edit once its new file was renamed into place; an output file is absent or
// a whole package; no temporary file is left. When no call fails, the steps give what they
// should.

#include <functional>

#include "common/DatabaseTest.h"
#include "common/FaultyFileSystem.h"
#include "common/SmallModule.h"
#include "common/SmallPackage.h"
#include "storage/FileSystem.h"

namespace odlex::test {
namespace {

// ProductName of the package at `path`, or "unreadable".
std::u16string productNameOf(const std::filesystem::path& path) {
  std::u16string name = u"unreadable";
  try {
    ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
    name = ODLEXDatabase::AddDatabaseToList(text(path), readOnly)
               .GetProperty()
               .GetValue(u"ProductName")
               .u16();
  } catch (const ODLEXDatabaseError&) {
  }
  ODLEXDatabase::KillDatabaseList();
  return name;
}

struct Scenario {
  const char* name;
  bool writesOutput;  // else it edits the package in place
  std::function<void(const std::filesystem::path& package, const std::filesystem::path& output)>
      run;
  std::u16string finalName;  // of the package edited in place, or of the output
  // Readies the package and the files in `package`'s folder "in" before the faults begin.
  std::function<void(const std::filesystem::path& package)> prepare = nullptr;
};

ODLEXDatabase& openEdited(const std::filesystem::path& package,
                          const std::filesystem::path* output) {
  ODLEXDatabase* db = nullptr;
  if (output) {
    ODLEXOpenType into(text(*output).data());
    db = &ODLEXDatabase::AddDatabaseToList(text(package), into);
  } else {
    db = &ODLEXDatabase::AddDatabaseToList(text(package));
  }
  db->GetProperty().SetValue(u"ProductName", u"Edited");
  return *db;
}

// Writes in/edit.mst, the transform that changes the package's ProductName to "Transformed".
void writeEditTransform(const std::filesystem::path& package) {
  const auto in = package.parent_path() / "in";
  ODLEXOpenType into(text(in / "edited.msi").data());
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package), into);
  db.GetProperty().SetValue(u"ProductName", u"Transformed");
  EXPECT_TRUE(db.GenerateTransformFromUIInstall(text(in / "edit.mst")));
  ODLEXDatabase::KillDatabaseList();
}

// Puts in/module.msm, a module that merges into the package.
void writeMergedModule(const std::filesystem::path& package) {
  const auto in = package.parent_path() / "in";
  addMergePlace(package);
  writeFileBytes(in / "data", "module data");
  writeSmallModule(in / "module.msm", in / "data");
}

void mergeModule(ODLEXDatabase& db, const std::filesystem::path& package) {
  db.MergeModule(text(package.parent_path() / "in" / "module.msm"), u"Complete", u"TARGETDIR", {});
}

const Scenario kScenarios[] = {
    {"save in place", false,
     [](auto& package, auto&) { openEdited(package, nullptr).SaveChanges(); }, u"Edited"},
    {"close with a save", false,
     [](auto& package, auto&) {
       ODLEXDatabase& db = openEdited(package, nullptr);
       db.PersistTables();
       db.Close(true);
     },
     u"Edited"},
    {"import a table file and save", false,
     [](auto& package, auto&) {
       MSIDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package)).GetDatabase();
       if (db.Import(text(package.parent_path() / "in" / "Property.idt")) == 0)
         db.commit();
     },
     u"Imported"},
    {"apply a transform file and save", false,
     [](auto& package, auto&) {
       ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
       db.ApplyTransform(text(package.parent_path() / "in" / "edit.mst"));
       db.SaveChanges();
     },
     u"Transformed", writeEditTransform},
    {"apply an embedded transform and save", false,
     [](auto& package, auto&) {
       ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
       db.ApplyTransform(u":edit");
       db.SaveChanges();
     },
     u"Transformed",
     [](auto& package) {
       writeEditTransform(package);
       ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
       db.EmbedTransform(text(package.parent_path() / "in" / "edit.mst"), u"edit");
       EXPECT_TRUE(db.SaveChanges());
       ODLEXDatabase::KillDatabaseList();
     }},
    {"merge a module and save", false,
     [](auto& package, auto&) {
       ODLEXDatabase& db = openEdited(package, nullptr);
       mergeModule(db, package);
       db.SaveChanges();
     },
     u"Edited", writeMergedModule},
    {"read the package, merge a module and save into an output file", true,
     [](auto& package, auto& output) {
       ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
       ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package), readOnly);
       ODLEXOpenType into(text(output).data());
       if (!db.SetDatabasePath(text(package), into))
         return;
       db.GetProperty().SetValue(u"ProductName", u"Edited");
       mergeModule(db, package);
       db.SaveChanges();
     },
     u"Edited", writeMergedModule},
    {"save into an output file", true,
     [](auto& package, auto& output) { openEdited(package, &output).SaveChanges(); }, u"Edited"},
    {"roll back to the file first opened", true,
     [](auto& package, auto& output) {
       ODLEXDatabase& db = openEdited(package, &output);
       if (db.SaveChanges())
         db.Rollback();
     },
     u"First"},
};

TEST(DatabaseFaults, AFailureAtAnyCallLeavesEveryFileWhole) {
  ODLEXDatabase::INIT();
  for (const Scenario& scenario : kScenarios) {
    SCOPED_TRACE(scenario.name);
    TempDir dir;
    const auto package = dir / "package.msi";
    const auto output = dir / "output.msi";
    writeSmallPackage(package, "First", "payload");
    writeFileBytes(dir / "in" / "Property.idt",
                   "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nProductName\tImported\r\n");
    if (scenario.prepare)
      scenario.prepare(package);
    const std::string original = readFileBytes(package);
    FaultyFileSystem faulty(storage::FileSystem::real());
    for (std::uint64_t call = 1;; ++call) {
      ASSERT_LT(call, 1000u) << "the steps never ran without a fault";
      writeFileBytes(package, original);
      std::filesystem::remove(output);
      faulty.failAtCall(call);
      {
        storage::ScopedFileSystem use(faulty);
        try {
          scenario.run(package, output);
        } catch (const ODLEXDatabaseError&) {
        }
        ODLEXDatabase::KillDatabaseList();
      }
      const bool faultless = !faulty.failed();
      SCOPED_TRACE(faultless ? "no call failed" : "call " + std::to_string(call) + " failed");
      std::vector<std::filesystem::path> left;
      for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        if (entry.is_regular_file() && entry.path() != package && entry.path() != output)
          left.push_back(entry.path().filename());
      EXPECT_EQ(left, std::vector<std::filesystem::path>{});
      if (scenario.writesOutput) {
        EXPECT_EQ(readFileBytes(package), original);
        const bool present = std::filesystem::exists(output);
        if (faultless) {
          EXPECT_EQ(productNameOf(output), scenario.finalName);
        } else if (present) {
          EXPECT_NE(productNameOf(output), u"unreadable");
        }
      } else if (faultless) {
        EXPECT_EQ(productNameOf(package), scenario.finalName);
      } else if (readFileBytes(package) != original) {
        EXPECT_EQ(productNameOf(package), scenario.finalName);
      }
      if (faultless)
        break;
    }
  }
}

}  // namespace
}  // namespace odlex::test
