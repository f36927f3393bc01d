#pragma once
// A test run once for every oracle package: skipped when the oracle tools are missing,
// failed when the package could not be built.

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
    if (!haveMsitools())
      GTEST_SKIP() << "msitools are not installed";
    if (GetParam() == PackageKind::kWixl && !haveWixl())
      GTEST_SKIP() << "wixl is not installed";
    const BuiltPackage& built = testPackage(GetParam());
    ASSERT_FALSE(built.file.empty()) << built.error;
    package_ = built.file;
  }

  const std::filesystem::path& package() const { return package_; }

 private:
  std::filesystem::path package_;
};

// Tests on a private copy (package_) of one test package, made by copyPackage: the test is
// skipped when the tools that build the package are missing, and fails when it cannot be built.
class PackageCopyTest : public ::testing::Test {
 protected:
  void copyPackage(PackageKind kind) {
    if (!haveMsitools() || (kind == PackageKind::kWixl && !haveWixl()))
      GTEST_SKIP() << "msitools or wixl are not installed";
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
