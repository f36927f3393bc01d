#pragma once
// Packages opened through the library's database object, for the commands that work on table
// objects (sequences, custom actions) rather than on the engine's tables.
//
// A command opens its package inside one LibrarySession; when the session ends the list of open
// databases is emptied without saving, so a command that fails before it saves writes nothing:
// an edit into an output file writes that file only when saved (or, for a package holding
// sub-storages, whose open copies it there, the copy is removed).
// Failures of the library (ODLEXDatabaseError) become Failure here, with a text saying what was
// asked.

#include <set>
#include <string>

#include <odlex/tables/ODLEXDatabaseError.h>

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
  // `package` for editing: in place, or read-only with `target.output` receiving the changes
  // (Failure, error 3, when that is the package itself); for a dry run, in place, never to be
  // saved.
  ODLEXDatabase& openForEdit(const std::string& package, const EditTarget& target);
  // Writes the changes of a database opened for editing (atomically), unless it was opened for
  // a dry run; Failure when that failed.
  void save(ODLEXDatabase& db);

 private:
  std::set<ODLEXDatabase*> dryRuns_;
  std::set<ODLEXDatabase*> unsavedOutputs_;  // opened into an output file, not saved yet
};

// Runs `call` and gives what it returns, turning a library error (ODLEXDatabaseError) into a
// Failure with its code and the text `what`, which says what was asked.
template <class Call>
decltype(auto) library(const std::string& what, Call call) {
  try {
    return call();
  } catch (const ODLEXDatabaseError& error) {
    throw Failure(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), what);
  }
}

// The table object of the table called `table` (exact case); Failure (error 32) when no table
// has that name.
ODLEXTObject& tableNamed(ODLEXDatabase& db, const std::string& table);

// The key of a row: its key columns' values joined by '/'.
std::string keyOf(const MSIEntry& row);

}  // namespace odlex::cli
