#pragma once
// ODLEXDatabase: one open installer database (.msi, .msm, .pcp) and the process-wide list of
// open databases.
//
// The list (GetDatabaseList) owns the databases; hosts hold references. AddDatabaseToList and
// GetDatabaseWithFilePath open a file, or give the database already open for it, so every
// caller naming the same file works on the same object.
//
// Where this differs from the installer library's literal steps, and why (on Windows a package
// is locked while open and names ignore case; here a file can change under a lazy reader, names
// differ by case, and one file has many spellings):
//   - Files are identified by the file itself (device and inode; the canonical path for a file
//     not created yet), never by the path as spelled: GetDatabaseWithFilePath,
//     IsDatabaseFilePathLoaded and RemoveDatabaseFromList find the database whose opened file
//     (GetFilePath) is the file named, and AddDatabaseToList gives the database already working
//     on the file (GetDatabasePath) without opening it again. "p.msi" and "/abs/p.msi" are one
//     database, "P.msi" another. The list is ordered by the canonical working path.
//   - AddDatabaseToList into an output file refuses (code 3) an output file that is the file
//     opened, or that an open database works on or was opened from, before copying anything.
//   - RemoveFromList removes and destroys this database, never another opened from the same
//     file.
//   - Reload reads the file again; SaveChanges reports (false, the reason in the lower layer's
//     error list) a commit refused because another program changed the file since it was read.
//   - SetDatabasePath into an output file copies no _Streams row: the output reads the named
//     file and holds every stream of it, left there until a save copies it in bounded pieces
//     (a row copy would read each stream whole into memory). A source with a sub-storage is
//     still refused (code 81). SaveChanges of such a database writes the system tables
//     (summary information, _Streams, _Storages) as well, so that the save after an edit
//     writes the output once and complete; Close(true) writes them again.
//   - A read-only database is never written: Rollback reopens it read-only. No temporary copy
//     is made for a read-only open, and only the working copy made by an output-file open is
//     ever deleted (by Close without saving).
//
// A database owns its lower-layer MSIDatabase and one lazily made table object per table type,
// in slot 4194 - typeID. Edits only mark rows and tables; SaveChanges persists the modified
// table objects (the members of a table's set first) and commits; Rollback puts the file back
// as it was first opened.
//
// Failures the database detects are thrown as ODLEXDatabaseError; lower-layer failures are kept
// in the lower layer's error list (GetTalError, DumpAllErrors). Debug lines go to the debug
// output sink (odlex/support/DebugOutput.h). Everything here is for one thread.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "odlex/database/ODLEXDatabaseInfo.h"
#include "odlex/database/ODLEXOpenType.h"
#include "odlex/database/Progress.h"
#include "odlex/msi/MSIDatabase.h"
#include "odlex/msi/MSIStringChecker.h"
#include "odlex/package/ODLEXMergeErrors.h"
#include "odlex/support/RWBTree.h"
#include "odlex/support/RWCollectable.h"
#include "odlex/support/RWFactory.h"
#include "odlex/tables/ODLEXTObject.h"

#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) class ODLEXT##Table;
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE

class MSIE_Storages;
class MSITranslate;
namespace odlex::database {
class MessageCatalog;
}
class ODLEXBaseChecker;
struct ODLEXSearchMatch;

class ODLEXDatabase : public RWCollectable {
 public:
  ~ODLEXDatabase() override;
  ODLEXDatabase(const ODLEXDatabase&) = delete;
  ODLEXDatabase& operator=(const ODLEXDatabase&) = delete;

  // Collectable protocol: class id 387; ordered by the canonical working path (exact case).
  RWCollectable* newSpecies() const override;
  RWCollectable* copy() const override;
  RWClassID isA() const override;
  static RWClassID classIsA() { return myAtom; }
  int compareTo(const RWCollectable* other) const override;
  unsigned hash() const override;
  bool isEqual(const RWCollectable* other) const override;

