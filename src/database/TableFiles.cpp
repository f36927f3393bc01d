// Table text files (".idt"): every table of a package written out, one table written or read.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"

// The file name is the directory and the table's name glued together: the caller gives a
// directory that ends in a separator.
bool ODLEXDatabase::ExportTableToFile(MSIDatabase& database, const TalString& table,
                                      const TalString& directory) {
  return database.Export(table, directory + table + u".idt") == 0;
}

bool ODLEXDatabase::ExportMSI(const TalString& packagePath, const TalString& directory) {
  MSIDatabase database(packagePath, MSIDatabase::ePersistReadOnly, eSchema110);
  MSIT_Tables tables;
  tables.SetDatabase(database);
  if (!tables.Populate())
    return false;
  for (RWCollectable* item : tables.GetTable()) {
    if (!ExportTableToFile(database, static_cast<MSIE_Tables*>(item)->GetName(), directory))
      return false;
  }
  return ExportTableToFile(database, u"_SummaryInformation", directory);
}

bool ODLEXDatabase::ImportTableFromFile(MSIDatabase& database, const TalString& file) {
  return database.Import(file) == 0;
}
