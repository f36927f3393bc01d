#pragma once
// Table objects of the tables that describe files and their media: File, Icon, Media and
// BindImage;
// Font and SelfReg (files registered as fonts or self-registering modules); the file
// operations of components (MoveFile, DuplicateFile, RemoveFile); IsolatedComponent; Binary.

#include "odlex/tables/ODLEXTRowTable.h"

class MSIEFile;

// A File row names its file "short|long" (or by one name used as both), belongs to one
// component and so lies in that component's folder; its Version column holds either a version
// ("1.2.3.4") or, for a companion file, the key of the File row whose version it shares.
class ODLEXTFile : public ODLEXTRowTable<ODLEXTFile, ODLEXTObject::eFile> {
 public:
  // Adds the file `row` as every table adds a row (ODLEXTRowTable.h): afterwards the temp
  // entries hold exactly the new row. Unlike most tables, a file that is not added is an error,
  // since a component's key path or a media layout may be built on it next: code 9, with the
  // table unchanged and the temp entries empty, when the key is empty or a live row already has
  // it. A deleted row with the key is replaced.
  void Add(const MSIEFile& row);
  // The row `id`; code 20 when there is none.
  MSIEFile& GetFileWithID(const TalString& id);
  // Inserts the live files of `component` into `out`; returns `out`.
  RWBTree& GetFiles(RWBTree& out, const MSIEComponent& component);
  // Whether a live File row belongs to `component`.
  bool DoesComponentHaveFiles(const MSIEComponent& component);
  // Whether the table has no live row.
  bool IsEmpty();
  // The highest Sequence of the live files, 0 when there is none: a new file placed after it
  // goes last on the media.
  short GetLastSequence();
  // The Sequence of `file`: its place on the media.
  short GetSequence(const MSIEFile& file) { return file.GetSequence(); }
  // Starts `row` (a new row, not yet added) as a file of `component`: the component, the
  // Sequence after the last one, attributes null; the key, name, size and version stay as they
  // are.
  void init(MSIEFile& row, const MSIEComponent& component);

  // The component of `file`; ODLEXDatabaseErrorWithEntry (File, `file`, 21) when it is missing.
  MSIEComponent& GetComponent(const MSIEFile& file);
  // The folder of `file`, its component's Directory row; ODLEXDatabaseErrorWithEntry (File,
  // `file`, 21) when the component is missing, (Component, the component, 18) when its
  // folder is.
  MSIEDirectory& GetDirectory(const MSIEFile& file);
  // The BindImage row of `file`; ODLEXDatabaseErrorWithEntry (File, `file`, 33) when it has
  // none.
  MSIEBindImage& GetBindImage(const MSIEFile& file);

  // The long and the short name of a FileName value "short|long"; a value without '|' is both.
  static TalString GetLongFileName(const TalString& fileName);
  static TalString GetShortFileName(const TalString& fileName);
  TalString GetLongFileName(const MSIEFile& file) { return GetLongFileName(file.GetFileName()); }
  TalString GetShortFileName(const MSIEFile& file) { return GetShortFileName(file.GetFileName()); }
  // The FileName value of a short and a long name: "short|long", or the one name when the long
  // name is empty or equal (exactly) to the short one.
  static TalString GetCombinedFile(const TalString& shortName, const TalString& longName);
  // The last part of a path (after its last '\' or '/'), all of it when it has none.
  static TalString GetFilenameFromPath(const TalString& path);
  // The text naming the file `id` as a component's key path: its long name; code 20 when there
  // is no such file.
  TalString GetKeyPath(const TalString& id);

  // Where the file is found in the source image: its component's folder as a source path
  // (MSIEDirectory::GetSourcePath, "[SourceDir]Vendor\bin\") followed by the file's long name,
  // for example "[SourceDir]Vendor\bin\Read Me.txt". ODLEXDatabaseErrorWithEntry (the File
  // table, `file`, code 21) when the component does not exist; (the Component table, the
  // component, code 18) when its folder does not; an empty text when the folder's chain is
  // broken.
  TalString GetLongFilePathSource(const MSIEFile& file);
  // The same path with the folders' and the file's short names, as an uncompressed source
  // image made with short names lays the file out ("[SourceDir]VENDOR\BIN\READ~1.TXT").
  TalString GetSourcePath(const MSIEFile& file);
  // Where the file is installed: its folder's long target path followed by its long name
  // ("[ProgramFilesFolder]Vendor\bin\Read Me.txt"); errors as GetLongFilePathSource.
  TalString GetTargetPath(const MSIEFile& file);

