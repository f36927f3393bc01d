// The tables the database keeps about itself, on packages written by wixl and msibuild: they
// list what msiinfo lists, and their edits (tables, streams, storages, summary information), and
// binary cells' streams following their rows, reach the committed file as msiinfo then reads it.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>
#include <odlex/msi/MSISystemTables.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "common/Container.h"
#include "common/Oracle.h"
#include "common/PackageTest.h"
#include "common/Packages.h"
#include "common/PathText.h"
#include "common/RowText.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "storage/CompoundFile.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

template <typename Row>
std::vector<std::string> sortedNames(const MSITable& table) {
  std::vector<std::string> names;
  for (RWCollectable* item : table.GetTable())
    names.push_back(static_cast<Row*>(item)->GetName().ToUtf8());
  std::sort(names.begin(), names.end());
  return names;
}

// The streams msiinfo lists, without the summary information (a stream of the file, not a
// row of _Streams).
std::vector<std::string> msiinfoDataStreams(const fs::path& package) {
  const ProcessResult listed = msiinfoStreams(package);
  EXPECT_TRUE(listed.ok()) << listed.describe();
  std::vector<std::string> names = sortedLines(listed.out);
  std::erase(names, "\005SummaryInformation");
  return names;
}

bool contains(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

// A private copy of one test package, and the database opened on it for update.
class SystemTablesTest : public PackageCopyTest {
 protected:
  // Opens a copy of the package of `kind` (run under ASSERT_NO_FATAL_FAILURE).
  void open(PackageKind kind) {
    ASSERT_NO_FATAL_FAILURE(copyPackage(kind));
    reopen();
  }

  // Commits and opens the file again.
  void commitAndReopen() {
    ASSERT_EQ(db_->commit(), 0u);
    reopen();
  }

  void reopen() {
    db_ = std::make_unique<MSIDatabase>(text(package_), MSIDatabase::ePersistDirect);
    ASSERT_TRUE(db_->isValid());
  }

  // Rewrites the closed package with `edit(children of the root, the summary stream's entry)`,
  // then opens it again.
  template <typename Edit>
  void editSummaryStream(Edit edit) {
    db_.reset();
    std::string error;
    ASSERT_TRUE(editContainer(
        package_, package_,
        [&](storage::CompoundNode& root) {
          auto summary = std::find_if(
              root.children.begin(), root.children.end(),
              [](const auto& child) { return child.name == u"\005SummaryInformation"; });
          ASSERT_NE(summary, root.children.end());
          edit(root.children, summary);
        },
        error))
        << error;
    reopen();
  }

  // Every line of `expected` is one msiinfo prints for the package's summary information.
  void expectSuminfoLines(const std::vector<std::string>& expected) {
    const std::string printed = msiinfoSuminfo(package_).out;
    for (const std::string& line : expected)
      EXPECT_TRUE(contains(splitLines(printed), line)) << line << " not in:\n" << printed;
  }

  template <typename Table>
  void load(Table& table) {
    table.SetDatabase(*db_);
    ASSERT_TRUE(table.Populate()) << table.GetLastError().ToUtf8();
  }

  std::unique_ptr<MSIDatabase> db_;
};

TEST_F(SystemTablesTest, TablesAndColumnsListTheDatabase) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kWixl));
  MSIT_Tables tables;
  load(tables);
  std::vector<std::string> expected = msiinfoPersistentTables(package_);
  std::sort(expected.begin(), expected.end());
  EXPECT_TRUE(linesEqual(expected, sortedNames<MSIE_Tables>(tables), "_Tables"));

  MSIT_Columns columns;
  load(columns);
  ASSERT_NE(columns.Find(u"Property", 2), nullptr);
  EXPECT_EQ(columns.Find(u"Property", 2)->GetName(), u"Value");
  EXPECT_EQ(columns.Find(u"Property", 3), nullptr);
  EXPECT_TRUE(columns.Persist()) << "a clean read-only table persists";
  columns.Find(u"Property", 1)->Delete();
  EXPECT_FALSE(columns.Persist());
  EXPECT_EQ(db_->GetError()->GetCode(), 5u);
}

