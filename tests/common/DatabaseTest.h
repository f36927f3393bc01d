#pragma once
// Tests on database objects: each test works on a private copy of a package, opened through
// the list of open databases, which is emptied (unsaved) after the test.

#include <gtest/gtest.h>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/msi/MSIDatabase.h>
#include <odlex/support/DebugOutput.h>
#include <odlex/tables/ODLEXDatabaseError.h>

#include <filesystem>
#include <optional>
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

// Collects what is written to the debug output while it lives.
class DebugCapture {
 public:
  DebugCapture() {
    DebugOutput::setSink([this](const TalString& line) { lines.push_back(line.ToUtf8()); });
  }
  ~DebugCapture() { DebugOutput::resetSink(); }

  std::vector<std::string> lines;
};

// The summary information msibuild gives the oracle idt package, as a table text file.
inline constexpr const char* kIdtSummary =
    "PropertyId\tValue\r\ni2\tl255\r\n_SummaryInformation\tPropertyId\r\n"
    "2\tInstallation Database\r\n3\tIdt Oracle Product\r\n4\tOdlex Fixtures\r\n"
    "7\tIntel;1033\r\n9\t{9C0B2A3D-1E4F-4A5B-8C6D-7E8F9A0B1C2D}\r\n14\t200\r\n15\t2\r\n";

// The idt fixtures (tests/oracle/fixtures/idt) imported by this library into a new package,
// for tests that only need a database to work on; built once per test program. Empty (and
// the test failed) when an import or the commit fails.
inline const std::filesystem::path& ownIdtPackage() {
  static TempDir dir;
  static const std::filesystem::path built = [] {
    const std::filesystem::path path = dir / "own-idt.msi";
    writeFileBytes(dir / "_SummaryInformation.idt", kIdtSummary);
    std::vector<std::filesystem::path> idts = idtFilesIn(fixturePath("idt"));
    idts.push_back(dir / "_SummaryInformation.idt");
    MSIDatabase db(text(path), MSIDatabase::ePersistCreate);
    for (const std::filesystem::path& idt : idts) {
      if (db.Import(text(idt)) != 0u) {
        ADD_FAILURE() << "cannot import " << idt;
        return std::filesystem::path();
      }
    }
    EXPECT_EQ(db.commit(), 0u);
    return path;
  }();
  return built;
}

// Each test has a copy of a package (package()) in a folder of its own: by default the idt
// fixtures imported by this library, or the oracle package of `kind`; it may copy more
// (copyPackage). Fails when the package cannot be built.
class DatabaseTest : public ::testing::Test {
 protected:
  explicit DatabaseTest(std::optional<PackageKind> kind = std::nullopt) : kind_(kind) {}

  void SetUp() override {
    package_ = copyPackage(kind_, "package.msi");
    ASSERT_FALSE(package_.empty());
    ODLEXDatabase::INIT();
  }

  void TearDown() override { ODLEXDatabase::KillDatabaseList(); }

  const std::filesystem::path& package() const { return package_; }
  std::filesystem::path file(const std::string& name) const { return dir_ / name; }
  // The test's copy of the package, opened in place.
  ODLEXDatabase& openPackage() { return ODLEXDatabase::AddDatabaseToList(text(package_)); }

  // Copies the oracle package of `kind` (without one, the library's own idt package) to `name`
  // in the test's folder; empty (the test failed) when the package could not be built.
  std::filesystem::path copyPackage(std::optional<PackageKind> kind, const std::string& name) {
    std::filesystem::path source;
    if (kind) {
      const BuiltPackage& built = testPackage(*kind);
      EXPECT_FALSE(built.file.empty()) << built.error;
      source = built.file;
    } else {
      source = ownIdtPackage();
    }
    if (source.empty())
      return {};
    const std::filesystem::path copy = dir_ / name;
    std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing);
    return copy;
  }

  TempDir dir_;

 private:
  std::optional<PackageKind> kind_;
  std::filesystem::path package_;
};

}  // namespace odlex::test
