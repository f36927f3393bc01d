// `odlex tables` lists what msiinfo lists: the persistent tables, in _Tables order.

#include <gtest/gtest.h>

#include "common/PackageTest.h"

namespace odlex::test {
namespace {

class TablesCommand : public PackageTest {};

TEST_P(TablesCommand, ListsThePersistentTablesInTablesOrder) {
  ProcessResult odlex = runOdlex({"tables", package().string()});
  ASSERT_TRUE(odlex.ok()) << odlex.describe();
  EXPECT_TRUE(
      linesEqual(msiinfoPersistentTables(package()), splitLines(odlex.out), "odlex tables"));
}

ODLEX_FOR_EVERY_PACKAGE(TablesCommand);

}  // namespace
}  // namespace odlex::test