TEST_F(SystemTablesTest, TableRowsCreateAndDropTables) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kIdt));
  MSIT_Tables tables;
  load(tables);
  ASSERT_NE(tables.Add(u"NoSuchTable"), nullptr);
  ASSERT_NE(tables.Add(u"ODBCAttribute"), nullptr);
  EXPECT_FALSE(tables.Persist()) << "an unknown table cannot be created";
  EXPECT_EQ(db_->GetError()->GetCode(), 1628u);
  EXPECT_EQ(db_->engineDatabase()->findTable(u"ODBCAttribute"), nullptr) << "nothing changed";

  tables.Find(u"NoSuchTable")->Delete();
  tables.Find(u"Binary")->Delete();
  ASSERT_TRUE(tables.Persist()) << tables.GetLastError().ToUtf8();
  commitAndReopen();

  const std::vector<std::string> listed = msiinfoPersistentTables(package_);
  EXPECT_TRUE(contains(listed, "ODBCAttribute"));
  EXPECT_FALSE(contains(listed, "Binary"));
}

TEST_F(SystemTablesTest, StreamsAreAddedReplacedAndDeleted) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kIdt));
  MSIT_Streams streams;
  load(streams);
  EXPECT_TRUE(
      linesEqual(msiinfoDataStreams(package_), sortedNames<MSIE_Streams>(streams), "_Streams"));
  ASSERT_FALSE(streams.GetTable().isEmpty());

  writeFileBytes(dir_ / "payload.bin", std::string("\0payload\xff", 9));
  writeFileBytes(dir_ / "other.bin", "other");
  MSIE_Streams* added = streams.Add(u"Extra.Payload", text(dir_ / "payload.bin"), false);
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(streams.Add(u"Extra.Payload", text(dir_ / "other.bin"), false), nullptr);
  EXPECT_EQ(db_->GetError()->GetCode(), 183u);
  EXPECT_EQ(streams.Add(u"Extra.Missing", text(dir_ / "missing.bin"), false), nullptr);
  EXPECT_EQ(db_->GetError()->GetCode(), 2u);
  EXPECT_EQ(streams.Add(u"Extra.Folder", text(dir_.path()), false), nullptr);
  EXPECT_EQ(db_->GetError()->GetCode(), 110u);

  // A copy keeps the data of a populated (not yet read) row.
  auto* existing = static_cast<MSIE_Streams*>(*streams.GetTable().begin());
  const std::string existingName = existing->GetName().ToUtf8();
  const MSIE_Streams copy(*existing);
  EXPECT_NE(copy.GetData().GetSize(), 0u);
  EXPECT_EQ(copy.GetData(), existing->GetData());
  existing->Delete();
  ASSERT_TRUE(streams.Persist()) << streams.GetLastError().ToUtf8();
  commitAndReopen();

  EXPECT_EQ(msiinfoExtract(package_, "Extra.Payload").out, std::string("\0payload\xff", 9));
  EXPECT_FALSE(contains(msiinfoDataStreams(package_), existingName));

  load(streams);
  EXPECT_EQ(streams.Add(u"Extra.Payload", text(dir_ / "other.bin"), true),
            streams.Find(u"Extra.Payload"));
  ASSERT_TRUE(streams.Persist());
  commitAndReopen();
  EXPECT_EQ(msiinfoExtract(package_, "Extra.Payload").out, "other");
}

