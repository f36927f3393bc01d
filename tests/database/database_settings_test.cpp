// Class-wide settings and diagnostics (progress sinks, host callbacks, debug texts of result
// codes, the lower layer's errors) and the table types: made by the factory, one object per type
// in a database, made on first use and loaded on demand, and the tables each schema version can
// hold.

#include <odlex/support/RWFactory.h>

#include <memory>
#include <set>

#include "common/DatabaseTest.h"
#include "database/SchemaTables.h"
#include "msi/schema/Schema.h"

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

TEST(DatabaseSettingsTest, CopyingAFileIsLeftToTheHost) {
  const std::unique_ptr<ODLEXDatabase> db = unopenedDatabase();
  TempDir dir;
  EXPECT_TRUE(db->CopySingleFile(u"from.msi", text(dir / "to.msi")));
  EXPECT_FALSE(std::filesystem::exists(dir / "to.msi"));
  ODLEXDatabase::SetCopySingleFile(&refuseCopy);
  EXPECT_FALSE(db->CopySingleFile(u"from.msi", u"to.msi"));
  ODLEXDatabase::SetCopySingleFile(nullptr);
}

std::vector<std::string> debugLinesOf(unsigned code) {
  DebugCapture debug;
  ODLEXDatabase::WriteDebugInfo(code, false);
  return debug.lines;
}

// A known code is one line of its own text; an unknown code one line that the unknown-table
// code (1628) also adds after its text.
TEST(DatabaseSettingsTest, ResultCodesAreWrittenAsDebugLines) {
  const std::vector<std::string> unknown = debugLinesOf(5);
  ASSERT_EQ(unknown.size(), 1u);
  std::set<std::string> texts;
  for (unsigned code : {0u, 1628u, 1631u}) {
    const std::vector<std::string> lines = debugLinesOf(code);
    ASSERT_EQ(lines.size(), code == 1628 ? 2u : 1u) << code;
    EXPECT_TRUE(lines[0].starts_with("MSI: ") && lines[0].ends_with(".\r\n")) << lines[0];
    EXPECT_TRUE(texts.insert(lines[0]).second) << lines[0];
    EXPECT_EQ(lines.back(), code == 1628 ? unknown[0] : lines[0]);
  }
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

using DatabaseTablesTest = DatabaseTest;

TEST_F(DatabaseTablesTest, EachTableTypeHasOneObjectLoadedOnDemand) {
  ODLEXDatabase& db = openPackage();
  ODLEXTObject& unloaded = db.GetTableObject(ODLEXTObject::eFile, false);
  EXPECT_FALSE(unloaded.IsLoaded());
  EXPECT_EQ(&unloaded.GetDatabase(), &db);
  ODLEXTFile& file = db.GetFile();
  EXPECT_EQ(static_cast<ODLEXTObject*>(&file), &unloaded);
  EXPECT_TRUE(file.IsLoaded());
  EXPECT_GT(file.GetEntries().entries(), 0u);
  EXPECT_EQ(&db.GetTableObject(ODLEXTObject::eFile), &unloaded);
  EXPECT_EQ(thrownCode([&] { db.GetTableObject(ODLEXTObject::eNoTable); }),
            Error::eInternalFailure);
  EXPECT_EQ(thrownCode([&] { db.GetTableObject(ODLEXTObject::eTableObjectClass); }),
            Error::eInternalFailure);
}

// Whether the catalog's table of that name may exist in a database of schema `version`: schemas
// 100 to 120 hold the tables they introduced and older ones, 30 and undeclared schemas those of
// 100 except the patch-creation tables, every other schema every table.
bool catalogAllows(const schema::TableSchema& table, eSchemaVersion version) {
  switch (version) {
    case eSchema100:
    case eSchema110:
    case eSchema120:
      return table.sinceSchema <= version;
    case eSchema30:
    case eSchemaNone:
      return table.sinceSchema <= eSchema100 && !table.pcpOnly();
    default:
      return true;
  }
}

// Every table type is made by the factory from its class id and its name, and makes its own
// species and copies; its table is in the schema catalog, whose schema versions and
// patch-creation flag agree with the type's attributes and with tableFitsSchema.
TEST(TableTypes, MadeByTheFactoryAndAgreeWithTheSchemaCatalog) {
  ODLEXDatabase::INIT();
  RWFactory& factory = *getRWFactory();
  const eSchemaVersion versions[] = {eSchema30,  eSchema100, eSchema110, eSchema120, eSchema150,
                                     eSchema200, eSchema300, eSchema301, eSchema400, eSchema405,
                                     eSchema450, eSchema500, eSchemaNone};
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes)                                  \
  {                                                                                     \
    SCOPED_TRACE(#Table);                                                               \
    std::unique_ptr<RWCollectable> byType(factory.create(RWClassID(id)));               \
    std::unique_ptr<RWCollectable> byName(factory.create(RWStringID("ODLEXT" #Table))); \
    auto* object = dynamic_cast<ODLEXT##Table*>(byType.get());                          \
    ASSERT_NE(object, nullptr);                                                         \
    EXPECT_NE(dynamic_cast<ODLEXT##Table*>(byName.get()), nullptr);                     \
    EXPECT_EQ(byType->isA(), id);                                                       \
    EXPECT_EQ(std::unique_ptr<RWCollectable>(byType->newSpecies())->isA(), id);         \
    EXPECT_EQ(std::unique_ptr<RWCollectable>(byType->copy())->isA(), id);               \
    const schema::TableSchema* table = schema::findTable(u"" #Table);                   \
    ASSERT_NE(table, nullptr);                                                          \
    EXPECT_EQ(static_cast<ODLEXTObject*>(object)->GetAttributes().IsOnlyInPcp(),        \
              table->pcpOnly());                                                        \
    for (eSchemaVersion version : versions) {                                           \
      EXPECT_EQ(database::tableFitsSchema(ODLEXTObject::e##Table, version),             \
                catalogAllows(*table, version))                                         \
          << "schema " << version;                                                      \
    }                                                                                   \
  }
#include <odlex/tables/TableTypes.def>
#undef ODLEX_TABLE_TYPE
}

}  // namespace
}  // namespace odlex::test
