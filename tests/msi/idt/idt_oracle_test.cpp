// Comparisons with msitools as an independent reader and writer of .idt files: packages
// msibuild builds from our files must export through our code exactly as msiinfo exports them
// (rows compared as sorted lines), files msiinfo exports must import and export unchanged, and
// a package saved after an import must read the same in msiinfo.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/idt/Idt.h"

namespace odlex::idt {
namespace {

namespace ct = engine::column_type;
using engine::Database;

// The three header lines as they are, then the rows sorted.
std::vector<std::string> canonicalLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r')
      line.pop_back();
    lines.push_back(line);
  }
  if (lines.size() > 3)
    std::sort(lines.begin() + 3, lines.end());
  return lines;
}

class IdtOracle : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!test::haveMsitools())
      GTEST_SKIP() << "msitools not installed";
  }

  // msiinfo's export of `table`, run in the temporary folder so that the data of binary
  // cells lands in "<Table>/<stream name>" there.
  std::string msiinfoExport(const std::filesystem::path& package, const std::string& table) {
    test::ProcessResult result = test::msiinfoExport(package, table, dir_.path());
    EXPECT_TRUE(result.ok()) << table << ": " << result.describe();
    return result.out;
  }

  std::vector<std::string> tableNames(const std::filesystem::path& package) {
    std::vector<std::string> names;
    for (const std::string& line : test::splitLines(test::msiinfoTables(package).out)) {
      if (line != "_ForceCodepage")
        names.push_back(line);
    }
    return names;
  }

  // msiinfo names a binary cell by its stream ("Binary.Icon"), we by its data file
  // ("Icon.ibd"): returns msiinfo's text with our names, after checking that the data files
  // msiinfo wrote hold our data.
  std::string withOurFileNames(std::string theirs, const std::string& table,
                               const ExportedTable& ours) {
    for (const BinaryFile& file : ours.binaries) {
      const std::string stream = table + "." + file.fileName.substr(0, file.fileName.size() - 4);
      const std::size_t at = theirs.find("\t" + stream);
      EXPECT_NE(at, std::string::npos) << stream;
      if (at == std::string::npos)
        continue;
      theirs.replace(at + 1, stream.size(), file.fileName);
      EXPECT_EQ(test::readFileBytes(dir_ / table / stream),
                std::string(file.data.begin(), file.data.end()))
          << stream;
    }
    return theirs;
  }

  // Our export of every table of `package` against msiinfo's.
  void expectSameExports(const std::filesystem::path& package) {
    engine::Error error;
    auto db = Database::open(fs_, package, Database::OpenMode::kReadOnly, error);
    ASSERT_TRUE(db) << error.text;
    const std::vector<std::string> tables = tableNames(package);
    EXPECT_GE(tables.size(), 3u);
    for (const std::string& table : tables) {
      SCOPED_TRACE(table);
      ExportedTable ours;
      ASSERT_EQ(exportTableText(*db, std::u16string(table.begin(), table.end()), ours, error),
                engine::kSuccess)
          << error.text;
      const std::string theirs = withOurFileNames(msiinfoExport(package, table), table, ours);
      ASSERT_GE(canonicalLines(theirs).size(), 3u) << theirs;
      EXPECT_EQ(canonicalLines(ours.text), canonicalLines(theirs));
    }
  }

  storage::FileSystem& fs_ = storage::FileSystem::real();
  test::TempDir dir_;
};