// Binary data written, moved with a renamed row (its data not yet read) and removed with a
// deleted row reaches the streams of the committed file.
TEST_F(SystemTablesTest, BinaryDataFollowsItsRow) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kIdt));
  const std::string large = msiinfoExtract(package_, "Binary.LargeData").out;
  ASSERT_FALSE(large.empty());
  MSITBinary binary;
  load(binary);
  binary.Find(u"SmallData")->SetData(bytes("replaced"));
  binary.Add(u"Fresh")->SetData(bytes("new stream"));
  binary.Find(u"LargeData")->SetName(u"Moved");
  EXPECT_EQ(binary.Find(u"LargeData"), nullptr);
  ASSERT_TRUE(binary.Persist()) << binary.GetLastError().ToUtf8();
  commitAndReopen();
  EXPECT_EQ(msiinfoExtract(package_, "Binary.SmallData").out, "replaced");
  EXPECT_EQ(msiinfoExtract(package_, "Binary.Moved").out, large);
  EXPECT_FALSE(contains(msiinfoDataStreams(package_), "Binary.LargeData"));

  load(binary);
  EXPECT_EQ(binary.Find(u"Fresh")->GetData(), bytes("new stream"));
  binary.Find(u"Fresh")->Delete();
  ASSERT_TRUE(binary.Persist());
  commitAndReopen();
  EXPECT_FALSE(contains(msiinfoDataStreams(package_), "Binary.Fresh"));
  EXPECT_EQ(msiinfoRows(package_, "Binary").size(), 2u);
}

TEST_F(SystemTablesTest, StoragesTakeCompoundFilesOnly) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kIdt));
  MSIT_Storages storages;
  load(storages);
  EXPECT_TRUE(storages.GetTable().isEmpty());
  writeFileBytes(dir_ / "plain.txt", "not a compound file");
  EXPECT_EQ(storages.Add(u"Plain", text(dir_ / "plain.txt"), false), nullptr);
  EXPECT_EQ(db_->GetError()->GetCode(), 1620u);

  const BuiltPackage& embedded = testPackage(PackageKind::kSample);
  ASSERT_FALSE(embedded.file.empty()) << embedded.error;
  ASSERT_NE(storages.Add(u"Embedded", text(embedded.file), false), nullptr);
  ASSERT_TRUE(storages.Persist()) << storages.GetLastError().ToUtf8();
  commitAndReopen();

  load(storages);
  ASSERT_NE(storages.Find(u"Embedded"), nullptr);
  // The data reads back as a package of its own, with the tables of the file added.
  const MSIBinary data = storages.Find(u"Embedded")->GetData();
  writeFileBytes(dir_ / "extracted.msi",
                 std::string(reinterpret_cast<const char*>(data.GetData()), data.GetSize()));
  EXPECT_TRUE(linesEqual(msiinfoPersistentTables(embedded.file),
                         msiinfoPersistentTables(dir_ / "extracted.msi"), "embedded tables"));

  storages.Find(u"Embedded")->Delete();
  ASSERT_TRUE(storages.Persist());
  commitAndReopen();
  load(storages);
  EXPECT_TRUE(storages.GetTable().isEmpty());
}

TEST_F(SystemTablesTest, SummaryInformationReadsAsMsiinfoShowsIt) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kWixl));
  MSIT_SummaryInformation summary;
  msidbSumInfoSourceType source{};
  MSIDatabase::ePlatform platform{};
  TalString title, subject, author, comments;
  NullableQuad created, saved;
  ASSERT_TRUE(db_->GetSummaryInformation(summary, source, platform, title, subject, author,
                                         comments, created, saved));
  EXPECT_EQ(source, msidbSumInfoSourceTypeCompressed);
  EXPECT_EQ(platform, MSIDatabase::ePlatformIntel);
  EXPECT_EQ(title, u"Installation Database");
  EXPECT_EQ(subject, u"Odlex oracle package");
  EXPECT_EQ(author, u"Odlex Example Ltd");
  EXPECT_EQ(comments, u"Odlex oracle test package");
  EXPECT_FALSE(created.IsNull());
  EXPECT_FALSE(saved.IsNull());
  EXPECT_EQ(summary.FindFirst()->GetTemplate(), u"Intel;1033");
  EXPECT_EQ(summary.FindFirst()->GetPageCount(), 200);

  // Generic access by column name; times as text, and back.
  MSIE_SummaryInformation& row = *summary.FindFirst();
  MSIRecordColumn value;
  ASSERT_TRUE(row.GetColumn(u"Subject", value));
  EXPECT_EQ(value.GetString(), u"Odlex oracle package");
  ASSERT_TRUE(
      row.SetColumn(u"LastPrinted", MSIRecordColumn::String(u"2001/02/03 04:05:06.0000007")));
  SYSTEMTIME printed{2001, 2, 0, 3, 4, 5, 6, 0};
  std::uint64_t expected = 0;
  ASSERT_TRUE(SystemTimeToFileTime(printed, expected));
  EXPECT_EQ(row.GetLastPrinted(), expected + 7);
  row.SetCreateDateTime(NullableQuad(expected));
  ASSERT_TRUE(row.GetColumn(u"CreateDateTime", value));
  EXPECT_EQ(value.GetString(), u"2001/02/03 04:05:06");
  ASSERT_TRUE(row.SetColumn(u"LastSaveDateTime", MSIRecordColumn::String(u"2001/02/30 00:00:00")));
  EXPECT_TRUE(row.GetLastSaveDateTime().IsNull());
  EXPECT_FALSE(summary.Persist()) << "a time column holding no valid time is refused";
  EXPECT_EQ(db_->GetError()->GetCode(), 13u);
}

