#pragma once
// Tests on database objects: each test works on a private copy of a package, opened through
// the list of open databases, which is emptied (unsaved) after the test.

#include <gtest/gtest.h>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/msi/MSIDatabase.h>
#include <odlex/support/DebugOutput.h>
#include <odlex/tables/ODLEXDatabaseError.h>
#include <odlex/tables/ODLEXTables.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/PathText.h"
#include "common/TempDir.h"

namespace odlex::test {

// The code of the ODLEXDatabaseError that `call` throws, or -1 when it throws nothing.
template <class Call>
int thrownCode(Call call) {
  try {
    call();
  } catch (const ODLEXDatabaseError& error) {
    return static_cast<ODLEXDatabaseError::eCodeMeaning>(error);
  }
  return -1;
}

// An AppSearch row for tests that need one edit, and the line msiinfo exports for it.
inline const std::string kSearchRow = "FOUNDPROP\tSearchSig";
inline void addSearch(ODLEXDatabase& db) {
  db.GetAppSearch().Add(MSIEAppSearch(u"FOUNDPROP", u"SearchSig"));
}

// Collects what is written to the debug output while it lives.
class DebugCapture {
 public:
  DebugCapture() {
    DebugOutput::setSink([this](const TalString& line) { lines.push_back(line.ToUtf8()); });
  }
  ~DebugCapture() { DebugOutput::resetSink(); }

  std::vector<std::string> lines;
};

// The idt fixtures imported by this library into a new package, with the summary information
// that msibuild gives the oracle idt package (fixtures/idt-summary), for tests that only need a
// database to work on; built once per test program. Empty (the test failed) when it cannot be.
inline const std::filesystem::path& ownIdtPackage() {
  static TempDir dir;
  static const std::filesystem::path built = [] {
    std::vector<std::filesystem::path> idts = idtFilesIn(fixturePath("idt"));
    idts.push_back(fixturePath("idt-summary/_SummaryInformation.idt"));
    MSIDatabase db(text(dir / "own-idt.msi"), MSIDatabase::ePersistCreate);
    for (const std::filesystem::path& idt : idts) {
      if (db.Import(text(idt)) != 0u) {
        ADD_FAILURE() << "cannot import " << idt;
        return std::filesystem::path();
      }
    }
    EXPECT_EQ(db.commit(), 0u);
    return dir / "own-idt.msi";
  }();
  return built;
}

// Each test has a copy of the library's own idt package (package()) in a folder of its own,
// and may copy more (copyPackage). Fails when the package cannot be built.
class DatabaseTest : public ::testing::Test {
 protected:
  void SetUp() override {
    package_ = copyPackage("package.msi");
    ASSERT_FALSE(package_.empty());
    ODLEXDatabase::INIT();
  }

  void TearDown() override { ODLEXDatabase::KillDatabaseList(); }

  const std::filesystem::path& package() const { return package_; }
  std::filesystem::path file(const std::string& name) const { return dir_ / name; }
  // The test's copy of the package, opened in place.
  ODLEXDatabase& openPackage() { return ODLEXDatabase::AddDatabaseToList(text(package_)); }
  // A copy of the wixl-built package in the test's folder (`name`), opened in place.
  ODLEXDatabase& openWixl(const std::string& name = "wixl.msi") {
    const BuiltPackage& built = testPackage(PackageKind::kWixl);
    EXPECT_FALSE(built.file.empty()) << built.error;
    std::filesystem::copy_file(built.file, file(name),
                               std::filesystem::copy_options::overwrite_existing);
    return ODLEXDatabase::AddDatabaseToList(text(file(name)));
  }

  // A new, empty database declaring schema `version`, written to `name` in the test's folder and
  // opened in place.
  ODLEXDatabase& openNewDatabase(const std::string& name, eSchemaVersion version) {
    MSIDatabase created(version);
    EXPECT_EQ(created.open(text(file(name)), MSIDatabase::ePersistCreate), 0u);
    EXPECT_EQ(created.commit(), 0u);
    created.close(false);
    return ODLEXDatabase::AddDatabaseToList(text(file(name)));
  }

  // Imports the table text `idt` into the package at `path` and saves it.
  void importTable(const std::filesystem::path& path, const std::string& idt) {
    writeFileBytes(file("import.idt"), idt);
    MSIDatabase lower(text(path), MSIDatabase::ePersistDirect);
    EXPECT_EQ(lower.Import(text(file("import.idt"))), 0u);
    EXPECT_EQ(lower.commit(), 0u);
  }

  // Copies the package to `name` in the test's folder; empty when it could not be built.
  std::filesystem::path copyPackage(const std::string& name) {
    if (ownIdtPackage().empty())
      return {};
    const std::filesystem::path copy = dir_ / name;
    std::filesystem::copy_file(ownIdtPackage(), copy,
                               std::filesystem::copy_options::overwrite_existing);
    return copy;
  }

  TempDir dir_;

 private:
  std::filesystem::path package_;
};

}  // namespace odlex::test
