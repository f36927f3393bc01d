// Opening into an output file, the source files that must never be written, and the open types
// that say how a file is opened.

#include <odlex/msi/MSIRows.h>
#include <odlex/msi/MSISystemTables.h>
#include <odlex/tables/ODLEXTables.h>

#include <filesystem>
#include <functional>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;
using Error = ODLEXDatabaseError;

class DatabaseOpenTest : public DatabaseTest {};

// Opened on a source and an output file, listed that way or pointed at the output once open, the
// source is only read; the output receives the changes and the source's streams.
TEST_F(DatabaseOpenTest, OutputFileOpenWritesOnlyTheOutput) {
  const std::string before = readFileBytes(package());
  const struct {
    const char* name;
    std::function<ODLEXDatabase&(const fs::path& output)> open;
  } ways[] = {
      {"listed with the output",
       [&](const fs::path& output) -> ODLEXDatabase& {
         ODLEXOpenType how(text(output).data());
         ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()), how);
         EXPECT_TRUE(how.IsEnum());
         return db;
       }},
      {"output set once open",
       [&](const fs::path& output) -> ODLEXDatabase& {
         ODLEXDatabase& db = openPackage();
         ODLEXOpenType intoOutput(text(output).data());
         EXPECT_TRUE(db.SetDatabasePath(text(package()), intoOutput));
         return db;
       }},
  };
  for (const auto& way : ways) {
    SCOPED_TRACE(way.name);
    const fs::path output = file(std::string(way.name) + ".msi");
    ODLEXDatabase& db = way.open(output);
    EXPECT_FALSE(db.IsReadOnly());
    EXPECT_EQ(db.GetFilePath(), text(package()));
    EXPECT_EQ(db.GetDatabasePath(), text(output));
    EXPECT_NO_THROW(db.SetCreatingTransform(true));
    db.SetCreatingTransform(false);
    addSearch(db);
    ODLEXDatabase::RemoveDatabaseFromList(text(package()), true);
    EXPECT_EQ(readFileBytes(package()), before);
    EXPECT_EQ(msiinfoRows(output, "AppSearch"), std::vector<std::string>{kSearchRow});
    const ProcessResult sourceStreams = msiinfoStreams(package());
    const ProcessResult outputStreams = msiinfoStreams(output);
    ASSERT_TRUE(sourceStreams.ok() && outputStreams.ok()) << outputStreams.describe();
    EXPECT_TRUE(
        linesEqual(sortedLines(sourceStreams.out), sortedLines(outputStreams.out), "streams"));
  }
}

TEST_F(DatabaseOpenTest, InPlaceDatabaseCannotCreateATransform) {
  ODLEXDatabase& db = openPackage();
  EXPECT_EQ(thrownCode([&] { db.SetCreatingTransform(true); }), Error::eCannotCreateTransform);
  db.SetCreatingTransform(false);
  EXPECT_FALSE(db.IsCreatingTransform());
}

TEST_F(DatabaseOpenTest, SourceWithASubStorageCannotBeOpenedIntoAnOutputFile) {
  const fs::path withStorage = file("with-storage.msi");
  fs::copy_file(package(), withStorage);
  {
    MSIDatabase lower(text(withStorage), MSIDatabase::ePersistDirect);
    ASSERT_TRUE(lower.isValid());
    MSIT_Storages storages;
    storages.SetDatabase(lower);
    ASSERT_TRUE(storages.Populate());
    ASSERT_NE(storages.Add(u"Embedded", text(package()), false), nullptr);
    ASSERT_TRUE(storages.Persist());
    ASSERT_EQ(lower.commit(), 0u);
  }
  ODLEXDatabase& db = openPackage();
  ODLEXOpenType intoOutput(text(file("out.msi")).data());
  EXPECT_EQ(thrownCode([&] { db.SetDatabasePath(text(withStorage), intoOutput); }),
            Error::eStorageFileRefused);
}

TEST(OpenTypeTest, KindsAndTheirConversions) {
  const ODLEXOpenType onlyLooking;
  EXPECT_TRUE(onlyLooking.IsOnlyLooking());
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(onlyLooking), MSIDatabase::ePersistReadOnly);
  EXPECT_TRUE(TalString(onlyLooking).isNull());

  const ODLEXOpenType inPlace(MSIDatabase::ePersistDirect);
  EXPECT_TRUE(inPlace.IsEnum());
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(inPlace), MSIDatabase::ePersistDirect);

  ODLEXOpenType output(u"out.msi");
  EXPECT_TRUE(output.IsFilePath());
  EXPECT_EQ(static_cast<MSIDatabase::ePersistMode>(output), MSIDatabase::ePersistReadOnly);
  EXPECT_EQ(TalString(output), u"out.msi");

  const ODLEXOpenType copied = output;
  output = inPlace;
  EXPECT_TRUE(output.IsEnum());
  EXPECT_TRUE(TalString(output).isNull());
  EXPECT_EQ(TalString(copied), u"out.msi");
}

}  // namespace
}  // namespace odlex::test
