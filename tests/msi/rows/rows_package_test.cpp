// Row and table objects on a package written by msibuild: binary data written, moved with a
// renamed row and removed with a deleted one persists and commits to exactly the streams msiinfo
// then reads. That every
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
};

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
  EXPECT_EQ(msiinfoRows(package_, "Binary").size(), 2u);
}

}  // namespace
}  // namespace odlex::test