  // The version shown for `file`: empty when its Version is; for a companion file (a Version
  // that is the key of a live File row) the version of the file it names, followed through
  // companions of companions; otherwise the Version itself when it is a version (digits and
  // dots). ODLEXDatabaseErrorWithEntry (File, `file`, 39) when a Version on the way is neither
  // a file's key nor a version, or the companions lead round in a circle.
  TalString GetVersionToDisplay(const MSIEFile& file);
  // Makes `file` a companion of `companion`: its Version becomes companion's key, and the row
  // and table are marked modified. Refused (false, nothing changed) when `companion` is `file`
  // itself or is not a live row of this table.
  bool SetCompanionFile(MSIEFile& file, const MSIEFile& companion);
  // Makes `file`'s Version and Language those of the version resource of the Windows module at
  // the host path `path` (its fixed file version; the languages of its translation table,
  // ','-separated, or null when it has none) and marks the row modified. False, nothing
  // changed, when `path` is no module with a version resource (a file the installer compares by
  // its hash instead).
  bool SetToFileVersion(MSIEFile& file, const TalString& path);

  // Whether a live Font row names `file` (it is installed as a font).
  bool IsFileAFont(const MSIEFile& file);
  // The name a font installer registers for the TrueType or OpenType font at the host path
  // `path` (the first font of a collection): its full font name, the US English Windows record
  // first, else another Windows one, else a Macintosh Roman one. This is the title a Font row
  // with a null FontTitle stands for. An empty text, and no error, when the file cannot be read,
  // is no font, or has no full-name record: such a file is simply not registered under a name
  // of its own, and no error code names this case.
  static TalString GetTTFontName(const TalString& path);
  // Whether a live SelfReg row names `file` (the installer registers it as a COM server).
  bool IsFileAutoRegister(const MSIEFile& file);
  // Makes `file` self-registering (a SelfReg row with a null cost) or not (its SelfReg row
  // deleted); nothing when it already is as asked.
  void SetFileAutoRegister(const MSIEFile& file, bool on);
  // Whether `file` is the key path of its component (which then has no registry key path).
  bool IsFileInComponentKeyPath(const MSIEFile& file);

  // The LockPermissions rows that secure `file` (Table "File", LockObject the file's key).
  RWBTree& GetPermissions(RWBTree& out, const MSIEFile& file);
  // Makes the file's permissions those of `permissions`, as
  // ODLEXTLockPermissions::SetLockPermissions does.
  void SetPermissions(const MSIEFile& file, const RWBTree& permissions);
};

class ODLEXTIcon : public ODLEXTRowTable<ODLEXTIcon, ODLEXTObject::eIcon> {
 public:
  using ODLEXTRowTable::Add;
  // Adds the icon `name` holding the contents of the file `sourceFile`, as Add does a row
  // (refused, the temp entries empty, when a live row has the name); refused too when the file
  // cannot be read or is empty, since an empty cell is a null cell.
  void Add(const TalString& name, const TalString& sourceFile);
  // The row named `iconID`; code 14 when there is none.
  MSIEIcon& GetIconWithIconID(const TalString& iconID);
  // The row whose data was read from the file `sourceFile` (as the path was given when the data
  // was set; rows read from a package have no file, and their streams are not read to find
  // out); code 14 when there is none, and for an empty path.
  MSIEIcon& GetIconWithSourceFile(const TalString& sourceFile);
};

class ODLEXTMedia : public ODLEXTRowTable<ODLEXTMedia, ODLEXTObject::eMedia> {
 public:
  // The disk `diskID`; code 27 when there is none.
  MSIEMedia& GetMediaWithDiskID(short diskID);
};

class ODLEXTBindImage : public ODLEXTRowTable<ODLEXTBindImage, ODLEXTObject::eBindImage> {
 public:
  // The row of the file `fileID`; code 33 when there is none.
  MSIEBindImage& GetBindImageWithFileID(const TalString& fileID);
  // The File row the row binds; ODLEXDatabaseErrorWithEntry (this table, `row`, code 20) when
  // the file does not exist.
  MSIEFile& GetFile(const MSIEBindImage& row);
};

