#pragma once
// Packages opened through the library's database object, for the commands that work on table
// objects (sequences, custom actions) rather than on the engine's tables.
//
// A command opens its package inside one LibrarySession; when the session ends the list of open
// databases is emptied without saving, so a command that fails before it saves writes nothing.
// Failures of the library (ODLEXDatabaseError) become Failure here, with a text saying what was
// asked.

#include <string>

#include "Cli.h"

class MSIEntry;
class ODLEXDatabase;
class ODLEXTObject;

namespace odlex::cli {

// A session also loads the change log's message catalog shipped with the tool, so that edits
// of packages whose keyword "ChangeLog" is ENABLED are logged.
class LibrarySession {
 public:
  LibrarySession();
  ~LibrarySession();
  LibrarySession(const LibrarySession&) = delete;
  LibrarySession& operator=(const LibrarySession&) = delete;

  // `package`, read-only: edits stay in memory.
  ODLEXDatabase& openReadOnly(const std::string& package);
  // `package` for editing, in place; or with `output`, a copy of it written to `output`.
  ODLEXDatabase& openForEdit(const std::string& package, const std::string& output);
  // Writes the changes to the file (atomically); Failure when that failed.
  void save(ODLEXDatabase& db);
};

// The table object of the table called `table` (exact case); Failure (error 32) when no table
// has that name.
ODLEXTObject& tableNamed(ODLEXDatabase& db, const std::string& table);

// The key of a row: its key columns' values joined by '/'.
std::string keyOf(const MSIEntry& row);

}  // namespace odlex::cli
