// Import of damaged and hostile .idt files: every fault is refused with the file, line and
// field in the message, nothing outside the .idt's folder is read, and a refused import
// leaves the database unchanged.

#include <gtest/gtest.h>

#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "msi/idt/Idt.h"
#include "storage/ForwardingFileSystem.h"
#include "storage/MemoryFileSystem.h"

namespace odlex::idt {
namespace {

using engine::Database;

constexpr std::string_view kHeader = "K\tN\tData\r\ns72\ti2\tV0\r\nT\tK\r\n";

class IdtImportErrors : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string reason;
    ASSERT_TRUE(fs_.createDirectories("pkg/T", reason)) << reason;
    engine::Error error;
    db_ = Database::open(fs_, "x.msi", Database::OpenMode::kCreate, error);
    ASSERT_TRUE(db_) << error.text;
  }

  void put(const std::filesystem::path& path, std::string_view text) {
    std::string reason;
    ASSERT_TRUE(fs_.writeFile(
        path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, reason));
  }

  // Imports `text` as pkg/T.idt; returns the result code, the message in error_.
  std::uint32_t import(std::string_view text, const ImportOptions& options = {}) {
    put("pkg/T.idt", text);
    error_ = {};
    const std::uint32_t result = importTable(*db_, fs_, "pkg/T.idt", error_, options);
    EXPECT_EQ(result, error_.code);
    if (result != engine::kSuccess) {
      EXPECT_FALSE(error_.text.empty());
    }
    return result;
  }

  storage::MemoryFileSystem fs_;
  std::unique_ptr<Database> db_;
  engine::Error error_;
};

std::string wideTable() {
  std::string names;
  std::string types;
  for (int i = 0; i < 33; ++i) {
    names += (i ? "\tC" : "C") + std::to_string(i);
    types += i ? "\ti2" : "i2";
  }
  return names + "\r\n" + types + "\r\nT\tC0\r\n";
}

// Bad headers name the line, bad rows the line and field; binary cells that would name a file
// outside the table's data folder, and table names that would name a data folder elsewhere, are
// unsafe. None creates a table.
TEST_F(IdtImportErrors, BadFilesAreRefusedWithTheirPlace) {
  put("pkg/secret", "secret");
  put("secret", "secret");
  const auto failed = engine::kFunctionFailed;
  const std::string row = std::string(kHeader) + "a\t1\t";
  struct Case {
    std::string text;
    std::uint32_t code;
    std::string where;
  };
  std::vector<Case> cases = {
      {"", failed, "pkg/T.idt:1: missing header line"},
      {"K\r\ns72\r\n", failed, "pkg/T.idt:3: missing header line"},
      {"K\tN\r\ns72\r\nT\tK\r\n", failed, "T.idt:2: 1 type words for 2 columns"},
      {"K\tN\r\ns72\tx2\r\nT\tK\r\n", failed, "T.idt:2: field 2: bad column type 'x2'"},
      {"K\tN\r\ns72\ti3\r\nT\tK\r\n", failed, "T.idt:2: field 2"},
      {"K\tK\r\ns72\ti2\r\nT\tK\r\n", failed, "T.idt:1: field 2: duplicate column"},
      {"K\tN\r\ns72\ti2\r\nT\r\n", failed, "T.idt:3: expected the table name"},
      {"K\tN\r\ns72\ti2\r\nT\tN\r\n", failed, "T.idt:3: field 2: key column N"},
      {"K\tN\r\ns72\ti2\r\nT\tK\tN\tX\r\n", failed, "T.idt:3: 3 key columns"},
      {"K\tN\r\ns72\ti2\r\n777\tT\tK\r\n", failed, "T.idt:3: unsupported code page"},
      {"\tN\r\ns72\ti2\r\nT\tK\r\n", failed, "T.idt:1: field 1: empty name"},
      {"K\tN\r\ns72\ti2\r\n\tK\r\n", failed, "T.idt:3: field 1: empty name"},
      {"K\tN\r\ns72\ti2\r\nT\t\r\n", failed, "T.idt:3: field 2: empty name"},
      {wideTable(), failed, "T.idt:1: more than the 32 columns"},
      {std::string(kHeader) + "a\t1\r\nb\t2\t\t\r\n", failed, "T.idt:4: 2 fields in a table of 3"},
      {row + "\tx\r\n", failed, "T.idt:4: more than 3 fields in a table of 3"},
      {std::string(kHeader) + "a\t40000\t\r\n", failed, "T.idt:4: field 2 (N): '40000' is not"},
      {std::string(kHeader) + "a\t-32768\t\r\n", failed, "T.idt:4: field 2 (N)"},
      {std::string(kHeader) + "a\tone\t\r\n", failed, "T.idt:4: field 2 (N)"},
      {std::string(kHeader) + "a\t\x80\t\r\n", failed, "T.idt:4: field 2 (N)"},
      {std::string(kHeader) + "\t1\t\r\n", failed, "T.idt:4: field 1 (K): null in a column"},
      {row + "\r\n\r\na\t1\t\r\n", failed, "T.idt:6: duplicate primary key"},
      {row + "missing.ibd\r\n", engine::kFileNotFound,
       "T.idt:4: field 3 (Data): pkg/T/missing.ibd: file not found"},
      {"K\tData\r\ns72\tV0\r\n..\tK\r\na\tx.ibd\r\n", engine::kBadPathname,
       "cannot name a data folder"},
  };
  for (const char* name : {"../secret", "../../secret", "/etc/passwd", "a\\..\\b", "CON", "nul.ibd",
                           "..", ".", "c:secret", "T/../../secret"}) {
    cases.push_back({row + name + "\r\n", engine::kBadPathname,
                     "T.idt:4: field 3 (Data): unsafe data file name"});
  }
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(import(c.text), c.code) << error_.text;
    EXPECT_NE(error_.text.find(c.where), std::string::npos) << error_.text;
  }
  EXPECT_EQ(db_->tableCount(), 0u);
}

