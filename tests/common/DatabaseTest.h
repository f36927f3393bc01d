#pragma once
// Tests on database objects: each test works on private copies of oracle packages, opened
// through the list of open databases, which is emptied (unsaved) after the test.

#include <gtest/gtest.h>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/support/DebugOutput.h>
#include <odlex/tables/ODLEXDatabaseError.h>

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

// Collects what is written to the debug output while it lives.
class DebugCapture {
 public:
  DebugCapture() {
    DebugOutput::setSink([this](const TalString& line) { lines.push_back(line.ToUtf8()); });
  }
  ~DebugCapture() { DebugOutput::resetSink(); }

  std::vector<std::string> lines;
};

// Each test has a copy of the package of `kind` (package()), in a folder of its own, and may
// copy more (copyPackage). Fails when the package cannot be built.
class DatabaseTest : public ::testing::Test {
 protected:
  explicit DatabaseTest(PackageKind kind = PackageKind::kIdt) : kind_(kind) {}

  void SetUp() override {
    package_ = copyPackage(kind_, "package.msi");
    ASSERT_FALSE(package_.empty());
    ODLEXDatabase::INIT();
  }

  void TearDown() override { ODLEXDatabase::KillDatabaseList(); }

  const std::filesystem::path& package() const { return package_; }
  std::filesystem::path file(const std::string& name) const { return dir_ / name; }

  // Copies the package of `kind` to `name` in the test's folder; empty (the test failed) when
  // the package could not be built.
  std::filesystem::path copyPackage(PackageKind kind, const std::string& name) {
    const BuiltPackage& built = testPackage(kind);
    EXPECT_FALSE(built.file.empty()) << built.error;
    if (built.file.empty())
      return {};
    const std::filesystem::path copy = dir_ / name;
    std::filesystem::copy_file(built.file, copy, std::filesystem::copy_options::overwrite_existing);
    return copy;
  }

  TempDir dir_;

 private:
  PackageKind kind_;
  std::filesystem::path package_;
};

// In a DatabaseTest: opens a further copy of the package of `kind`, named after `db`, in place.
#define ODLEX_OPEN_PACKAGE(db, kind)                                    \
  const std::filesystem::path db##Path = copyPackage(kind, #db ".msi"); \
  ASSERT_FALSE(db##Path.empty());                                       \
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(db##Path))

}  // namespace odlex::test
