// A string past 65,535 bytes takes a long entry in the string pool: read from a package msibuild
// wrote, and written for msiinfo to read. Integers at their limits are the oracle walks': the
// OdlexTypes fixture that ExportCommand reads and RewriteCommand writes, and RowsCatalog.

#include <gtest/gtest.h>

#include <algorithm>

#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"

namespace odlex::engine {
namespace {

using namespace column_type;
using OpenMode = Database::OpenMode;

std::vector<std::string> sorted(std::vector<std::string> lines) {
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST(EngineLimits, AStringPast64KibReadFromMsibuildAndWrittenForMsiinfo) {
  test::TempDir dir;
  // Rows in the order their strings are first met, so the long string has ids after it.
  const std::vector<std::string> rows = {"Alpha\tfirst", "Big\t" + std::string(70000, 'L'),
                                         "Zulu\tlast", "Yankee\tafter"};
  std::string idt = "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\n";
  for (const std::string& row : rows)
    idt += row + "\r\n";
  test::writeFileBytes(dir / "Property.idt", idt);
  const auto built = dir / "built.msi";
  const auto run =
      test::runProcess({"msibuild", built.string(), "-i", (dir / "Property.idt").string()});
  ASSERT_TRUE(run.ok()) << run.describe();
  EXPECT_EQ(sorted(tableLines(*openOrFail(built, OpenMode::kReadOnly), u"Property")), sorted(rows));

  auto db = openOrFail(dir / "written.msi", OpenMode::kCreate);
  Error error;
  Table* table = db->createTable(
      u"Property", {Column{u"Property", kText | kKey | 72}, Column{u"Value", kText | kLocalizable}},
      error);
  ASSERT_TRUE(table) << error.text;
  for (const std::string& row : rows) {
    const std::size_t tab = row.find('\t');
    table->appendRow(
        std::vector<std::uint32_t>{db->strings().intern(Utf8ToUtf16(row.substr(0, tab))),
                                   db->strings().intern(Utf8ToUtf16(row.substr(tab + 1)))});
  }
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  EXPECT_EQ(sorted(test::msiinfoRows(dir / "written.msi", "Property")), sorted(rows));
}

}  // namespace
}  // namespace odlex::engine
