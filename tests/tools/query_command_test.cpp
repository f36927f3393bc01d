// odlex query with statements that change the package: where it writes and what --json says
// about it. What the statements do to the rows is the library's, tested there and against
// msibuild; a dry run or a failing statement writing nothing is the command walk's.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/PackageTest.h"

namespace odlex::test {
namespace {

using nlohmann::json;
using OdlexQuery = PackageCopyTest;

TEST_F(OdlexQuery, WritesToTheOutputFileOrInPlaceAndSaysWhere) {
  copyPackage(PackageKind::kIdt);
  const std::string original = readFileBytes(package_);
  const std::string package = package_.string();
  const std::string out = (dir_ / "out.msi").string();
  const std::string update = "UPDATE Property SET Value = 'x' WHERE Property = 'ProductName'";

  EXPECT_EQ(json::parse(odlexOutput({"query", package, update, "--json", "--dry-run"})),
            (json{{"written", false}, {"package", package}}));
  EXPECT_EQ(json::parse(odlexOutput({"query", package, update, "-o", out, "--json"})),
            (json{{"written", true}, {"package", out}}));
  EXPECT_EQ(readFileBytes(package_), original);
  EXPECT_TRUE(std::filesystem::exists(out));

  EXPECT_EQ(odlexOutput({"query", package, "DELETE FROM Property WHERE Property = 'ALLUSERS'"}),
            "");
  EXPECT_NE(readFileBytes(package_), original);
}

}  // namespace
}  // namespace odlex::test
