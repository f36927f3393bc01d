// The commands that read or write a whole package, against msitools: `odlex tables` lists what
// msiinfo lists, in _Tables order; `odlex export` and `odlex export-all` print every table as
// msiinfo prints it: the same three header lines and the same rows; binary cells become data
// files holding the stream's bytes; msibuild reads the exported files back; and `odlex rewrite`
// writes a fresh file that msiinfo reads exactly as it reads the original.

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/Container.h"
#include "common/IdtText.h"
#include "common/PackageCompare.h"
#include "common/PackageTest.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// The persistent tables and the two pseudo tables.
std::vector<std::string> exportableTables(const fs::path& package) {
  std::vector<std::string> tables = msiinfoPersistentTables(package);
  tables.push_back("_SummaryInformation");
  tables.push_back("_ForceCodepage");
  return tables;
}

// Row text with the binary cells masked -> the binary cells as written.
std::map<std::string, std::vector<std::string>> binaryCellsByRow(std::string_view utf8Idt) {
  std::vector<std::string> lines = splitLines(utf8Idt);
  std::map<std::string, std::vector<std::string>> cellsByRow;
  if (lines.size() < 3)
    return cellsByRow;
  std::vector<std::size_t> binary = binaryColumns(lines[1]);
  for (std::size_t i = 3; i < lines.size(); ++i) {
    std::vector<std::string> cells = splitCells(lines[i]);
    std::vector<std::string> values;
    for (std::size_t column : binary) {
      values.push_back(column < cells.size() ? cells[column] : "");
      if (column < cells.size() && !cells[column].empty())
        cells[column] = "<binary>";
    }
    cellsByRow[joinCells(cells)] = values;
  }
  return cellsByRow;
}

// Every binary cell of `exportedIdt` names a file in the table's folder beside it, holding
// the bytes of the stream msiinfo names for the same cell.
void expectDataFilesMatchStreams(const fs::path& package, const std::string& table,
                                 const fs::path& exportedIdt) {
  auto streams = binaryCellsByRow(msiinfoExport(package, table).out);
  auto files = binaryCellsByRow(asUtf8(readFileBytes(exportedIdt), packageCodePage(package)));
  ASSERT_EQ(streams.size(), files.size()) << table;
  for (const auto& [row, streamNames] : streams) {
    auto found = files.find(row);
    ASSERT_NE(found, files.end()) << table << ": no exported row " << row;
    for (std::size_t i = 0; i < streamNames.size(); ++i) {
      if (streamNames[i].empty())
        continue;
      fs::path dataFile = exportedIdt.parent_path() / table / found->second[i];
      EXPECT_EQ(readFileBytes(dataFile), msiinfoExtract(package, streamNames[i]).out)
          << table << ": " << dataFile << " against stream " << streamNames[i];
    }
  }
}

bool hasBinaryColumn(const fs::path& package, const std::string& table) {
  std::vector<std::string> lines = splitLines(msiinfoExport(package, table).out);
  return lines.size() > 1 && !binaryColumns(lines[1]).empty();
}

class ExportCommand : public PackageTest {};

// tables lists the persistent tables; export-all writes a file per table; export prints the same
// text, or with -o writes it and the binary data beside it.
TEST_P(ExportCommand, EveryTableMatchesMsiinfo) {
  ProcessResult tables = runOdlex({"tables", package().string()});
  ASSERT_TRUE(tables.ok()) << tables.describe();
  EXPECT_TRUE(
      linesEqual(msiinfoPersistentTables(package()), splitLines(tables.out), "odlex tables"));

  TempDir dir;
  ProcessResult all = runOdlex({"export-all", package().string(), (dir / "all").string()});
  ASSERT_TRUE(all.ok()) << all.describe();

  std::uint32_t codePage = packageCodePage(package());
  std::vector<std::string> expected = exportableTables(package());
  if (codePage == 0)
    expected.pop_back();  // no _ForceCodepage.idt for the neutral code page
  std::vector<std::string> written;
  for (const auto& entry : fs::directory_iterator(dir / "all")) {
    if (entry.path().extension() == ".idt")
      written.push_back(entry.path().stem().string());
  }
  std::sort(expected.begin(), expected.end());
  std::sort(written.begin(), written.end());
  ASSERT_TRUE(linesEqual(expected, written, "files written by export-all"));

  for (const std::string& table : exportableTables(package())) {
    SCOPED_TRACE(table);
    ProcessResult printed = runOdlex({"export", package().string(), table});
    ASSERT_TRUE(printed.ok()) << printed.describe();
    EXPECT_TRUE(sameIdt(msiinfoExport(package(), table).out, printed.out, codePage, table));
    const fs::path idt = dir / "all" / (table + ".idt");
    if (fs::exists(idt)) {
      EXPECT_EQ(readFileBytes(idt), printed.out);
    }
    if (table.front() == '_' || !hasBinaryColumn(package(), table))
      continue;
    expectDataFilesMatchStreams(package(), table, idt);
    const fs::path single = dir / (table + ".idt");
    ProcessResult toFile = runOdlex({"export", package().string(), table, "-o", single.string()});
    ASSERT_TRUE(toFile.ok()) << toFile.describe();
    EXPECT_TRUE(toFile.out.empty()) << toFile.out.substr(0, 200);
    expectDataFilesMatchStreams(package(), table, single);
  }
}

