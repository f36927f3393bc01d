#pragma once
// A test run once for every oracle package: failed when the package could not be built (the
// oracle tools are part of the test setup, so nothing is skipped).

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {

class PackageTest : public ::testing::TestWithParam<PackageKind> {
 protected:
  void SetUp() override {
    const BuiltPackage& built = testPackage(GetParam());
    ASSERT_FALSE(built.file.empty()) << built.error;
    package_ = built.file;
  }

  const std::filesystem::path& package() const { return package_; }

 private:
  std::filesystem::path package_;
};

// Tests on a private copy (package_) of one test package, made by copyPackage: the test fails
// when the package cannot be built.
class PackageCopyTest : public ::testing::Test {
 protected:
  void copyPackage(PackageKind kind) {
    const BuiltPackage& built = testPackage(kind);
    ASSERT_FALSE(built.file.empty()) << built.error;
    std::filesystem::copy_file(built.file, package_);
  }

  TempDir dir_;
  std::filesystem::path package_ = dir_ / "package.msi";
};

inline std::string packageTestName(const ::testing::TestParamInfo<PackageKind>& info) {
  return packageKindName(info.param);
}

}  // namespace odlex::test

// Runs the PackageTest-derived suite `suite` over every oracle package.
#define ODLEX_FOR_EVERY_PACKAGE(suite)                                                             \
  INSTANTIATE_TEST_SUITE_P(Packages, suite, ::testing::ValuesIn(::odlex::test::allPackageKinds()), \
                           ::odlex::test::packageTestName)
