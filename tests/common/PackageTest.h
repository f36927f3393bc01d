#pragma once
// A test run once for every oracle package: skipped when the oracle tools are missing,
// failed when the package could not be built.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/Packages.h"

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

inline std::string packageTestName(const ::testing::TestParamInfo<PackageKind>& info) {
  return packageKindName(info.param);
}

}  // namespace odlex::test

// Runs the PackageTest-derived suite `suite` over every oracle package.
#define ODLEX_FOR_EVERY_PACKAGE(suite)                                                             \
  INSTANTIATE_TEST_SUITE_P(Packages, suite, ::testing::ValuesIn(::odlex::test::allPackageKinds()), \
                           ::odlex::test::packageTestName)
