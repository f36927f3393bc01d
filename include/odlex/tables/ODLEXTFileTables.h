#pragma once
// Table objects of the tables that describe files and their media: File, Icon, Media and
// BindImage;
// Font and SelfReg (files registered as fonts or self-registering modules); the file
// operations of components (MoveFile, DuplicateFile, RemoveFile); IsolatedComponent; Binary.

#include "odlex/tables/ODLEXTRowTable.h"

class MSIEFile;

class ODLEXTFile : public ODLEXTRowTable<ODLEXTFile, ODLEXTObject::eFile> {
 public:
  // Where the file is found in the source image: its component's folder as a source path
  // (MSIEDirectory::GetSourcePath, "[SourceDir]Vendor\bin\") followed by the file's long name
  // (the part after '|' of FileName "short|long", or the only name), for example
  // "[SourceDir]Vendor\bin\Read Me.txt". ODLEXDatabaseErrorWithEntry (the File table, `file`,
  // code 21) when the component does not exist; (the Component table, the component, code 18)
  // when its folder does not; an empty text when the folder's chain is broken.
  TalString GetLongFilePathSource(const MSIEFile& file);
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
