#pragma once
// MSIDatabase: one installer database as the lower-layer table classes see it. It opens a
// package, merge module or patch-creation file (in place, read-only, or reading one file and
// writing another), commits, exports and imports table text files, creates standard tables
// and keeps the errors of every failing call.
//
// Result codes: every call that can fail returns the installer's result code (0 = success)
// and, on failure, adds a TalError with the same code and a text naming the file, table or
// query concerned to the database's error list. Nothing here throws.
//
// Opening and committing: the whole database is read into memory when it is opened; edits
// stay in memory until commit() writes a complete new file beside the target and renames it
// into place, so a failed commit leaves the file as it was. In every persist mode except the
// read-only one, changes are therefore only in the file after commit() or close(true).
//
// Opening into an output file, open(in, out): `in` is read and never written; commit writes
// everything to `out` (created or replaced). getInPath() then names `in` and getPath() `out`.
// Once a commit has written `out`, re-opening with open() reads `out`, which holds the changes,
// and keeps writing to it; before that first commit, open() reads `in` again.

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "odlex/msi/Nullable.h"
#include "odlex/msi/eSchemaVersion.h"
#include "odlex/support/TalError.h"
#include "odlex/support/TalString.h"

namespace odlex::engine {
class Database;
}
class MSIT_SummaryInformation;

// The word count of a package's summary information: bits saying how its source files are
// laid out. 0 means long file names, uncompressed, not an administrative image.
enum msidbSumInfoSourceType : int {
  msidbSumInfoSourceTypeSFN = 1,         // short file names
  msidbSumInfoSourceTypeCompressed = 2,  // files in cabinets
  msidbSumInfoSourceTypeAdminImage = 4,  // an administrative installation image
  msidbSumInfoSourceTypeLUAPackage = 8,  // installs without elevation
};

class MSIDatabase {
 public:
  // How a file is opened. The numbers are those the table classes pass around.
  // A fixed underlying type: hosts pass plain numbers, and an unknown one is refused (87)
  // rather than being undefined.
  enum ePersistMode : int {
    ePersistTransact = 1,      // open for update (same as ePersistDirect: edits wait for commit)
    ePersistDirect = 2,        // open for update
    ePersistCreate = 3,        // make a new, empty database (replacing the file on commit)
    ePersistReadOnly = 4,      // open for reading; commit is refused
    ePersistCreateDirect = 5,  // same as ePersistCreate
  };

  // The platform part of the summary information's template ("x64;1033"). Template texts, in
  // order: "", "Intel", "x64", "Arm64", "Intel64".
  enum ePlatform : int {
    ePlatformNone = 0,
    ePlatformIntel = 1,
    ePlatformX64 = 2,
    ePlatformArm64 = 3,
    ePlatformIntel64 = 4,
  };

  // An unopened database object. `schema` is the schema version written into the summary
  // information of databases created with it.
  explicit MSIDatabase(eSchemaVersion schema = eSchema500);
  // Constructs and opens `path`; check isValid() and GetError() for the outcome.
  MSIDatabase(const TalString& path, ePersistMode mode, eSchemaVersion schema = eSchema500);
  ~MSIDatabase();
  MSIDatabase(const MSIDatabase&) = delete;
  MSIDatabase& operator=(const MSIDatabase&) = delete;

  // Opening closes whatever was open before, without committing it.
  unsigned open(const TalString& path, ePersistMode mode);
  unsigned open(const TalString& in, const TalString& out);
  // Opens the current file(s) again (see above). kInvalidHandle (6) when nothing was opened.
  unsigned open();
  // Closes, committing first when `commit` is true and the database is writable. Returns the
  // commit's result (0 when nothing was to be committed). The paths stay for open().
  unsigned close(bool commit);
  // Writes the database. 5 (access denied) when opened read-only, 6 when not open. A commit
  // with nothing changed since the last one writes nothing.
  unsigned commit();
  // Whether a commit wrote the file and nothing changed since.
  bool committedUnchanged() const;

  // The file that receives changes (the only file unless opened with two paths).
  const TalString& getPath() const { return path_; }
  // The source file of open(in, out); empty otherwise.
  const TalString& getInPath() const { return inPath_; }
  bool isValid() const;
  bool isReadOnly() const;

  // Errors, oldest first. GetError removes the oldest pending error and returns it; the object
  // stays owned by the database and remains valid until the next GetError, ClearErrors or the
  // database's destruction. Null when no error is pending.
  TalError* GetError();
  void ClearErrors();
  std::size_t GetErrorCount() const { return errors_.size(); }
  // Adds an error to the list (for the table classes built on this database).
  void AddError(TalError error);

