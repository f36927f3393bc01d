// Opening packages through the library's database object, for the commands on table objects.

#include "LibraryDatabase.h"

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXDatabaseError.h>

namespace odlex::cli {

namespace {

template <class Open>
ODLEXDatabase& open(const std::string& package, Open how) {
  try {
    return how(TalString::FromUtf8(package));
  } catch (const ODLEXDatabaseError& error) {
    throw Failure(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), "cannot open " + package);
  }
}

}  // namespace

LibrarySession::LibrarySession() {
  ODLEXDatabase::INIT();
}

LibrarySession::~LibrarySession() {
  ODLEXDatabase::KillDatabaseList();
}

ODLEXDatabase& LibrarySession::openReadOnly(const std::string& package) {
  return open(package, [](const TalString& path) -> ODLEXDatabase& {
    ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
    return ODLEXDatabase::AddDatabaseToList(path, readOnly);
  });
}

ODLEXDatabase& LibrarySession::openForEdit(const std::string& package, const std::string& output) {
  return open(package, [&output](const TalString& path) -> ODLEXDatabase& {
    if (output.empty())
      return ODLEXDatabase::AddDatabaseToList(path);
    const TalString outputPath = TalString::FromUtf8(output);
    ODLEXOpenType intoOutput(outputPath.u16().c_str());
    return ODLEXDatabase::AddDatabaseToList(path, intoOutput);
  });
}

void LibrarySession::save(ODLEXDatabase& db) {
  if (!db.SaveChanges()) {
    const TalError& error = db.GetTalError();
    throw Failure(error.GetCode(), "cannot save: " + error.GetText().ToUtf8());
  }
}

ODLEXTObject& tableNamed(ODLEXDatabase& db, const std::string& table) {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) \
  if (table == #Table)                                 \
    return db.GetTableObject(ODLEXTObject::e##Table);
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
  throw Failure(ODLEXDatabaseError::eTableNotFound, "no table " + table);
}

}  // namespace odlex::cli
