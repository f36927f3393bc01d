// The table objects of a database: one per type, made on first use, loaded on demand; and the
// tables each schema version can hold.

#include <odlex/tables/ODLEXTables.h>

#include "common/DatabaseTest.h"
#include "database/SchemaTables.h"
#include "msi/schema/Schema.h"

namespace odlex::test {
namespace {

using Error = ODLEXDatabaseError;
using Type = ODLEXTObject::typeID;

class DatabaseTablesTest : public DatabaseTest {};

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

// Which tables a schema holds is decided in full by tableFitsSchema (checked against the
// catalog below); a database goes by the schema it declares.
TEST_F(DatabaseTablesTest, TablesOfNewerSchemasAreRefusedByOlderDatabases) {
  ODLEXDatabase& schema120 = openNewDatabase("schema120.msi", eSchema120);
  EXPECT_FALSE(ODLEXDatabase::CanCreateTable(ODLEXTObject::eMsiFileHash, schema120));
  EXPECT_EQ(thrownCode([&] { schema120.GetMsiFileHash(); }), Error::eTableNotInSchema);
  EXPECT_NO_THROW(schema120.GetFileSFPCatalog());

  ODLEXDatabase& schema200 = openNewDatabase("schema200.msi", eSchema200);
  EXPECT_TRUE(schema200.IsTableValid(ODLEXTObject::eMsiFileHash));
  EXPECT_NO_THROW(schema200.GetMsiFileHash());
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

// Every table type has its table in the schema catalog, and the schema versions and
// patch-creation flag there agree with the type's attributes and with tableFitsSchema.
TEST(TableTypes, AgreeWithTheSchemaCatalog) {
  const eSchemaVersion versions[] = {eSchema30,  eSchema100, eSchema110, eSchema120, eSchema150,
                                     eSchema200, eSchema300, eSchema301, eSchema400, eSchema405,
                                     eSchema450, eSchema500, eSchemaNone};
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes)                                             \
  {                                                                                                \
    SCOPED_TRACE(#Table);                                                                          \
    const schema::TableSchema* table = schema::findTable(u"" #Table);                              \
    ASSERT_NE(table, nullptr);                                                                     \
    ODLEXT##Table object;                                                                          \
    EXPECT_EQ(static_cast<ODLEXTObject&>(object).GetAttributes().IsOnlyInPcp(), table->pcpOnly()); \
    for (eSchemaVersion version : versions) {                                                      \
      EXPECT_EQ(database::tableFitsSchema(ODLEXTObject::e##Table, version),                        \
                catalogAllows(*table, version))                                                    \
          << "schema " << version;                                                                 \
    }                                                                                              \
  }
#include <odlex/tables/TableTypes.def>
#undef ODLEX_TABLE_TYPE
}

}  // namespace
}  // namespace odlex::test
