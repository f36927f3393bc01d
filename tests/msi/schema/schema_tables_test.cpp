// Tables made from the catalog in a database: createTable refuses what is not a table of the
// catalog. And the catalog's tables as an independent writer makes them: the tables wixl writes
// (from tests/oracle/fixtures/wixl/schema-probe.wxs) have the catalog's layout, as
// StandardTables.def writes it, except where this file says why not. That msiinfo reads every table
// made from the catalog with that layout is the row tests' (rows_catalog_test).

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "common/CatalogText.h"
#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"

namespace odlex::schema {
namespace {

using test::msiinfoExport;

std::vector<std::string> firstLines(const std::string& text, std::size_t count) {
  std::vector<std::string> lines = test::splitLines(text);
  lines.resize(std::min(lines.size(), count));
  return lines;
}

TEST(SchemaTables, CreateTableRefusesUnknownSystemAndExistingTables) {
  test::TempDir dir;
  auto db = engine::openOrFail(dir / "schema.msi", engine::Database::OpenMode::kCreate);
  ASSERT_TRUE(db);
  engine::Error error;
  EXPECT_EQ(createTable(*db, u"NoSuchTable", error), engine::kInvalidTable);
  EXPECT_EQ(createTable(*db, u"component", error), engine::kInvalidTable);
  EXPECT_EQ(createTable(*db, u"_Validation", error), engine::kInvalidTable);
  EXPECT_EQ(createTable(*db, u"_Streams", error), engine::kInvalidTable);
  EXPECT_EQ(db->tableCount(), 0u);
  ASSERT_EQ(createTable(*db, u"Component", error), engine::kSuccess) << error.text;
  EXPECT_EQ(createTable(*db, u"Component", error), engine::kAlreadyExists);
  EXPECT_EQ(db->tableCount(), 1u);
}

// Where wixl's layout differs from the catalog, and why the catalog keeps its own:
const std::set<std::string> kKnownWixlDifferences = {
    // wixl writes 32-bit file sequence numbers, the layout the installer's documentation
    // describes for packages of more than 32767 files. The standard schema has 16-bit numbers,
    // and packages whose column types differ cannot be patched or transformed against each
    // other, so the catalog keeps i2.
    "File.Sequence: wixl i4, catalog i2",
    "Media.LastSequence: wixl i4, catalog i2",
};

// The differences between one wixl table and the catalog, one line each.
std::vector<std::string> layoutDifferences(const std::string& name,
                                           const std::vector<std::string>& wixlHeader) {
  const TableSchema* table = findTable(engine::fromUtf8(name));
  if (!table)
    return {name + ": not in the catalog"};
  static const std::map<std::string, std::vector<std::string>> headers = test::catalogHeaders();
  const std::vector<std::string>& ours = headers.at(name);
  if (wixlHeader.at(0) != ours[0])
    return {name + ": wixl columns " + wixlHeader[0] + ", catalog " + ours[0]};
  const std::vector<std::string> names = test::splitCells(ours[0]);
  const std::vector<std::string> words = test::splitCells(wixlHeader.at(1));
  const std::vector<std::string> ourWords = test::splitCells(ours[1]);
  std::vector<std::string> differences;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (words.at(i) != ourWords[i])
      differences.push_back(name + "." + names[i] + ": wixl " + words[i] + ", catalog " +
                            ourWords[i]);
  }
  return differences;
}

TEST(SchemaOracle, WixlTablesHaveTheCatalogLayoutExceptWhereDocumented) {
  test::TempDir dir;
  for (const char* file : {"app.exe", "app.ico", "helper.bin", "readme.txt"})
    test::writeFileBytes(dir / file, std::string("content of ") + file);
  test::ProcessResult built = test::runProcess(
      {"wixl", "-o", "probe.msi", test::fixturePath("wixl/schema-probe.wxs").string()}, dir.path());
  ASSERT_TRUE(built.ok()) << built.describe();

  const std::vector<std::string> tables = test::msiinfoPersistentTables(dir / "probe.msi");
  EXPECT_GE(tables.size(), 25u) << "wixl wrote fewer tables than expected";
  std::set<std::string> differences;
  for (const std::string& name : tables) {
    test::ProcessResult exported = msiinfoExport(dir / "probe.msi", name);
    ASSERT_TRUE(exported.ok()) << name << ": " << exported.describe();
    const std::vector<std::string> header = firstLines(exported.out, 2);
    ASSERT_EQ(header.size(), 2u) << name;
    for (std::string& difference : layoutDifferences(name, header))
      differences.insert(std::move(difference));
  }
  for (const std::string& difference : differences)
    EXPECT_TRUE(kKnownWixlDifferences.contains(difference)) << "undocumented: " << difference;
  for (const std::string& known : kKnownWixlDifferences)
    EXPECT_TRUE(differences.contains(known)) << "no longer seen: " << known;
}

}  // namespace
}  // namespace odlex::schema
