// `odlex query` runs a SELECT on a package msibuild wrote and prints one row per line, fields
// separated by tabs, null as an empty field.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/Packages.h"

namespace odlex::test {
namespace {

struct QueryCase {
  const char* name;
  PackageKind package;
  const char* sql;
  std::vector<std::string> rows;  // in output order
};

class QueryCommand : public ::testing::TestWithParam<QueryCase> {};

TEST_P(QueryCommand, PrintsTheSelectedRows) {
  const QueryCase& query = GetParam();
  const BuiltPackage& built = testPackage(query.package);
  ASSERT_FALSE(built.file.empty()) << built.error;
  ProcessResult odlex = runOdlex({"query", built.file.string(), query.sql});
  ASSERT_TRUE(odlex.ok()) << odlex.describe();
  EXPECT_TRUE(linesEqual(query.rows, splitLines(asUtf8(odlex.out, 1252)), query.sql));
}

const QueryCase kQueries[] = {
    {"WhereStringEquals",
     PackageKind::kIdt,
     "SELECT `Property`, `Value` FROM `Property` WHERE `Property` = 'ProductName'",
     {"ProductName\tIdt Oracle Product"}},
    {"NonAsciiValue",
     PackageKind::kIdt,
     "SELECT `Value` FROM `Property` WHERE `Property` = 'WelcomeText'",
     {"Willkommen bei Müller & Söhne – Größe ½ für 5 €"}},
    {"ThreeByteStringReferences",
     PackageKind::kManyStrings,
     "SELECT `Name`, `Value`, `Number` FROM `ManyStrings` WHERE `Name` = 'K1071999'",
     {"K1071999\tvalue-503993\t35999"}},
};

INSTANTIATE_TEST_SUITE_P(Queries, QueryCommand, ::testing::ValuesIn(kQueries),
                         [](const ::testing::TestParamInfo<QueryCase>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace odlex::test