class ODLEXTFont : public ODLEXTRowTable<ODLEXTFont, ODLEXTObject::eFont> {
 public:
  // The row of the font file `fileID`; code 16 when there is none.
  MSIEFont& GetFontWithFileID(const TalString& fileID);
  // Whether `file` is registered as a font: a live Font row names it.
  bool IsFileAFont(const MSIEFile& file);
};

class ODLEXTSelfReg : public ODLEXTRowTable<ODLEXTSelfReg, ODLEXTObject::eSelfReg> {
 public:
  // The row of the self-registering file `fileID`; code 17 when there is none.
  MSIESelfReg& GetSelfRegWithFileID(const TalString& fileID);
};

class ODLEXTMoveFile : public ODLEXTRowTable<ODLEXTMoveFile, ODLEXTObject::eMoveFile> {
 public:
  // The row with the key `fileKey`; code 35 when there is none.
  MSIEMoveFile& GetMoveFileWithID(const TalString& fileKey);
  // Inserts the live MoveFile rows of `component` into `out`; returns `out`.
  RWBTree& GetMoveFiles(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTDuplicateFile
    : public ODLEXTRowTable<ODLEXTDuplicateFile, ODLEXTObject::eDuplicateFile> {
 public:
  // The first live row (in key order) that duplicates `file`; ODLEXDatabaseErrorWithEntry (the
  // File table, `file`, code 34) when the file has no duplicate.
  MSIEDuplicateFile& GetDuplicateFile(const MSIEFile& file);
  // Insert into `out` the live rows that duplicate `file`, or that `component` installs;
  // return `out`.
  RWBTree& GetDuplicateFiles(RWBTree& out, const MSIEFile& file);
  RWBTree& GetDuplicateFiles(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTRemoveFile : public ODLEXTRowTable<ODLEXTRemoveFile, ODLEXTObject::eRemoveFile> {
 public:
  // How a row's InstallMode says when its files are removed.
  enum eInstallMode : short {
    eRemoveOnInstall = 1,
    eRemoveOnUninstall = 2,
    eRemoveOnBoth = 3,
  };

  // Inserts the live RemoveFile rows of `component` into `out`; returns `out`.
  RWBTree& GetRemoveFiles(RWBTree& out, const MSIEComponent& component);
  // Starts `row` (a new row, not yet added) as authoring tools start one for `component`: the
  // component, its folder as the folder to clean (DirProperty takes the component's Directory_
  // key, which the installer resolves like a property), and removal when the component is
  // uninstalled, the commonest use of the table. The key and the file name are left as they
  // are (a null file name removes the folder itself, once empty).
  void init(MSIERemoveFile& row, const MSIEComponent& component);
};

// A row installs the shared component (Component_Shared) privately into the folder of the
// application component (Component_Application).
class ODLEXTIsolatedComponent
    : public ODLEXTRowTable<ODLEXTIsolatedComponent, ODLEXTObject::eIsolatedComponent> {
 public:
  using ODLEXTObject::GetEntries;
  // Inserts into `out` the live rows in which `component` takes part, as the shared or as the
  // application component; returns `out`.
  RWBTree& GetEntries(RWBTree& out, const MSIEComponent& component);
  // Inserts into `out` the live rows of the application component `application` (the shared
  // components isolated into its folder); returns `out`.
  RWBTree& GetEntriesForApplicationComponent(RWBTree& out, const MSIEComponent& application);
  // Inserts into `out` the live rows of the shared component `shared` (the applications it is
  // isolated for); returns `out`.
  RWBTree& GetEntriesForSharedComponent(RWBTree& out, const MSIEComponent& shared);
  // The row isolating the component `shared` for the component `application`. The table has no
  // not-found code of its own: a missing pairing throws code 21, that of a missing component.
  MSIEIsolatedComponent& GetEntry(const TalString& shared, const TalString& application);
};

class ODLEXTBinary : public ODLEXTRowTable<ODLEXTBinary, ODLEXTObject::eBinary> {
 public:
  // The row named `name`; code 29 when there is none.
  MSIEBinary& GetBinaryWithID(const TalString& name);
  // The row carrying the product's custom-action DLL (ODLEXDatabase::GetOrvaneCustomActionDLL),
  // named by the path's file name: the row held under that name, else one made from the file's
  // bytes (a new row, the temp entry). A row once held is never read from the file again.
  // Code 29 when no path is set, the path has no separator, or the file cannot be read.
  MSIEBinary& GetOrvaneCustomAction();
};
