// The list of open databases: one object per file, and the open types that say how a file is
// opened.

#include <filesystem>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

using Error = ODLEXDatabaseError;

class DatabaseListTest : public DatabaseTest {};

TEST_F(DatabaseListTest, OpeningTheSameFileAgainGivesTheSameObject) {
  ODLEXDatabase& first = openPackage();
  ODLEXDatabase& second = openPackage();
  ODLEXDatabase& found = ODLEXDatabase::GetDatabaseWithFilePath(text(package()));
  EXPECT_EQ(&first, &second);
  EXPECT_EQ(&first, &found);
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 1u);
  EXPECT_EQ(first.GetFilePath(), text(package()));
  EXPECT_EQ(first.GetDatabasePath(), text(package()));
}

TEST_F(DatabaseListTest, LookingForAnUnknownFileOpensNothing) {
  const TalString unknown = text(file("unknown.msi"));
  EXPECT_FALSE(ODLEXDatabase::IsDatabaseFilePathLoaded(text(package())));
  EXPECT_FALSE(ODLEXDatabase::IsDatabaseFilePathLoaded(unknown));
  ODLEXOpenType onlyLooking;
  EXPECT_EQ(thrownCode([&] { ODLEXDatabase::GetDatabaseWithFilePath(unknown, onlyLooking); }),
            Error::eDatabaseNotOpen);
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 0u);
}

TEST_F(DatabaseListTest, FilesThatCannotBeOpenedOrCopiedAreNotListed) {
  EXPECT_EQ(thrownCode([&] { ODLEXDatabase::AddDatabaseToList(text(file("missing.msi"))); }),
            Error::eDatabaseOpenFailed);
  ODLEXOpenType intoMissingFolder(text(file("no/such/folder/out.msi")).data());
  DebugCapture debug;
  EXPECT_EQ(
      thrownCode([&] { ODLEXDatabase::AddDatabaseToList(text(package()), intoMissingFolder); }),
      Error::eDatabaseOpenFailed);
  EXPECT_EQ(debug.lines, std::vector<std::string>{"ODLEX: Unable to copy file.\r\n"});
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 0u);
}

TEST_F(DatabaseListTest, RemovingTakesTheDatabaseOutOfTheList) {
  ODLEXDatabase& opened = openPackage();
  ODLEXDatabase::RemoveDatabaseFromList(text(file("unknown.msi")), true);
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 1u);
  opened.RemoveFromList(false);
  EXPECT_EQ(ODLEXDatabase::GetDatabaseList().entries(), 0u);
  EXPECT_TRUE(std::filesystem::exists(package()));
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
