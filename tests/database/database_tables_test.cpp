// The table objects of a database: one per type, made on first use, loaded on demand; the
// table sets; and the tables each schema version can hold.

#include <odlex/tables/ODLEXTables.h>

#include "common/DatabaseTest.h"
#include "database/SchemaTables.h"

namespace odlex::test {
namespace {

using Error = ODLEXDatabaseError;
using Type = ODLEXTObject::typeID;

class DatabaseTablesTest : public DatabaseTest {
 protected:
  // A new, empty database declaring schema `version`, opened through the list.
  ODLEXDatabase& databaseOfSchema(eSchemaVersion version) {
    const std::filesystem::path path = file("schema" + std::to_string(version) + ".msi");
    MSIDatabase created(version);
    EXPECT_EQ(created.open(text(path), MSIDatabase::ePersistCreate), 0u);
    EXPECT_EQ(created.commit(), 0u);
    created.close(false);
    return ODLEXDatabase::AddDatabaseToList(text(path));
  }
};

TEST_F(DatabaseTablesTest, EachTableTypeHasOneObjectLoadedOnDemand) {
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()));
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

TEST_F(DatabaseTablesTest, ReloadReadsTheRowsAgain) {
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package()));
  db.GetAppSearch().Add(MSIEAppSearch(u"FOUNDPROP", u"SearchSig"));
  db.Reload();
  EXPECT_TRUE(db.GetAppSearch().IsLoaded());
  EXPECT_EQ(db.GetAppSearch().GetEntries().entries(), 0u);
}

TEST_F(DatabaseTablesTest, TablesOfNewerSchemasAreRefusedByOlderDatabases) {
  ODLEXDatabase& schema120 = databaseOfSchema(eSchema120);
  EXPECT_FALSE(ODLEXDatabase::CanCreateTable(ODLEXTObject::eMsiFileHash, schema120));
  EXPECT_TRUE(schema120.IsTableValid(ODLEXTObject::eSFPCatalog));
  EXPECT_EQ(thrownCode([&] { schema120.GetMsiFileHash(); }), Error::eTableNotInSchema);
  EXPECT_NO_THROW(schema120.GetFileSFPCatalog());

  ODLEXDatabase& schema200 = databaseOfSchema(eSchema200);
  EXPECT_TRUE(schema200.IsTableValid(ODLEXTObject::eMsiFileHash));
  EXPECT_NO_THROW(schema200.GetMsiFileHash());

  ODLEXDatabase& schema100 = databaseOfSchema(eSchema100);
  EXPECT_FALSE(schema100.IsTableValid(ODLEXTObject::eComplus));
  EXPECT_FALSE(schema100.IsTableValid(ODLEXTObject::eFileSFPCatalog));
  EXPECT_TRUE(schema100.IsTableValid(ODLEXTObject::eTargetImages));
  EXPECT_TRUE(schema100.IsTableValid(ODLEXTObject::eComponent));
}

TEST(SchemaTablesTest, OldestSchemasAlsoRefuseThePatchCreationTables) {
  for (eSchemaVersion oldest : {eSchemaNone, eSchema30}) {
    EXPECT_FALSE(database::tableFitsSchema(ODLEXTObject::eTargetImages, oldest));
    EXPECT_FALSE(database::tableFitsSchema(ODLEXTObject::eUpgrade, oldest));
    EXPECT_FALSE(database::tableFitsSchema(ODLEXTObject::eMsiAssembly, oldest));
    EXPECT_TRUE(database::tableFitsSchema(ODLEXTObject::eComponent, oldest));
  }
  EXPECT_FALSE(database::tableFitsSchema(ODLEXTObject::eSFPCatalog, eSchema110));
  EXPECT_TRUE(database::tableFitsSchema(ODLEXTObject::eComplus, eSchema110));
  EXPECT_TRUE(database::tableFitsSchema(ODLEXTObject::eMsiFileHash, eSchema150));
}

// Gives the tests the protected start of the table sets.
struct TableSets : ODLEXDatabase {
  using ODLEXDatabase::InitRelatedTables;
};

TEST(TableSetsTest, FileSearchSetHasSixMembersHoweverOftenItIsMade) {
  TableSets::InitRelatedTables();
  TableSets::InitRelatedTables();
  EXPECT_EQ(ODLEXDatabase::related_tables.size(), 6u);
  EXPECT_EQ(ODLEXDatabase::related_tables.count(eFileSearchTables), 6u);
  EXPECT_EQ(ODLEXDatabase::related_tables.begin()->second, ODLEXTObject::eAppSearch);
}

}  // namespace
}  // namespace odlex::test