TEST_F(IdtOracle, PackageBuiltByMsibuildFromOurFilesExportsTheSame) {
  engine::Error error;
  auto db = Database::open(fs_, dir_ / "src.msi", Database::OpenMode::kCreate, error);
  ASSERT_TRUE(db) << error.text;
  engine::Table* table =
      db->createTable(u"Mixed",
                      {{u"Name", ct::kText | 72 | ct::kKey},
                       {u"Seq", ct::kInteger16 | ct::kKey},
                       {u"Attr", ct::kInteger32 | ct::kNullable},
                       {u"Text", ct::kText | ct::kLocalizable | 255 | ct::kNullable},
                       {u"Short", ct::kInteger16 | ct::kNullable}},
                      error);
  ASSERT_TRUE(table) << error.text;
  engine::Table* binary = db->createTable(
      u"Binary", {{u"Name", ct::kText | 72 | ct::kKey}, {u"Data", ct::kBinary}}, error);
  ASSERT_TRUE(binary) << error.text;
  engine::StringPool& pool = db->strings();
  for (int i = 0; i < 20; ++i) {
    const std::size_t row = table->addRow();
    const std::string name = "row" + std::to_string(i % 7);
    table->setCell(row, 0, pool.intern(std::u16string(name.begin(), name.end())));
    table->setCell(row, 1, static_cast<std::uint32_t>(i * 1000 - 9000));
    table->setCell(
        row, 2,
        i % 3 ? static_cast<std::uint32_t>(i * 100000) : std::uint32_t(engine::kNullInteger));
    table->setCell(row, 3, i % 4 ? pool.intern(u"text with spaces, [brackets]") : 0);
    table->setCell(row, 4, static_cast<std::uint32_t>(i % 5 ? -i : engine::kNullInteger));
  }
  for (const char16_t* name : {u"Icon", u"Setup.dll"}) {
    const std::size_t row = binary->addRow();
    binary->setCell(row, 0, pool.intern(name));
    binary->setCell(row, 1, 1);
    db->setStream(binary->streamName(pool, row), {'M', 'Z', 0, 0xFF, 0x0D, 0x0A});
  }
  ASSERT_EQ(exportAll(*db, fs_, dir_ / "idt", error), engine::kSuccess) << error.text;

  const std::filesystem::path package = dir_ / "built.msi";
  test::ProcessResult built = test::runProcess(
      {"msibuild", package.string(), "-i", "Mixed.idt", "-i", "Binary.idt"}, dir_ / "idt");
  ASSERT_TRUE(built.ok()) << built.describe();
  expectSameExports(package);
}

TEST_F(IdtOracle, FilesExportedByMsiinfoImportUnchanged) {
  const test::BuiltPackage& wixl = test::testPackage(test::PackageKind::kWixl);
  if (wixl.file.empty())
    GTEST_SKIP() << wixl.error;
  const std::filesystem::path& package = wixl.file;
  engine::Error error;
  auto db = Database::open(fs_, dir_ / "copy.msi", Database::OpenMode::kCreate, error);
  ASSERT_TRUE(db) << error.text;
  std::size_t imported = 0;
  for (const std::string& table : tableNames(package)) {
    SCOPED_TRACE(table);
    const std::string theirs = msiinfoExport(package, table);
    const std::filesystem::path file = dir_ / (table + ".idt");
    std::ofstream(file, std::ios::binary) << theirs;
    ASSERT_EQ(importTable(*db, fs_, file, error), engine::kSuccess) << error.text;
    ExportedTable ours;
    ASSERT_EQ(exportTableText(*db, std::u16string(table.begin(), table.end()), ours, error),
              engine::kSuccess)
        << error.text;
    EXPECT_EQ(canonicalLines(ours.text), canonicalLines(withOurFileNames(theirs, table, ours)));
    ++imported;
  }
  EXPECT_GE(imported, 10u);
  EXPECT_TRUE(db->hasStream(u"Binary.HelperBinary"));
}

TEST_F(IdtOracle, PackageSavedAfterImportReadsTheSameInMsiinfo) {
  const std::filesystem::path folder = dir_ / "idt";
  std::filesystem::create_directories(folder / "Binary");
  std::ofstream(folder / "Mixed.idt", std::ios::binary) << "Name\tSeq\tAttr\tText\tShort\r\n"
                                                           "s72\ti2\tI4\tL0\tI2\r\n"
                                                           "Mixed\tName\tSeq\r\n"
                                                           "b\t-7\t\tsome text\t3\r\n"
                                                           "a\t32767\t-2147483647\t\t\r\n"
                                                           "a\t1\t2147483647\t[x];y\t-32767\r\n";
  std::ofstream(folder / "Binary.idt", std::ios::binary)
      << "Name\tData\r\ns72\tv0\r\nBinary\tName\r\nIcon\tIcon.ibd\r\n";
  std::ofstream(folder / "Binary" / "Icon.ibd", std::ios::binary) << std::string("\0\1\2MZ", 5);
  engine::Error error;
  const std::filesystem::path package = dir_ / "saved.msi";
  auto db = Database::open(fs_, package, Database::OpenMode::kCreate, error);
  ASSERT_TRUE(db) << error.text;
  for (const char* name : {"Mixed.idt", "Binary.idt"}) {
    ASSERT_EQ(importTable(*db, fs_, folder / name, error), engine::kSuccess) << error.text;
  }
  ASSERT_EQ(db->commit(error), engine::kSuccess) << error.text;
  EXPECT_EQ(canonicalLines(msiinfoExport(package, "Mixed")),
            canonicalLines(test::readFileBytes(folder / "Mixed.idt")));
  EXPECT_EQ(test::msiinfoExtract(package, "Binary.Icon").out, std::string("\0\1\2MZ", 5));
}

}  // namespace
}  // namespace odlex::idt