  // --- The list of open databases -----------------------------------------------------------
  static ODLEXDatabase& AddDatabaseToList(const TalString& path);
  static ODLEXDatabase& AddDatabaseToList(const TalString& path, ODLEXOpenType& how);
  static ODLEXDatabase& GetDatabaseWithFilePath(const TalString& path);
  static ODLEXDatabase& GetDatabaseWithFilePath(const TalString& path, ODLEXOpenType& how);
  static bool IsDatabaseFilePathLoaded(const TalString& path);
  static RWBTree& GetDatabaseList();
  static void RemoveDatabaseFromList(const TalString& path, bool save);
  void RemoveFromList(bool save);
  static void KillDatabaseList();

  // --- Opening, table objects, saving ---------------------------------------------------------
  bool SetDatabasePath(const TalString& path, ODLEXOpenType& how);
  ODLEXTObject& GetTableObject(ODLEXTObject::typeID type);
  ODLEXTObject& GetTableObject(ODLEXTObject::typeID type, bool load);
  // One typed accessor per table type: GetComponent(), Get_SummaryInformation(), ... The
  // accessors of tables that need a newer schema (FileSFPCatalog, SFPCatalog and the
  // MsiAssembly, MsiDigital... and MsiFileHash tables) throw code 60 when the database's schema
  // cannot hold them.
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) ODLEXT##Table& Get##Table();
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE

  void Modify(bool modified) {
    SetModified(modified);
  }
  void SetModified(bool modified);
  bool IsModified() const;
  bool GetInteriorModify() const;
  void SetExteriorModify(bool modified) {
    exteriorModify_ = modified;
  }
  bool GetExteriorModify() const {
    return exteriorModify_;
  }
  // Persists the modified table objects and commits; false when the commit failed. A save with
  // nothing to write since the last one leaves the file as that save wrote it, its last-save
  // time and package code included.
  bool SaveChanges();
  void PersistTables();
  void Rollback();
  void Reload();
  void Close(bool save);

  // --- Transforms -----------------------------------------------------------------------------
  // A transform is a file in the installer's own format holding the changes that turn one
  // database (the base) into another: rows added, changed and deleted, tables added and dropped,
  // columns added, streams. errorConditions are the MSITRANSFORM_ERROR_* bits (add existing row
  // 1, delete missing row 2, add existing table 4, delete missing table 8, update missing row
  // 0x10, code page mismatch 0x20, view transform 0x100), validation the MSITRANSFORM_VALIDATE_*
  // bits; both go into the transform's summary information for the installer.
  //
  // While creating a transform, this database works on a separate copy of the file it opened
  // (an output-file open): every SaveChanges that commits also writes the transform from the
  // file opened (GetFilePath) to the copy saved, to GetTransformPath(). Code 41 when the
  // database is read-only or works on the file it opened.
  void SetCreatingTransform(bool creating);
  bool IsCreatingTransform() const {
    return creatingTransform_;
  }
  // Where SaveChanges writes the transform while creating one: by default the working file's
  // path with the extension ".mst".
  void SetTransformPath(const TalString& path) {
    transformPath_ = path;
  }
  TalString GetTransformPath() const;
  // Writes to `transformPath` the transform that turns the package at `basePath` into this
  // database as it is now (unsaved edits included). False, writing nothing, when the two do not
  // differ. Code 42 when this database is not open or the base cannot be read; code 43 with the
  // installer result code when the transform cannot be made (a column change a transform cannot
  // carry: only new non-key columns at a table's end are) or written.
  bool GenerateTransform(const TalString& basePath, const TalString& transformPath,
                         int errorConditions = 0, int validation = 0);
  // The same from the file opened (GetFilePath) to this database as it is now: the changes made
  // since it was opened, in whatever program. Code 43 with the result code on any failure.
  bool GenerateTransformFromUIInstall(const TalString& transformPath, int errorConditions = 0,
                                      int validation = 0);
  // Applies the transform file `transform`, or the transform embedded in this database as the
  // sub-storage `name` when `transform` is ":name". Conditions whose bits are in
  // errorConditions, or in the transform's own summary information, are not failures: an
  // existing row that is added takes the transform's values, the rest are skipped. Every change
  // that could not be applied as written is added to the lower layer's error list (code 1624,
  // "skipped: ..." for a suppressed one). When one is not suppressed nothing is applied and code
  // 44 is thrown; likewise for a transform that cannot be read. With the view bit (0x100) the
  // database is left as it is and the changes fill the _TransformView table instead. Unsaved
  // edits are kept; the table objects are read again afterwards. The transform's validation
  // flags are not checked: as with the installer's own call on a database, they are what the
  // installer compares with an installed product when it applies the transform at install.
  void ApplyTransform(const TalString& transform, int errorConditions = 0);
  // Stores the transform file `transformPath` in this database as the sub-storage `name`, to be
  // applied later as ":name"; written with the next SaveChanges. Code 44 when the file is not a
  // transform that applies to this database.
  void EmbedTransform(const TalString& transformPath, const TalString& name);

  bool IsReadOnly() const {
    return readOnly_;
  }
  bool IsValid() const {
    return database_.isValid();
  }
  MSIDatabase& GetDatabase() {
    return database_;
  }
  const TalString& GetFilePath() const {
    return filePath_;
  }
  TalString GetDatabasePath() const {
    return database_.getPath();
  }
  MSITranslate& GetTranslator();
  // Where the package's source image is, as "[SourceDir]" resolves: the folder of the package
  // file opened (GetFilePath) with a trailing separator, unless SetSourceRoot named another (a
  // network share the package is installed from, say). An empty path goes back to the package's
  // folder.
  TalString GetSourceRoot() const;
  void SetSourceRoot(const TalString& path) {
    sourceRoot_ = path;
  }
  void SetStorage(void* storage) {
    storage_ = storage;
  }
  void* GetStorage() const {
    return storage_;
  }

  // Takes the oldest pending lower-layer error and discards the rest; code 0 when none.
  const TalError& GetTalError();
  // Writes every pending lower-layer error to the debug output, one "TalMSI: <text>\r\n" line
  // each.
  void DumpAllErrors();

  // --- Product information and file kind ------------------------------------------------------
  ODLEXDatabaseInfo GetDatabaseInfo() const {
    return info_;
  }
  // Takes `info` as the database's product information when IsValid accepts it, and writes the
  // values that differ from the current record back: the package code to the summary
  // information, the rest to the Property table (a value that becomes empty, or a flag that
  // becomes false, removes its property; all-users 0 removes ALLUSERS). A merge module's product
  // code is its module signature's and is not written. The package-code policy is a setting of
  // this open database only and is not written to the file. `reason`, when given, receives the
  // failing IsValid mask as a decimal number ("0" when accepted); the record is refused whole.
  void SetDatabaseInfo(const ODLEXDatabaseInfo& info, TalString* reason);
  // Each text of `info` the database's code page cannot hold adds its bit to `mask`: comments
  // 1, contact 2, readme 4, manufacturer 8, product name 16, help link 32, help telephone 64,
  // product code 128, product ID 256, update URL 512, product version 1024. True when none.
  bool IsValid(const ODLEXDatabaseInfo& info, unsigned& mask) const;
  // Upper-cases `guid` and checks it is "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}": shorter than
  // 38 adds 1, no "{" first 2, a non-hex digit 4, a missing "-" 8, no "}" at 37 16, characters
  // after a malformed GUID 32. Characters after a well-formed GUID are cut off and accepted.
  static bool IsValidGUID(TalString& guid, unsigned& mask);
  // The GUID as a merge-module suffix: braces dropped, "-" made "_"; empty when `guid` is
  // shorter than 38 characters.
  static TalString GetModuleGUID(const TalString& guid);
  // The ProductName and ProductCode properties of the package at `path`, read without listing
  // it; code 3 when the file cannot be opened, 45 to 47 as GetDatabaseProperty.
  static void GetProductNameAndCode(TalString& name, TalString& code, const TalString& path);
  // The summary information's Template ("Intel;1033": platform and languages) of the package
  // at `path`, read without listing it; empty when it has none. Code 3, with the lower layer's
  // status, when the file cannot be opened or its summary information read.
  static TalString GetTemplateSumProp(const TalString& path);
  // A schema version's text ("200") to the version's text as this library writes it; the empty
  // text for an unknown version. DeMungeVersion maps back; GetVersionFromEnum is the number.
  static TalString MungeVersion(const TalString& version);
  static TalString DeMungeVersion(const TalString& version);
  static TalString GetVersionFromEnum(eSchemaVersion version);
  // Never true: no file name is accepted as an installer file name by this check.
  static bool IsMSIFileNameOK(const TalString& name);
  // The package file the database was opened from, and its folder (up to and including the
  // last separator; empty when the path has none).
  TalString GetSourcePath() const;
  TalString GetSourceDirectory() const;
  bool IsMergeModule();
  void SetMergeModule(bool mergeModule);
  bool IsPCP() const;
  bool IsCompressed() const {
    return compressed_;
  }
  bool CheckForCompression();
  eSchemaVersion GetVersion() const {
    return database_.GetVersion();
  }
  // Whether the database's code page can hold the character / text; false before the first
  // successful open.
  bool IsCharOK(char16_t c) const;
  bool IsStringOK(const TalString& text) const;
  static bool MatchesExtension(const TalString& path, const TalString& extension);

  // --- Administrative installs and table files -----------------------------------------------
  // Runs the installer's command-line program as "<program> /qn /a <package>" (quiet
  // administrative install), each part one argument and no shell involved, and waits for it.
  // True once the program started and ended, whatever its exit status; false when it could not
  // be started.
  static bool DoAdministrativeInstall(const char16_t* packagePath);
  // Each package of the ";"-separated list in turn (empty entries skipped), all of them even
  // after a failure; true when every one was true.
  static bool DoAdministrativeInstall(const TalString& packagePaths);
  // Makes the administrative image of one package in `directory` by itself, with no installer
  // program: what ODLEXPackageFiles::MakeAdministrativeImage writes. True when every file and
  // the image's package were written. Part of the package operations (the odlex_package layer).
  static bool MakeAdministrativeImage(const TalString& packagePath, const TalString& directory);
  // The installer's command-line program: a path, or a name looked up on PATH. "msiexec" until
  // set; an empty text restores that.
  static void SetInstallerProgram(const TalString& program);
  static const TalString& GetInstallerProgram();
  // Every table of the package, then its summary information, as "<directory><table>.idt";
  // stops at the first table that cannot be written (the files written stay). False when the
  // package's tables cannot be listed or a table could not be written.
  static bool ExportMSI(const TalString& packagePath, const TalString& directory);
  static bool ExportTableToFile(MSIDatabase& database, const TalString& table,
                                const TalString& directory);
  static bool ImportTableFromFile(MSIDatabase& database, const TalString& file);

  // --- Merge modules and patch-creation files (package layer) -------------------------------
  // Merges the merge module at `modulePath` into this package, in memory (SaveChanges writes
  // it): the module's rows are copied (keys as the module has them), its components attached to
  // Feature `feature`, its root directory replaced by Directory `directory`, its Module*Sequence
  // actions placed into the package's sequence tables, its configurable items substituted with
  // `configuration` (name, value pairs; an item not given takes its default), and its files
  // numbered after the package's last file and put into a new Media row with its own embedded
  // cabinet. Edits made through table objects are persisted first, and the table objects of the
  // tables the merge changed are unloaded: rows taken from them before are gone.
  // Every problem goes to GetMergeErrors(), which is replaced by each call. Problems that end
  // the merge throw ODLEXDatabaseError with the code of the step, leaving the package as it
  // was: 3 the module cannot be opened or read, 48 this package cannot take a merge (read-only),
  // 49 the module has no usable signature, 50 an exclusion between the module and a merged one,
  // 51 a configurable item without a usable value, 53 the feature or the directory is missing
  // or the module's paths conflict with the package's, 54 a row cannot be copied, 57 an action
  // cannot be placed in a sequence table, 58 the module's files cannot be read or written.
  ODLEXMergeSummary MergeModule(const TalString& modulePath, const TalString& feature,
                                const TalString& directory,
                                const std::vector<std::pair<TalString, TalString>>& configuration);
  // Building a patch package from this patch-creation file needs the Windows patch wizard,
  // which does not exist on this platform: always 120 (not implemented), with a text saying so
  // in the lower layer's error list (GetTalError). Nothing is written.
  unsigned CreatePatchPackage(const TalString& patchPath);

  // --- Table types, sets and schema -----------------------------------------------------------
  static ODLEXTObject::typeID GetTableType(const TalString& name);
  static bool CanCreateTable(ODLEXTObject::typeID type, const ODLEXDatabase& db);
  bool IsTableValid(ODLEXTObject::typeID type) const;
  static std::multimap<eTableSets, ODLEXTObject::typeID> related_tables;

  // --- Search and replace over the whole package -------------------------------------------
  // The tables searched: every table of the package (and every table object made since it was
  // opened), except the tables the database keeps about itself (names starting with "_") and
  // the change log, which records what was done and is never rewritten. Each table's rows are
  // searched or replaced as ODLEXTObject::Search / SearchAndReplace do it.
  struct TableCount {
    TalString table;
    unsigned count;
  };
  // The tables with matching rows, in name order, with how many rows matched.
  std::vector<TableCount> Search(const ODLEXBaseChecker& checker,
                                 std::vector<ODLEXSearchMatch>* matches = nullptr);
  // The tables in which replacements were made, in name order, with how many.
  std::vector<TableCount> SearchAndReplace(const TalString& find, const TalString& replace,
                                           unsigned long flags);

  // --- Change log -----------------------------------------------------------------------------
  // Whether every database logs its edits. The package's keyword "ChangeLog" (index 0) of the
  // ZrKeyword table decides over this switch: "ENABLED" turns logging on for the package even
  // when the switch is off, "DISABLED" turns it off even when the switch is on (both ignoring
  // case). Off at start.
  static void SetChangeLogging(bool on);
  static bool GetChangeLogging();
  // When a message catalog is loaded (SetResources) and logging is on for this package (see
  // above), formats message `messageId` of the catalog with `inserts` (%1 is the first) and
  // appends it to the package's ZrChangeLog table (made when missing), naming `table` unless it
  // is empty; the table is written to the database at once. Otherwise, and for a read-only
  // database, does nothing. A message the catalog lacks is recorded with an empty text.
  void UpdateChangeLog(unsigned long messageId, const std::vector<std::u16string>& inserts,
                       const TalString& table);

  // --- User interface -------------------------------------------------------------------------
  // Drops the 20 user-interface tables (AdminUISequence, AdvtUISequence, BBControl, Billboard,
  // CheckBox, ComboBox, Control, ControlCondition, ControlEvent, Dialog, EventMapping,
  // InstallUISequence, ListBox, ListView, ModuleAdminUISequence, ModuleAdvtUISequence,
  // ModuleInstallUISequence, RadioButton, TextStyle, UIText) from the database, whichever it
  // has, and marks the database modified. Their table objects are replaced by fresh, unloaded
  // ones: rows of them held by the caller are gone. A second call changes nothing more.
  void RemoveGUI();
  // Replaces this package's dialogs by those of the package at `path`: the rows of Dialog,
  // Control and ControlEvent, in that order, each table emptied and then given copies of the
  // source's rows. The product's query dialog "ZrQueryX" (compared ignoring case) is never
  // copied from the source, and this package's own rows of it are kept, so that the query the
  // product asks survives an import. The other user-interface tables (text styles, bitmaps,
  // sequences, ...) and the GUI property list stay as they are. The source is opened
  // read-only and never written; it is taken out of the list of open databases afterwards
  // unless it was open before. Importing from this package itself does nothing. Throws as
  // GetDatabaseWithFilePath when the source cannot be opened.
  void ImportGUI(const TalString& path);
  // The GUI property list: triples of (key, prompt, title). OpenGUIProperties appends one triple
  // for each dialog whose name contains "ZrQuery" (name D, key D without its first "ZrQuery",
  // prompt and title the values of the properties D + "Prompt" and D + "Title") and returns a
  // new handle that walks the whole list from its start. GetNextGUIProperty gives the next
  // triple (false, with the three texts emptied, at the end); CloseGUIProperties frees the
  // handle. AddGUIProperty appends a triple. Each Open appends the dialogs' triples again.
  void* OpenGUIProperties();
  bool GetNextGUIProperty(TalString& key, TalString& prompt, TalString& title, void* handle);
  void CloseGUIProperties(void* handle);
  void AddGUIProperty(const char16_t* key, const char16_t* prompt, const char16_t* title);

  // --- Class-wide settings --------------------------------------------------------------------
  static void INIT();
  // Loads the message catalog the change log is written with: a Windows module (DLL) with a
  // message table, read as data (nothing in it is run), or a UTF-8 text file with one
  // "ID = text" line per message (decimal or 0x hex IDs; empty lines and "#" lines skipped).
  // The library ships one, share/odlex/messages.txt. A file that is neither, or cannot be
  // read, is reported to the debug output ("ODLEX: SetResources: ...") and leaves no catalog
  // loaded; nothing is thrown. KillDatabaseList releases the catalog.
  static void SetResources(TalString path);
  static void SetSchemaCAB(const TalString& path);
  static void SetProgramDir(const TalString& path);
  static const TalString& GetProgramDirectory();
  static void SetCurrentDirectoryW(const TalString& path);
  static const TalString& GetCurrentDirectoryW();
  static void SetSingleProgress(SingleProgress* progress);
  static void SetDualProgress(DualProgress* progress);
  static void ClearSingleProgress();
  static void ClearDualProgress();
  static SingleProgress& GetSingleProgress();
  static DualProgress& GetDualProgress();
  static void SetCopySingleFile(bool (*copy)(const TalString& from, const TalString& to));
  bool CopySingleFile(const TalString& from, const TalString& to);
  static void SetUserPermitsFunction(bool (*permits)());
  static bool UserPermits();
  static void SetGlobalAutoUpdatePackageCode(bool (*autoUpdate)());
  // The full path of the product's custom-action DLL, for all open databases; empty at start.
  // Its file name (after the last backslash or slash) names the DLL's Binary row
  // (ODLEXTBinary::GetOrvaneCustomAction).
  static void SetOrvaneCustomAction(const TalString& dllPath);
  static const TalString& GetOrvaneCustomActionDLL();
  static ODLEXMergeErrors* GetMergeErrors();
  static void WriteDebugInfo(unsigned code, bool flag);
  // The name of the temporary read-only copy of `path`: the same name ending in ".mri".
  static TalString GetTempMsiFileName(const TalString& path);
  // Deletes that file, unless it is `path` itself (a package named "pkg.mri"). The library
  // makes no such copy; this is for hosts that do.
  static void DeleteReadOnlyTemp(const TalString& path);

  static unsigned totalODLEXTObjects;
  static unsigned nonODLEXRWCollectables;

 protected:
  static void InitRelatedTables();
  // The Value of Property row `name`, by a query on `database`. Each failing step writes its
  // line and the lower layer's code to the debug output and throws: the view does not open
  // (47), does not run (46), yields no row (45, also for a missing property).
  static TalString GetDatabaseProperty(MSIDatabase& database, const TalString& name);

 private:
  ODLEXDatabase();
  explicit ODLEXDatabase(const TalString& path);

  void init();
  void UnloadTables();
  void AcquireDatabaseInfo();
  // Refused for every storage: making a file of a sub-storage is not supported (code 81).
  void CreateStoragesFile(MSIE_Storages& storage, const TalString& path);
  static TalString ChangeFilePathToExt(const TalString& path, const TalString& extension);
  // Calls visit(table object, table name) for each table Search and SearchAndReplace cover.
  template <class Visit>
  void ForEachSearchedTable(Visit visit);

  // Whether a save would write anything: the file as last committed differs from the database
  // in memory, or a modified table object holds rows not yet written into it.
  bool HasUnsavedChanges();
  // Writes the values of `info` that differ from the cached record to the summary information
  // and the Property table.
  void WriteChangedInfo(const ODLEXDatabaseInfo& info);
  // Takes `database` out of the list by identity, even if its path changed while listed.
  static void RemoveFromDatabaseList(ODLEXDatabase* database);
  // Opens a new database on `path` as `how` says and lists it (AddDatabaseToList's opening).
  static ODLEXDatabase* OpenIntoList(const TalString& path, ODLEXOpenType& how);
  // The listed database whose `which` path names the same file as `path`, or null.
  static ODLEXDatabase* FindListed(const TalString& path,
                                   const TalString& (*which)(const ODLEXDatabase&));
  // The listed database opened from (GetFilePath) / working on (GetDatabasePath) the file
  // `path` names, or null.
  static ODLEXDatabase* FindByFilePath(const TalString& path);
  static ODLEXDatabase* FindByWorkingFile(const TalString& path);

  // The slot of table type `type` in tableObjects_: types count down from the no-table value.
  static constexpr std::size_t SlotOf(ODLEXTObject::typeID type) {
    return static_cast<std::size_t>(ODLEXTObject::eNoTable - type);
  }
  // The lower-layer table of `object` as its table class; null when it has none.
  template <class LowerTable>
  static LowerTable* LowerTableOf(ODLEXTObject& object) {
    return static_cast<LowerTable*>(object.GetLowerTable());
  }

  static constexpr RWClassID myAtom = ODLEXTObject::eDatabaseClass;

  // Class-wide state.
  static RWBTree databaseList;
  static RWFactory* factory;
  static unsigned initCalls;
  static TalString programDirectory;
  static TalString currentDirectory;
  static TalString schemaPath;
  // The message catalog loaded by SetResources; null when none is.
  static std::unique_ptr<odlex::database::MessageCatalog> messageCatalog;
  static bool changeLogging;
  static TalString orvaneCustomActionDLL;
  static TalString installerProgram;
  static std::unique_ptr<SingleProgress> singleProgress;
  static std::unique_ptr<DualProgress> dualProgress;
  static bool (*userPermits)();
  static bool (*copySingleFile)(const TalString& from, const TalString& to);
  static bool (*autoUpdatePackageCode)();
  static std::unique_ptr<ODLEXMergeErrors> merge_errors;
  static const odlex::FactoryRegistration factoryRegistration;

  bool compressed_ = false;
  bool readOnly_ = false;
  ODLEXDatabaseInfo info_;
  std::vector<std::unique_ptr<ODLEXTObject>> tableObjects_;
  std::unique_ptr<MSIStringChecker> stringChecker_;
  TalString filePath_;
  TalString sourceRoot_;
  // The working file's canonical path, the list's order.
  TalString canonicalPath_;
  // The working file is a copy that AddDatabaseToList made for an output-file open.
  bool ownsWorkingCopy_ = false;
  bool modified_ = false;
  bool exteriorModify_ = false;
  bool creatingTransform_ = false;
  TalString transformPath_;
  MSIDatabase database_;
  int mergeModuleState_ = 0;  // 0 not known yet, 1 merge module, 2 not
  TalString reserved_;
  struct GUIProperty {
    TalString key;
    TalString prompt;
    TalString title;
  };
  std::vector<GUIProperty> guiProperties_;
  void* storage_ = nullptr;
  TalError takenError_;  // the error GetTalError returned last
};
