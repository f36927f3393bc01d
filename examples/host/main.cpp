// A small host of the library, as an installer-authoring application uses it: open a package
// through the list of open databases, edit rows through the table objects, save, close.
//
// usage: odlex-host PACKAGE PROPERTY VALUE ERROR MESSAGE SHORTCUT
//   sets PROPERTY to VALUE, adds the Error row ERROR with MESSAGE, deletes the Shortcut row
//   SHORTCUT, and saves PACKAGE in place.

#include <odlex/odlex.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

TalString arg(const char* text) {
  return TalString::FromUtf8(text);
}

// Ends the library's use however the program ends: every database is closed, unsaved.
struct Session {
  Session() { ODLEXDatabase::INIT(); }
  ~Session() { ODLEXDatabase::KillDatabaseList(); }
};

int fail(const char* what, int code) {
  std::fprintf(stderr, "odlex-host: %s (code %d)\n", what, code);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fputs("usage: odlex-host PACKAGE PROPERTY VALUE ERROR MESSAGE SHORTCUT\n", stderr);
    return 2;
  }
  const TalString package = arg(argv[1]);
  const Session session;
  try {
    ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(package);

    db.GetProperty().SetValue(arg(argv[2]), arg(argv[3]));

    MSIEError error(static_cast<short>(std::atoi(argv[4])));
    error.SetMessage(arg(argv[5]));
    ODLEXTError& errors = db.GetError();
    errors.Add(error);
    if (errors.GetTempEntries().isEmpty())
      return fail("the Error row exists already", 0);  // nothing is saved

    ODLEXTShortcut& shortcuts = db.GetShortcut();
    shortcuts.Delete(shortcuts.GetShortcutWithID(arg(argv[6])));

    db.SaveChanges();
    ODLEXDatabase::RemoveDatabaseFromList(package, false);
    return 0;
  } catch (const ODLEXDatabaseError& error) {
    return fail("the database refused", static_cast<ODLEXDatabaseError::eCodeMeaning>(error));
  }
}