  // Where the schema templates live. Kept for the callers that set it; the schema catalog is
  // built into the library, so the value changes nothing.
  void SetSchemaCAB(const TalString& path) { schemaCab_ = path; }
  const TalString& GetSchemaCAB() const { return schemaCab_; }
  // The module identifier of a merge module (its ModuleSignature.ModuleID), kept for the
  // table classes that name merge-module rows.
  void SetModuleID(const TalString& id) { moduleId_ = id; }
  const TalString& GetModuleID() const { return moduleId_; }

  // Writes `table` (a table, a catalog table, _SummaryInformation or _ForceCodepage) as a
  // table text file; binary cells go into a folder named after the table beside `file`.
  unsigned Export(const TalString& table, const TalString& file);
  // Reads a table text file into the database, replacing the table of that name.
  unsigned Import(const TalString& file);
  // Creates the empty standard table `name` with the columns of the built-in schema catalog.
  // 1628 for a name the catalog does not know, 183 when the table exists.
  unsigned AddTable(const TalString& name);

  // The database's schema version: the summary information's page count; eSchemaNone when
  // the database is not open or declares none.
  eSchemaVersion GetVersion() const;
  // The schema version given at construction.
  eSchemaVersion GetSchema() const { return schema_; }
  // The newest schema version this library knows: eSchema500.
  static eSchemaVersion GetMSIVersion() { return eSchema500; }
  // Text to version: the decimal number of a listed version ("200", "405"), as the summary
  // information's page count holds it. Anything else, the empty text included, gives
  // eSchemaNone.
  static eSchemaVersion MapVersion(const TalString& text);
  // Version to text: the decimal number; the empty text for eSchemaNone.
  static TalString MapVersion(eSchemaVersion version);

  // The common summary information fields, through `table` (populated from this database when
  // it holds no row yet). sourceType is the word count (0 when absent), platform the template's
  // part before ';' (ePlatformNone when absent or unknown; "AMD64" counts as x64), times as
  // FILETIME counts. False, changing nothing, when the database has no summary information.
  // Defined with the table classes: callers link the odlex library, not this layer alone.
  bool GetSummaryInformation(MSIT_SummaryInformation& table, msidbSumInfoSourceType& sourceType,
                             ePlatform& platform, TalString& title, TalString& subject,
                             TalString& author, TalString& comments, NullableQuad& created,
                             NullableQuad& lastSaved);
  // Sets those fields in `table`'s row, creating the row when the database has none; the
  // template keeps its language part. With newPackageCode the revision number gets a new GUID.
  // The row is marked modified; persisting the table writes it. False (with an error) when
  // `table` cannot be populated.
  bool UpdateSummaryInformation(MSIT_SummaryInformation& table, bool newPackageCode,
                                msidbSumInfoSourceType sourceType, ePlatform platform,
                                const TalString& title, const TalString& subject,
                                const TalString& author, const TalString& comments);

  // The engine object behind the table classes of this layer; null when not open.
  odlex::engine::Database* engineDatabase() { return engine_.get(); }
  const odlex::engine::Database* engineDatabase() const { return engine_.get(); }
  // Counts opens and closes, so that views and records made earlier can tell that the
  // engine object they used has gone.
  std::uint64_t generation() const { return generation_; }
  // Lives as long as this object, so that what was made from it (records) can tell, through a
  // weak reference, that it is gone.
  std::weak_ptr<const void> lifetime() const { return lifetime_; }

 private:
  // Opens the engine on the current paths and mode. On a re-open, a created database that has
  // been committed is opened for update, and an output file that has been committed is read
  // instead of the source.
  unsigned startEngine(bool reopen);
  // Records a failure of `operation` and returns its code.
  unsigned fail(unsigned code, const char16_t* operation, const std::string& text);
  // kInvalidHandle with an error when not open.
  unsigned requireOpen(const char16_t* operation);
  // As requireOpen, and kAccessDenied with an error when opened read-only.
  unsigned requireWritable(const char16_t* operation);

  eSchemaVersion schema_;
  std::unique_ptr<odlex::engine::Database> engine_;
  std::uint64_t generation_ = 0;
  std::shared_ptr<const int> lifetime_ = std::make_shared<const int>(0);
  ePersistMode mode_ = ePersistDirect;
  bool committedOutput_ = false;  // a commit has written the output file of open(in, out)
  TalString path_;
  TalString inPath_;
  TalString schemaCab_;
  TalString moduleId_;
  std::deque<TalError> errors_;
  TalError taken_;  // the error GetError returned last
};