TEST_F(SystemTablesTest, UntouchedSummaryStaysByteExact) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kIdt));
  // Bytes after the property set that rewriting the stream would not keep.
  editSummaryStream([](std::vector<storage::CompoundNode>&, auto summary) {
    summary->data.insert(summary->data.end(), 16, 0xEE);
  });
  const auto before = rootStream(package_, u"\005SummaryInformation");
  ASSERT_TRUE(before && !before->empty());
  MSIT_SummaryInformation summary;
  load(summary);
  ASSERT_NE(summary.FindFirst(), nullptr);
  EXPECT_EQ(summary.Add(), nullptr) << "one row only";
  ASSERT_TRUE(summary.Persist());
  commitAndReopen();
  EXPECT_EQ(rootStream(package_, u"\005SummaryInformation"), before);
}

TEST_F(SystemTablesTest, UpdatedSummaryReachesTheFile) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kWixl));
  MSIT_SummaryInformation summary;
  ASSERT_TRUE(db_->UpdateSummaryInformation(summary, true, msidbSumInfoSourceTypeSFN,
                                            MSIDatabase::ePlatformX64, u"New title", u"New subject",
                                            u"New author", u"New comments"));
  EXPECT_TRUE(summary.IsDirty());
  MSIE_SummaryInformation* row = summary.FindFirst();
  SYSTEMTIME stamp{2024, 2, 0, 29, 12, 30, 15, 0};
  ASSERT_TRUE(row->SetLastSaveDateTime(&stamp));
  stamp.wDay = 30;
  EXPECT_FALSE(row->SetLastSaveDateTime(&stamp));
  row->SetLastAuthor();
  EXPECT_FALSE(row->GetLastAuthor().isNull());
  const TalString packageCode = row->GetRevNumber();
  ASSERT_TRUE(summary.Persist()) << summary.GetLastError().ToUtf8();
  commitAndReopen();

  // Keywords: other properties are kept.
  expectSuminfoLines({"Title: New title", "Subject: New subject", "Author: New author",
                      "Comments: New comments", "Template: x64;1033", "Source: 1 (1)",
                      "Revision number (UUID): " + packageCode.ToUtf8(),
                      "Last saved: Thu Feb 29 12:30:15 2024", "Keywords: Installer"});
}

