// Every kind of statement that changes a package, run by odlex on one copy of a package and by
// msibuild -q on another: msiinfo must then read the same tables and streams from both.
//
// Where msibuild is known to go wrong the cases keep clear of it, and the library tests check
// the behaviour instead: it deletes only every other row of a DELETE that matches several,
// loses a string of another row on INSERT ... TEMPORARY, and keeps temporary columns. It also
// leaves the streams of deleted rows behind, which odlex removes: those streams are named.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/PackageCompare.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/Text.h"
#include "msi/query/Query.h"
#include "storage/FileSystem.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

struct StatementCase {
  const char* name;
  std::vector<const char*> statements;  // run in order
  // Streams msibuild leaves behind and odlex removes with their rows.
  std::vector<std::string> streamsRemoved = {};
};

// Test output names a case by its name, not by its bytes.
void PrintTo(const StatementCase& c, std::ostream* out) {
  *out << c.name;
}

class Statements : public ::testing::TestWithParam<StatementCase> {
 protected:
  TempDir dir_;
};

::testing::AssertionResult runWithOdlex(const fs::path& package,
                                        const std::vector<const char*>& statements) {
  engine::Error error;
  auto db = engine::Database::open(storage::FileSystem::real(), package,
                                   engine::Database::OpenMode::kUpdate, error);
  if (!db)
    return ::testing::AssertionFailure() << error.text;
  for (const char* sql : statements) {
    auto query = query::Query::prepare(*db, engine::fromUtf8(sql), error);
    if (!query || query->execute(error) != engine::kSuccess)
      return ::testing::AssertionFailure() << sql << ": " << error.text;
  }
  if (db->commit(error) != engine::kSuccess)
    return ::testing::AssertionFailure() << error.text;
  return ::testing::AssertionSuccess();
}

TEST_P(Statements, ChangeThePackageAsMsibuildDoes) {
  const BuiltPackage& built = testPackage(PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  const fs::path expected = dir_ / "msibuild.msi";
  const fs::path actual = dir_ / "odlex.msi";
  fs::copy_file(built.file, expected);
  fs::copy_file(built.file, actual);

  std::vector<std::string> msibuild{"msibuild", expected.string()};
  for (const char* sql : GetParam().statements) {
    msibuild.push_back("-q");
    msibuild.push_back(sql);
  }
  const ProcessResult reference = runProcess(msibuild);
  ASSERT_TRUE(reference.ok()) << reference.describe();
  ASSERT_TRUE(runWithOdlex(actual, GetParam().statements));
  EXPECT_TRUE(sameTables(expected, actual));
  if (GetParam().streamsRemoved.empty()) {
    EXPECT_TRUE(sameStreams(expected, actual));
    return;
  }
  std::vector<std::string> streams = splitLines(msiinfoStreams(expected).out);
  std::erase_if(streams, [](const std::string& name) {
    return std::ranges::count(GetParam().streamsRemoved, name) > 0;
  });
  EXPECT_TRUE(linesEqual(streams, splitLines(msiinfoStreams(actual).out), "streams"));
}

const StatementCase kCases[] = {
    {"Insert", {"INSERT INTO Property (Property, Value) VALUES ('NewProperty', 'new value')"}},
    {"InsertIntegersLeavingNulls",
     {"INSERT INTO File (File, Component_, FileName, FileSize, Sequence, Attributes) "
      "VALUES ('New', 'Docs', 'new.txt', -1, 4, -32767)"}},
    {"UpdateWhere",
     {"UPDATE File SET Version = '3.0', Attributes = 0 WHERE Sequence >= 2 AND Language IS NULL"}},
    {"UpdateClearsWithEmptyString",
     {"UPDATE Component SET Condition = '' WHERE Component = 'Docs'"}},
    {"UpdateEveryRow", {"UPDATE Component SET Attributes = 4"}},
    {"DeleteWhere", {"DELETE FROM File WHERE Language = '1031' AND FileSize > 0"}},
    {"DeleteRowWithStream",
     {"DELETE FROM `Binary` WHERE `Name` = 'SmallData'"},
     {"Binary.SmallData"}},
    {"CreateEveryColumnType",
     {"CREATE TABLE Kinds (K CHAR(20) NOT NULL, N SHORT NOT NULL, C CHARACTER(30), "
      "L LONGCHAR LOCALIZABLE, I INT, J INTEGER, G LONG, B CHAR, T CHAR(0) NOT NULL "
      "LOCALIZABLE PRIMARY KEY K, N)",
      "INSERT INTO Kinds (K, N, C, G, T) VALUES ('k', -2, 'see', 2147483647, 'tee')",
      "CREATE TABLE Blobs (Name CHAR(72) NOT NULL, Data OBJECT PRIMARY KEY Name)"}},
    {"CreateHeldThenFreed",
     {"CREATE TABLE Held (A LONG NOT NULL PRIMARY KEY A) HOLD", "ALTER TABLE Held FREE"}},
    {"Drop", {"DROP TABLE Media"}},
    {"DropTableWithStreams", {"DROP TABLE `Binary`"}, {"Binary.SmallData", "Binary.LargeData"}},
    {"AlterAddColumns",
     {"ALTER TABLE Property ADD Note CHAR(40) LOCALIZABLE",
      "UPDATE Property SET Note = 'n' WHERE Property = 'ALLUSERS'",
      "ALTER TABLE Component ADD Extra LONG HOLD", "ALTER TABLE Component FREE"}},
    {"HoldAndFree", {"ALTER TABLE Property HOLD", "ALTER TABLE Property FREE"}},
};

INSTANTIATE_TEST_SUITE_P(Kinds, Statements, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<StatementCase>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace odlex::test