TEST_F(IdtImportErrors, ARefusedImportLeavesTheTableAsItWas) {
  put("pkg/T/a.ibd", "data");
  const std::string header(kHeader);
  ASSERT_EQ(import(header + "a\t1\ta.ibd\r\n"), engine::kSuccess) << error_.text;
  EXPECT_EQ(import(header + "b\t1\t\r\nc\tbad\t\r\n"), engine::kFunctionFailed);
  EXPECT_EQ(engine::tableLines(*db_, u"T"), std::vector<std::string>{"a\t1\tstream"});
  EXPECT_TRUE(db_->hasStream(u"T.a"));
}

TEST_F(IdtImportErrors, FileCodePageMustMatchTheDatabase) {
  db_->setCodePage(1252);
  EXPECT_EQ(import("K\r\ns72\r\n932\tT\tK\r\n\x93\xfa\r\n"), engine::kFunctionFailed);
  EXPECT_NE(error_.text.find(
                "T.idt:3: the file is written in code page 932, the database uses code page 1252"),
            std::string::npos)
      << error_.text;
  ASSERT_EQ(import("K\r\ns72\r\n1252\tT\tK\r\ncaf\xe9\r\n"), engine::kSuccess) << error_.text;
  EXPECT_EQ(db_->findTable(u"T")->text(db_->strings(), 0, 0), u"caf\u00e9");
}

TEST_F(IdtImportErrors, OverlongValuesAreImportedWithAWarning) {
  std::vector<std::string> warnings;
  ImportOptions options;
  options.warnings = &warnings;
  ASSERT_EQ(import("K\tV\r\ns3\tS2\r\nT\tK\r\nabcd\txyz\r\nab\t\r\n", options), engine::kSuccess)
      << error_.text;
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_NE(warnings[0].find("T.idt:4: field 1 (K): 4 characters, longer than the column's 3"),
            std::string::npos)
      << warnings[0];
  EXPECT_EQ(db_->findTable(u"T")->rowCount(), 2u);
}

// A file system whose every file claims to be 2 GiB.
class HugeFiles final : public storage::ForwardingFileSystem {
 public:
  using ForwardingFileSystem::ForwardingFileSystem;
  class File final : public storage::ReadableFile {
   public:
    std::uint64_t size() const override { return std::uint64_t{2} << 30; }
    bool readAt(std::uint64_t, void*, std::size_t, std::string& error) override {
      error = "must not be read";
      return false;
    }
  };
  std::unique_ptr<storage::ReadableFile> openRead(const std::filesystem::path&,
                                                  std::string&) override {
    return std::make_unique<File>();
  }
};

TEST_F(IdtImportErrors, FilesOverOneGibibyteAreRefusedUnread) {
  HugeFiles huge(fs_);
  put("pkg/T.idt", kHeader);
  engine::Error error;
  EXPECT_EQ(importTable(*db_, huge, "pkg/T.idt", error), engine::kFunctionFailed);
  EXPECT_NE(error.text.find("exceeds the limit"), std::string::npos) << error.text;
}

}  // namespace
}  // namespace odlex::idt
