// Row and table objects on a package written by msibuild: edits (add, change, delete, re-add,
// binary data) persist and commit to exactly the rows and streams msiinfo then reads. That every
// table of the packages other tools wrote populates as msiinfo reads it follows from the oracle
// export walk (the engine reads what msiinfo reads), the catalog walk (rows_catalog_test: the
// table objects read what the engine holds) and the table tests that load those packages.

#include <gtest/gtest.h>

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/PackageTest.h"
#include "common/Packages.h"
#include "common/PathText.h"
#include "common/RowText.h"

namespace odlex::test {
namespace {

// Edits on a private copy of the msibuild package made from tests/oracle/fixtures/idt.
class RowsEditTest : public PackageCopyTest {
 protected:
  void SetUp() override { copyPackage(PackageKind::kIdt); }

  std::vector<std::string> exported(const std::string& table) {
    std::vector<std::string> lines = msiinfoRows(package_, table);
    std::sort(lines.begin(), lines.end());
    return lines;
  }
};

TEST_F(RowsEditTest, AddChangeDeleteAndReAddReachTheFile) {
  {
    MSIDatabase db(text(package_), MSIDatabase::ePersistDirect);
    ASSERT_TRUE(db.isValid());
    MSITProperty property;
    property.SetDatabase(db);
    ASSERT_TRUE(property.Populate());
    const std::size_t before = property.GetTable().entries();

    ASSERT_NE(property.Find(u"ProductName"), nullptr);
    property.Find(u"ProductName")->SetValue(u"Renamed");
    EXPECT_TRUE(property.IsDirty());
    MSIEProperty* added = property.Add(u"NewProperty");
    ASSERT_NE(added, nullptr);
    added->SetValue(u"fresh");
    EXPECT_EQ(property.Add(u"NewProperty"), nullptr) << "a live key cannot be added twice";

    // Deleted then added again: one row, with the new value.
    property.Find(u"ProductCode")->Delete();
    EXPECT_EQ(property.Find(u"ProductCode"), nullptr);
    MSIEProperty* again = property.Add(u"ProductCode");
    ASSERT_NE(again, nullptr);
    again->SetValue(u"{00000000-0000-4000-8000-000000000000}");

    // Deleted for good.
    MSIEProperty* doomed = property.Add(u"Doomed");
    doomed->SetValue(u"x");
    doomed->Delete();

    ASSERT_TRUE(property.Persist()) << property.GetLastError().ToUtf8();
    EXPECT_FALSE(property.IsDirty());
    EXPECT_EQ(property.GetTable().entries(), before + 1);
    ASSERT_EQ(db.commit(), 0u);
  }
  const std::vector<std::string> rows = exported("Property");
  for (const char* row : {"ProductName\tRenamed", "NewProperty\tfresh",
                          "ProductCode\t{00000000-0000-4000-8000-000000000000}"})
    EXPECT_EQ(std::count(rows.begin(), rows.end(), row), 1) << row;
  EXPECT_EQ(std::count_if(rows.begin(), rows.end(),
                          [](const std::string& row) { return row.starts_with("ProductCode\t"); }),
            1);
  EXPECT_EQ(std::find(rows.begin(), rows.end(), "Doomed\tx"), rows.end());
}

TEST_F(RowsEditTest, BinaryDataIsWrittenMovedAndRemovedWithItsRow) {
  const std::string large = [&] {
    const ProcessResult result = msiinfoExtract(package_, "Binary.LargeData");
    EXPECT_TRUE(result.ok()) << result.describe();
    return result.out;
  }();
  {
    MSIDatabase db(text(package_), MSIDatabase::ePersistDirect);
    MSITBinary binary;
    binary.SetDatabase(db);
    ASSERT_TRUE(binary.Populate());
    binary.Find(u"SmallData")->SetData(bytes("replaced"));
    binary.Add(u"Fresh")->SetData(bytes("new stream"));
    // Renaming the row moves its (unread) data to the stream of the new key.
    binary.Find(u"LargeData")->SetName(u"Moved");
    EXPECT_EQ(binary.Find(u"LargeData"), nullptr);
    ASSERT_NE(binary.Find(u"Moved"), nullptr);
    ASSERT_TRUE(binary.Persist()) << binary.GetLastError().ToUtf8();
    ASSERT_EQ(db.commit(), 0u);
  }
  EXPECT_EQ(msiinfoExtract(package_, "Binary.SmallData").out, "replaced");
  EXPECT_EQ(msiinfoExtract(package_, "Binary.Fresh").out, "new stream");
  EXPECT_EQ(msiinfoExtract(package_, "Binary.Moved").out, large);
  const std::vector<std::string> streams = splitLines(msiinfoStreams(package_).out);
  EXPECT_EQ(std::find(streams.begin(), streams.end(), "Binary.LargeData"), streams.end());

  {
    MSIDatabase db(text(package_), MSIDatabase::ePersistDirect);
    MSITBinary binary;
    binary.SetDatabase(db);
    ASSERT_TRUE(binary.Populate());
    EXPECT_EQ(binary.Find(u"Fresh")->GetData(), bytes("new stream"));
    binary.Find(u"Fresh")->Delete();
    ASSERT_TRUE(binary.Persist());
    ASSERT_EQ(db.commit(), 0u);
  }
  const std::vector<std::string> after = splitLines(msiinfoStreams(package_).out);
  EXPECT_EQ(std::find(after.begin(), after.end(), "Binary.Fresh"), after.end());
  EXPECT_EQ(exported("Binary").size(), 2u);
}

}  // namespace
}  // namespace odlex::test