ODLEX_FOR_EVERY_PACKAGE(ExportCommand);

class RewriteCommand : public PackageTest {};

// Rewriting the rewrite must change nothing either.
TEST_P(RewriteCommand, FreshFileReadsLikeTheOriginal) {
  TempDir dir;
  const std::string before = readFileBytes(package());
  fs::path source = package();
  for (const char* name : {"once.msi", "twice.msi"}) {
    SCOPED_TRACE(name);
    const fs::path out = dir / name;
    ProcessResult odlex = runOdlex({"rewrite", source.string(), "-o", out.string()});
    ASSERT_TRUE(odlex.ok()) << odlex.describe();
    EXPECT_TRUE(sameTables(source, out));
    EXPECT_TRUE(sameStreams(source, out));
    EXPECT_TRUE(sameSummary(source, out));
    source = out;
  }
  EXPECT_TRUE(readFileBytes(package()) == before) << "the original package was changed";
}

ODLEX_FOR_EVERY_PACKAGE(RewriteCommand);

// An exported file as msibuild reads it: UTF-8, with no code page on the table line.
std::string forMsibuild(const std::string& idt, std::uint32_t codePage) {
  std::string text;
  std::size_t number = 0;
  for (std::string line : splitLines(asUtf8(idt, codePage))) {
    const std::size_t digits = line.find_first_not_of("0123456789");
    if (++number == 3 && digits != 0 && digits != std::string::npos && line[digits] == '\t' &&
        !line.ends_with("_ForceCodepage"))
      line.erase(0, digits + 1);
    text += line + "\r\n";
  }
  return text;
}

// msibuild, importing every file export-all wrote (binary data files included), builds a package
// that reads as the exported one.
TEST(ExportAll, MsibuildReimportsTheExportedFiles) {
  const BuiltPackage& built = testPackage(PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  TempDir dir;
  ProcessResult odlex = runOdlex({"export-all", built.file.string(), dir.path().string()});
  ASSERT_TRUE(odlex.ok()) << odlex.describe();
  const std::uint32_t codePage = packageCodePage(built.file);
  const std::vector<fs::path> idts = idtFilesIn(dir.path());
  for (const fs::path& idt : idts)
    writeFileBytes(idt, forMsibuild(readFileBytes(idt), codePage));
  const fs::path rebuilt = dir / "rebuilt.msi";
  ASSERT_TRUE(msibuildImport(rebuilt, idts));
  for (const std::string& table : exportableTables(built.file)) {
    EXPECT_TRUE(sameIdt(msiinfoExport(built.file, table).out, msiinfoExport(rebuilt, table).out,
                        codePage, table));
  }
  EXPECT_TRUE(sameStreams(built.file, rebuilt));
}

// What these tests rely on in the oracle packages: the many-strings package needs 3-byte string
// references.
TEST(OracleFixtures, ManyStringsPackageUsesThreeByteStringReferences) {
  const BuiltPackage& built = testPackage(PackageKind::kManyStrings);
  ASSERT_FALSE(built.file.empty()) << built.error;
  EXPECT_EQ(splitLines(msiinfoExport(built.file, "ManyStrings").out).size(), 3u + 72000u);
  std::optional<std::uint32_t> header = stringPoolHeader(built.file);
  ASSERT_TRUE(header.has_value());
  EXPECT_EQ(*header & 0x80000000u, 0x80000000u);
}

}  // namespace
}  // namespace odlex::test
