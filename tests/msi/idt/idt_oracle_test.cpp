// Comparisons with msitools as an independent reader and writer of packages and .idt files:
// packages msibuild builds from our files, and packages wixl builds, must export through our
// code exactly as msiinfo exports them (rows compared as sorted lines).

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/idt/Idt.h"

namespace odlex::idt {
namespace {

namespace ct = engine::column_type;
using engine::Database;

bool haveTool(const char* tool) {
  return std::system((std::string("command -v ") + tool + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a command line (arguments are temporary paths and table names without quotes) and
// returns its standard output; `status` receives the exit status.
std::string run(const std::string& command, int& status) {
  std::string output;
  FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
  if (pipe == nullptr) {
    status = -1;
    return output;
  }
  char buffer[4096];
  while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
    output.append(buffer, n);
  status = pclose(pipe);
  return output;
}

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

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

class IdtOracle : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!haveTool("msiinfo") || !haveTool("msibuild"))
      GTEST_SKIP() << "msitools not installed";
  }

  // msiinfo's export of `table`. msiinfo also writes the data of binary cells, into
  // "<Table>/<stream name>" in the temporary folder.
  std::string msiinfoExport(const std::filesystem::path& package, const std::string& table) {
    int status = 0;
    std::string text =
        run("cd " + dir_.path().string() + " && msiinfo export " + package.string() + " " + table,
            status);
    EXPECT_EQ(status, 0) << table;
    return text;
  }

  std::vector<std::string> tableNames(const std::filesystem::path& package) {
    int status = 0;
    std::vector<std::string> names;
    std::istringstream in(run("msiinfo tables " + package.string(), status));
    for (std::string line; std::getline(in, line);) {
      if (!line.empty() && line != "_ForceCodepage")
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
      EXPECT_EQ(readFile(dir_ / table / stream), std::string(file.data.begin(), file.data.end()))
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

  // A small but complete package built by wixl.
  std::filesystem::path buildWixlPackage() {
    const std::filesystem::path source = dir_ / "product.wxs";
    std::ofstream(source) << R"(<?xml version="1.0"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="*" Name="Oracle" Language="1033" Version="1.2.3" Manufacturer="odlex tests"
           UpgradeCode="12345678-1234-1234-1234-123456789012">
    <Package InstallerVersion="200" Compressed="yes" Comments="idt oracle"/>
    <Media Id="1" Cabinet="a.cab" EmbedCab="yes"/>
    <Binary Id="Blob" SourceFile="product.wxs"/>
    <Property Id="Multi" Value="a b;c"/>
    <Directory Id="TARGETDIR" Name="SourceDir">
      <Directory Id="ProgramFilesFolder"><Directory Id="INSTALLDIR" Name="Oracle">
        <Component Id="Main" Guid="11111111-2222-3333-4444-555555555555">
          <File Id="Readme" Source="product.wxs"/>
          <RegistryValue Root="HKLM" Key="Software\odlex" Name="v" Type="integer" Value="7"/>
        </Component>
      </Directory></Directory>
    </Directory>
    <Feature Id="Complete" Level="1"><ComponentRef Id="Main"/></Feature>
  </Product>
</Wix>
)";
    const std::filesystem::path package = dir_ / "wixl.msi";
    int status = 0;
    run("cd " + dir_.path().string() + " && wixl -o " + package.string() + " product.wxs", status);
    EXPECT_EQ(status, 0);
    return package;
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
  int status = 0;
  run("cd " + (dir_ / "idt").string() + " && msibuild " + package.string() +
          " -i Mixed.idt -i Binary.idt",
      status);
  ASSERT_EQ(status, 0);
  expectSameExports(package);
}

TEST_F(IdtOracle, PackageBuiltByWixlExportsTheSame) {
  if (!haveTool("wixl"))
    GTEST_SKIP() << "wixl not installed";
  expectSameExports(buildWixlPackage());
}

TEST_F(IdtOracle, FilesExportedByMsiinfoImportUnchanged) {
  if (!haveTool("wixl"))
    GTEST_SKIP() << "wixl not installed";
  const std::filesystem::path package = buildWixlPackage();
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
  EXPECT_GE(imported, 20u);
  EXPECT_TRUE(db->hasStream(u"Binary.Blob"));
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
            canonicalLines(readFile(folder / "Mixed.idt")));
  int status = 0;
  EXPECT_EQ(run("msiinfo extract " + package.string() + " Binary.Icon", status),
            std::string("\0\1\2MZ", 5));
}

}  // namespace
}  // namespace odlex::idt
