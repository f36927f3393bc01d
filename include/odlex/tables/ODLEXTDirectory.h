#pragma once
// The Directory table object: the tree of source and target folders. Folders are added by
// path (the lower layer makes the chain of rows a path needs), and read back as long or short,
// source or target paths.

#include <vector>

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTDirectory : public ODLEXTRowTable<ODLEXTDirectory, ODLEXTObject::eDirectory> {
 public:
  // Hands the Property table to the lower layer, so that a path may start with a property
  // whose value is a folder path; done once after construction and after each Unload.
  void init();
  void Unload() override;
  // The temp entries, filled with every row of the table (GetDirectoriesDeep).
  RWBTree& GetEntries() override;

  // The row `key`; code 18 when there is none.
  MSIEDirectory& GetDirectoryWithID(const TalString& key);
  // Always true; `code` is left as it is.
  bool IsValid(const MSIEDirectory& row, unsigned int& code);

  // The folder of the target path `target` (and of `source` in the source image, when it is
  // not empty), made as the lower layer makes folders (MSITDirectory::Add); the temp entries
  // hold the leaf row, or nothing when the path was refused. The Property table is marked
  // modified when the leaf's key is not the text of `target`.
  void Add(const TalString& target, const TalString& source);
  void Add(const TalString& path) { Add(path, TalString()); }
  // Rows added by their key and DefaultDir, as in the other tables.
  using ODLEXTRowTable::Add;
  // Reports whether `values` has other source or target paths than `target`: true, with the
  // table marked modified and the temp entries emptied; false with `target` in the temp
  // entries. Nothing is copied: paths are edited by Add and SetShortPath.
  bool Change(MSIEDirectory& target, const MSIEDirectory& values);

  // The paths as shown to a user ("[ProgramFilesFolder]Vendor\App\"), long or short names.
  TalString GetLongSource(const MSIEDirectory& row);
  TalString GetLongTarget(const MSIEDirectory& row);
  TalString GetShortSource(const MSIEDirectory& row);
  TalString GetShortTarget(const MSIEDirectory& row);
  // The long source path with properties expanded, "[SourceDir]" replaced by the database's
  // source path, doubled backslashes made single (a UNC path keeps its two leading ones) and
  // the last separator and what follows it cut off.
  TalString GetLongSourceNoProperty(const MSIEDirectory& row);
  // The "[Property]" a path starts with: the text up to the first ']' when that is neither the
  // first nor the last character; the whole path when ']' is its last character; else empty.
  static TalString GetPropertyFromPath(const TalString& path);
  // TalCollectableStrings of the folder properties the directories' paths start with (target
  // or source paths), and with `forTarget` the installer's predefined folder properties. The
  // strings are new: the caller destroys them (clearAndDestroy).
  RWBTree GetDirectoryProperties(bool forTarget);

  // The key of the row whose long target path is `path` (folder names compared without
  // case, a missing final separator added); empty when no row has it.
  TalString GetDefaultDirectoryID(const TalString& path) const;
  // Inserts into `out` every row of the table: the rows below each root, then any row that no
  // walk from a root reaches (a broken parent chain), so that nothing is hidden; returns `out`.
  RWBTree& GetDirectoriesDeep(RWBTree& out);
  // Inserts `top` and every row below it into `out`; returns `out`.
  RWBTree& GetDirectoriesDeep(const MSIEDirectory& top, RWBTree& out);
  // Gives `row` short target names from `shortPath` ("[Property]SHORT\NAMES\", the property
  // and a final separator optional): the last name to `row` and, with `withParents`, each name
  // before it to the next folder up (folders whose target name is "." are passed over). Names
  // that are not valid 8.3 names, and names beyond the path's folders, change nothing.
  void SetShortPath(MSIEDirectory& row, const TalString& shortPath, const bool& withParents);

  // Merging a merge module copies its Directory rows into this package. Two rows conflict
  // when the merged package would hold one folder in two ways:
  //   - by key: the module has a row with the key of a live row here, with another DefaultDir
  //     or another parent (exact comparison). The merge keeps one row, so the other
  //     database's files would land elsewhere. Rows named after a folder property that the
  //     installer sets itself (TARGETDIR, ProgramFilesFolder, ... the predefined folder
  //     properties) never conflict by key: their DefaultDir is not where they install.
  //   - by path: the module has a row with another key whose long target path equals that of
  //     a live row here (ignoring case, as the file system does) while their short target
  //     paths differ (ignoring case): the folder would get two 8.3 names.
  // Paths are read as GetLongTarget and GetShortTarget give them, each in its own database.
  //
  // Appends each conflicting pair to `packageKeys` (the key here) and `moduleKeys` (the
  // module's key), one entry each, in the order of the module's rows and, for one module row,
  // of this table's rows; returns whether there was any.
  bool CheckForConflictingPaths(ODLEXDatabase& module, std::vector<TalString>& packageKeys,
                                std::vector<TalString>& moduleKeys);
  // The conflicts as text: `message` once per pair, with "{DIR}" and "{DEFAULT}" replaced by
  // the key and DefaultDir of the row here and "{MOD_DIR}" and "{MOD_DEFAULT}" by those of the
  // module's row (every occurrence), the lines joined by "\n"; empty when there is none.
  TalString CheckDirectoryPaths(ODLEXDatabase& module, const TalString& message);

 private:
  // Whether `key` names a folder property the installer sets itself ("ProgramFilesFolder").
  static bool isPredefinedFolder(const TalString& key);

  bool needsInit_ = true;
};
