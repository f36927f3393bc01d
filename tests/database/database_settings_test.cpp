// Class-wide settings and diagnostics: progress sinks, host callbacks, debug texts of result
// codes, the lower layer's errors, and the factory registrations of the table classes.

#include <odlex/support/RWFactory.h>
#include <odlex/tables/ODLEXTables.h>

#include <memory>

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

using Error = ODLEXDatabaseError;

int sinksDeleted = 0;

class CountingSink : public SingleProgress {
 public:
  ~CountingSink() override { ++sinksDeleted; }
  void Start(const TalString&, unsigned long) override {}
  void Step(unsigned long) override {}
  void Finish() override {}
};

TEST(DatabaseSettingsTest, ProgressSinksAreOwnedOnceSet) {
  ODLEXDatabase::INIT();
  EXPECT_EQ(thrownCode([] { ODLEXDatabase::GetSingleProgress(); }), Error::eNoProgressSink);
  EXPECT_EQ(thrownCode([] { ODLEXDatabase::GetDualProgress(); }), Error::eNoProgressSink);
  sinksDeleted = 0;
  auto* first = new CountingSink;
  ODLEXDatabase::SetSingleProgress(first);
  ODLEXDatabase::SetSingleProgress(first);
  EXPECT_EQ(&ODLEXDatabase::GetSingleProgress(), first);
  EXPECT_EQ(sinksDeleted, 0);
  ODLEXDatabase::SetSingleProgress(new CountingSink);
  EXPECT_EQ(sinksDeleted, 1);
  ODLEXDatabase::ClearSingleProgress();
  EXPECT_EQ(sinksDeleted, 2);
  EXPECT_EQ(thrownCode([] { ODLEXDatabase::GetSingleProgress(); }), Error::eNoProgressSink);
}

// A database object that is not opened, made through the factory by its class id.
std::unique_ptr<ODLEXDatabase> unopenedDatabase() {
  ODLEXDatabase::INIT();
  RWCollectable* made = getRWFactory()->create(ODLEXDatabase::classIsA());
  EXPECT_NE(made, nullptr);
  return std::unique_ptr<ODLEXDatabase>(static_cast<ODLEXDatabase*>(made));
}

bool refuseCopy(const TalString&, const TalString&) {
  return false;
}

TEST(DatabaseSettingsTest, HostCallbacksHaveDefaults) {
  const std::unique_ptr<ODLEXDatabase> db = unopenedDatabase();
  TempDir dir;
  EXPECT_TRUE(db->CopySingleFile(u"from.msi", text(dir / "to.msi")));
  EXPECT_FALSE(std::filesystem::exists(dir / "to.msi"));
  ODLEXDatabase::SetCopySingleFile(&refuseCopy);
  EXPECT_FALSE(db->CopySingleFile(u"from.msi", u"to.msi"));
  ODLEXDatabase::SetCopySingleFile(nullptr);

  EXPECT_TRUE(ODLEXDatabase::UserPermits());
  ODLEXDatabase::SetUserPermitsFunction([] { return false; });
  EXPECT_FALSE(ODLEXDatabase::UserPermits());
  ODLEXDatabase::SetUserPermitsFunction(nullptr);
  EXPECT_EQ(ODLEXDatabase::GetMergeErrors(), nullptr);
}

TEST(DatabaseSettingsTest, ResultCodesAreWrittenAsDebugLines) {
  DebugCapture debug;
  ODLEXDatabase::WriteDebugInfo(0, false);
  ODLEXDatabase::WriteDebugInfo(1628, true);
  ODLEXDatabase::WriteDebugInfo(1631, false);
  ODLEXDatabase::WriteDebugInfo(5, false);
  const std::vector<std::string> expected = {
      "MSI: No error.\r\n", "MSI: Invalid or unknown table specified.\r\n",
      "Unknown to ODLEXClasses.\r\n", "MSI: Create failed.\r\n", "Unknown to ODLEXClasses.\r\n"};
  EXPECT_EQ(debug.lines, expected);
}

TEST(DatabaseSettingsTest, LowerLayerErrorsAreTakenOrDumped) {
  const std::unique_ptr<ODLEXDatabase> db = unopenedDatabase();
  EXPECT_EQ(thrownCode([&] { db->GetTalError(); }), Error::eNoPendingError);
  TempDir dir;
  ODLEXOpenType forUpdate(MSIDatabase::ePersistDirect);
  EXPECT_FALSE(db->SetDatabasePath(text(dir / "missing.msi"), forUpdate));
  EXPECT_FALSE(db->SetDatabasePath(text(dir / "missing.msi"), forUpdate));
  const TalError& error = db->GetTalError();
  EXPECT_NE(error.GetCode(), 0u);
  EXPECT_EQ(thrownCode([&] { db->GetTalError(); }), Error::eNoPendingError);

  EXPECT_FALSE(db->SetDatabasePath(text(dir / "missing.msi"), forUpdate));
  DebugCapture debug;
  db->DumpAllErrors();
  ASSERT_EQ(debug.lines.size(), 1u);
  EXPECT_EQ(debug.lines[0], "TalMSI: " + error.GetText().ToUtf8() + "\r\n");
  EXPECT_EQ(thrownCode([&] { db->GetTalError(); }), Error::eNoPendingError);
}

TEST(DatabaseSettingsTest, FactoryMakesEveryTableObjectByTypeAndByName) {
  ODLEXDatabase::INIT();
  RWFactory& factory = *getRWFactory();
  unsigned made = 0;
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes)                                  \
  {                                                                                     \
    std::unique_ptr<RWCollectable> byType(factory.create(RWClassID(id)));               \
    std::unique_ptr<RWCollectable> byName(factory.create(RWStringID("ODLEXT" #Table))); \
    EXPECT_NE(dynamic_cast<ODLEXT##Table*>(byType.get()), nullptr) << #Table;           \
    EXPECT_NE(dynamic_cast<ODLEXT##Table*>(byName.get()), nullptr) << #Table;           \
    EXPECT_EQ(byType ? byType->isA() : 0, id);                                          \
    ++made;                                                                             \
  }
#include <odlex/tables/TableTypes.def>
#undef ODLEX_TABLE_TYPE
  EXPECT_EQ(made, 116u);
  EXPECT_EQ(ODLEXDatabase::totalODLEXTObjects, made + 1);
}

TEST(DatabaseSettingsTest, TableNamesAreNotMappedToTypes) {
  EXPECT_EQ(ODLEXDatabase::GetTableType(u"Component"), ODLEXTObject::eNoTable);
  EXPECT_EQ(ODLEXDatabase::GetTableType(u""), ODLEXTObject::eNoTable);
}

TEST(DatabaseSettingsTest, TemporaryReadOnlyCopyEndsInMri) {
  EXPECT_EQ(ODLEXDatabase::GetTempMsiFileName(u"dir/setup.msi"), u"dir/setup.mri");
  EXPECT_EQ(ODLEXDatabase::GetTempMsiFileName(u"dir/setup.mri"), u"dir/setup.mri");
  EXPECT_EQ(ODLEXDatabase::GetTempMsiFileName(u"dir.v2\\setup"), u"dir.v2\\setup.mri");
  EXPECT_TRUE(ODLEXDatabase::MatchesExtension(u"a/module.Msm", u"MSM"));
  EXPECT_FALSE(ODLEXDatabase::MatchesExtension(u"a.msm/module", u"MSM"));
}

}  // namespace
}  // namespace odlex::test