TEST_F(SystemTablesTest, SummaryIsCreatedForADatabaseWithout) {
  ASSERT_NO_FATAL_FAILURE(open(PackageKind::kIdt));
  // The same package without its summary information stream.
  editSummaryStream(
      [](std::vector<storage::CompoundNode>& children, auto summary) { children.erase(summary); });
  MSIT_SummaryInformation summary;
  msidbSumInfoSourceType source{};
  MSIDatabase::ePlatform platform{};
  TalString title, subject, author, comments;
  NullableQuad created, saved;
  EXPECT_FALSE(db_->GetSummaryInformation(summary, source, platform, title, subject, author,
                                          comments, created, saved));
  EXPECT_EQ(summary.FindFirst(), nullptr);
  ASSERT_TRUE(summary.Persist()) << "nothing to write is no failure";

  ASSERT_TRUE(db_->UpdateSummaryInformation(summary, true, msidbSumInfoSourceTypeCompressed,
                                            MSIDatabase::ePlatformArm64, u"T", u"S", u"A", u"C"));
  ASSERT_TRUE(db_->GetSummaryInformation(summary, source, platform, title, subject, author,
                                         comments, created, saved));
  EXPECT_EQ(platform, MSIDatabase::ePlatformArm64);
  EXPECT_EQ(source, msidbSumInfoSourceTypeCompressed);
  EXPECT_EQ(title, u"T");
  ASSERT_TRUE(summary.Persist()) << summary.GetLastError().ToUtf8();
  commitAndReopen();

  expectSuminfoLines({"Title: T", "Template: Arm64;", "Source: 2 (2)"});
}

TEST(SystemTables, TransformViewLivesInMemoryAndFindsByThreeKeys) {
  TempDir dir;
  MSIDatabase db(text(dir / "view.msi"), MSIDatabase::ePersistCreate);
  MSIT_TransformView view;
  view.SetDatabase(db);
  ASSERT_TRUE(view.Populate());
  ASSERT_NE(view.Add(u"Property", u"Value", u"ProductName", u"B", u"old"), nullptr);
  ASSERT_NE(view.Add(u"Property", u"Value", u"ProductName", u"A", u"old"), nullptr);
  EXPECT_EQ(view.Add(u"Property", u"Value", u"ProductName", u"A", u"old"), nullptr);
  ASSERT_NE(view.Find(u"Property", u"Value", u"ProductName"), nullptr);
  EXPECT_EQ(view.Find(u"Property", u"Value", u"ProductName")->GetData(), u"A");
  EXPECT_EQ(view.Find(u"Property", u"Value", u"Other"), nullptr);

  // The index follows changes.
  view.Find(u"Property", u"Value", u"ProductName")->Delete();
  EXPECT_EQ(view.Find(u"Property", u"Value", u"ProductName")->GetData(), u"B");
  view.Find(u"Property", u"Value", u"ProductName")->SetRow(u"Renamed");
  EXPECT_EQ(view.Find(u"Property", u"Value", u"ProductName"), nullptr);
  EXPECT_NE(view.Find(u"Property", u"Value", u"Renamed"), nullptr);

  ASSERT_TRUE(view.Persist());
  EXPECT_FALSE(view.IsDirty());
  EXPECT_EQ(view.GetTable().entries(), 1u);
  EXPECT_EQ(db.engineDatabase()->findTable(u"_TransformView"), nullptr);
}

// Reading or writing a table needs an open database; without one each refuses and says so (one
// table of each implementation: the streams and storages tables share theirs).
TEST(SystemTables, WithoutADatabaseReadAndWriteAreRefused) {
  MSITProperty property;
  MSIT_Tables tables;
  MSIT_Columns columns;
  MSIT_Streams streams;
  MSIT_SummaryInformation summary;
  const struct {
    MSITable* table;
    bool writeChecks;  // a clean read-only table has nothing to write
  } cases[] = {
      {&property, true}, {&tables, true}, {&columns, false}, {&streams, true}, {&summary, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.table->GetName().ToUtf8());
    EXPECT_FALSE(c.table->Populate());
    EXPECT_TRUE(c.table->GetLastError().u16().ends_with(u"no open database"));
    EXPECT_EQ(c.table->Persist(), !c.writeChecks);
  }
  MSIDatabase closed;
  property.SetDatabase(closed);
  EXPECT_FALSE(property.Populate());
  EXPECT_FALSE(property.Drop());
  MSITMedia media;
  EXPECT_EQ(property.AddEntry(media.CreateEntry()), nullptr) << "a row of another table";
}

}  // namespace
}  // namespace odlex::test
