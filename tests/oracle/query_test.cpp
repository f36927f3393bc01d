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
    {"IntegerComparisonOrderedByInteger",
     PackageKind::kIdt,
     "SELECT `File`, `FileSize` FROM `File` WHERE `FileSize` > 1000 ORDER BY `FileSize`",
     {"Handbuch\t4096", "HelperDll\t123456", "MainExe\t2147483647"}},
    {"OrderedByString",
     PackageKind::kIdt,
     "SELECT `Component`, `Directory_` FROM `Component` WHERE `Directory_` = 'BinDir' "
     "ORDER BY `Component`",
     {"Helpers\tBinDir", "MainExe\tBinDir"}},
    {"NullsPrintEmpty",
     PackageKind::kIdt,
     "SELECT `Key`, `Short`, `Long`, `Text` FROM `OdlexTypes` WHERE `Short` IS NULL",
     {"nulls\t\t\t"}},
    {"NegativeNumbers",
     PackageKind::kIdt,
     "SELECT `Key`, `Short` FROM `OdlexTypes` WHERE `Short` < 1 ORDER BY `Short`",
     {"min\t-32767", "with spaces\t-1", "zero\t0"}},
    {"AndOr",
     PackageKind::kIdt,
     "SELECT `Feature`, `Level` FROM `Feature` WHERE `Level` > 1 AND `Display` = 2 OR "
     "`Feature` = 'Complete' ORDER BY `Feature`",
     {"Complete\t1", "Docs\t3"}},
    {"ThreeByteStringReferences",
     PackageKind::kManyStrings,
     "SELECT `Name`, `Value`, `Number` FROM `ManyStrings` WHERE `Name` = 'K1071999'",
     {"K1071999\tvalue-503993\t35999"}},
    {"NoMatch",
     PackageKind::kSample,
     "SELECT `Action` FROM `InstallExecuteSequence` WHERE `Sequence` > 30000",
     {}},
    {"SampleSequenceOrder",
     PackageKind::kSample,
     "SELECT `Action`, `Sequence` FROM `InstallExecuteSequence` WHERE `Sequence` < 1000 "
     "ORDER BY `Sequence`",
     {"LaunchConditions\t100", "CostInitialize\t800", "FileCost\t900"}},
};

INSTANTIATE_TEST_SUITE_P(Queries, QueryCommand, ::testing::ValuesIn(kQueries),
                         [](const ::testing::TestParamInfo<QueryCase>& info) {
                           return std::string(info.param.name);
                         });

TEST(QueryErrors, BadStatementsFailWithAMessage) {
  const BuiltPackage& built = testPackage(PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  for (const char* sql :
       {"SELECT FROM", "SELECT `Value` FROM `NoSuchTable`", "SELECT `NoSuchColumn` FROM `Property`",
        "SELECT * FROM `Property` WHERE"}) {
    ProcessResult odlex = runOdlex({"query", built.file.string(), sql});
    EXPECT_EQ(odlex.exitCode, 1) << sql << ": " << odlex.describe();
    EXPECT_FALSE(odlex.err.empty()) << sql;
  }
}

}  // namespace
}  // namespace odlex::test
