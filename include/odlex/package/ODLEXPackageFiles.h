#pragma once
// The files a package installs: where each one goes, where its bytes are, and taking them out.
//
// Where a file goes (its target path): the long names of the Directory rows from the root down
// to the file's directory, then the file's long name, joined with '/'. The root row stands for
// the folder the files are extracted into; a row named "." adds nothing, except that
// ProgramFilesFolder is called "Program Files" (the layout msiextract makes, so that the two
// tools' results compare).
//
// Where its bytes are: the summary information's word count says whether the package's files are
// compressed (bit 2) and, when not, whether the source layout uses short names (bit 1); the File
// row's attributes Noncompressed (0x2000) and Compressed (0x4000) override that default for one
// file. A compressed file is the cabinet member named by its key, in the cabinet of the Media row
// whose LastSequence is the first at or above the file's Sequence: a stream of the package when
// the Cabinet column starts with '#', else a file beside the package. A merge module keeps all of
// its files in its MergeModule.CABinet stream. An uncompressed file lies beside the package at its
// source path: the source side of each DefaultDir below the root, then the file name.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "odlex/support/TalError.h"
#include "odlex/support/TalString.h"

enum class ODLEXFileSource {
  kEmbeddedCabinet,  // a cabinet stream inside the package
  kExternalCabinet,  // a cabinet file beside the package
  kUncompressed,     // a file beside the package, in the source layout
};

// One row of the File table with what the package's other tables say about it.
struct ODLEXPackageFile {
  TalString key;
  TalString component;
  TalString directory;
  TalString targetPath;  // relative, '/'-separated; empty when the directory cannot be resolved
  TalString sourcePath;  // relative, '/'-separated; for uncompressed files
  std::int64_t size = 0;
  TalString version;
  TalString language;
  int attributes = 0;
  int sequence = 0;
  ODLEXFileSource source = ODLEXFileSource::kEmbeddedCabinet;
  // The cabinet: the stream name (without '#') or the file name beside the package; empty for an
  // uncompressed file.
  TalString cabinet;
};

struct ODLEXExtractOptions {
  // Only these files (File keys); all when empty. An unknown key is a problem.
  std::vector<TalString> fileKeys;
  // Every file straight into the folder under its long name, without the directory tree.
  bool flat = false;
  // Also the Binary and Icon streams, into the folders "Binary" and "Icon".
  bool binary = false;
};

class ODLEXPackageFiles {
 public:
  // Opens `package` (an installation package or merge module) for reading and resolves its
  // files. Null with the error (installer result code and text) when the package cannot be read
  // or its File, Component, Directory or Media table is malformed.
  static std::unique_ptr<ODLEXPackageFiles> Open(const TalString& package, TalError& error);
  ~ODLEXPackageFiles();
  ODLEXPackageFiles(const ODLEXPackageFiles&) = delete;
  ODLEXPackageFiles& operator=(const ODLEXPackageFiles&) = delete;

  // The files in File table order (by key).
  const std::vector<ODLEXPackageFile>& GetFiles() const { return files_; }

  // Writes the files into `directory` (created when missing), each at its target path (or, flat,
  // its long name). Nothing is ever written outside `directory`: a file whose path would leave it
  // (a name that is "..", ".", empty, holds a separator or a control character, or is a device
  // name such as CON or LPT1) is not written, nor is one whose path is already taken (by an
  // earlier file of the package, compared without regard to case as Windows compares names, or
  // by anything already in `directory`), nor one whose bytes do not have the size of its File
  // row, nor one that goes through a symbolic link. Each such file adds one error to `problems`
  // and the others are still written. False when `problems` is not empty or a cabinet or the
  // folder cannot be read or written at all.
  bool Extract(const TalString& directory, const ODLEXExtractOptions& options,
               std::vector<TalError>& problems);

  // Lays out an administrative image in `directory` (created when missing): every file
  // uncompressed at its source path with long names (the source side of each DefaultDir below
  // the root, then the file's long name), and beside them a copy of the package, under its own
  // file name, whose summary word count is 4 (administrative image: bit 4 set; files uncompressed:
  // bit 2 clear; long names: bit 1 clear; bit 8, no elevation, kept from the package), whose
  // Media rows name no cabinet, whose File rows lose the Compressed attribute (0x4000), and
  // without the embedded cabinet streams. The installer installs from such an image as from one
  // it made itself. Files are written as Extract writes them (same checks, same problems); the
  // package copy is written only when every file was. False when `problems` grew.
  bool MakeAdministrativeImage(const TalString& directory, std::vector<TalError>& problems);

  struct State;

 private:
  explicit ODLEXPackageFiles(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
  std::vector<ODLEXPackageFile> files_;
};

// Changes to the files inside a package: made on the package's tables and streams in memory,
// written by Save. New and rewritten cabinets are MSZIP cabinets made in a scratch folder and
// copied into the package when it is saved; no cabinet is ever held in memory.
//
// A file's facts come from its new bytes: File.FileSize its size; for a Windows module with a
// version resource, Version its fixed file version and Language the languages of its
// translation table (null when it has none), and no MsiFileHash row; for any other file,
// Version and Language null and an MsiFileHash row with the MD5 hash of its bytes (the table
// made when the package has none).
class ODLEXPackageFileEditor {
 public:
  // Opens `package` for editing; Save writes the result to `output`, or over the package when
  // `output` is empty (in both cases a new file beside it, renamed into place, so that the
  // package is untouched until the save succeeds). Null with the error when it cannot be read
  // or its File, Component, Directory or Media table is malformed.
  static std::unique_ptr<ODLEXPackageFileEditor> Open(const TalString& package,
                                                      const TalString& output, TalError& error);
  ~ODLEXPackageFileEditor();
  ODLEXPackageFileEditor(const ODLEXPackageFileEditor&) = delete;
  ODLEXPackageFileEditor& operator=(const ODLEXPackageFileEditor&) = delete;

  // The files as they are now (after the changes made so far), in File key order.
  const std::vector<ODLEXPackageFile>& GetFiles() const;

  // Puts the bytes of the host file `newFile` in place of the file `fileKey`: the embedded
  // cabinet that holds it is rewritten with the new member in the old one's place and every
  // other member as it was; the package's other cabinets are copied as they are. The File row
  // and MsiFileHash row then describe the new bytes (see above). Only files in embedded
  // cabinets are replaced: a file in a cabinet beside the package, or lying uncompressed
  // beside it, is refused (its bytes are not the package's to rewrite: replace the file on
  // disk, or compress the package first). Errors, nothing changed: 87 an unknown key; 2 the
  // cabinet stream or its member is missing, or `newFile` cannot be read; 1627 the file is not
  // in an embedded cabinet, the cabinet is damaged or cannot be written, or `newFile` is larger
  // than a cabinet holds.
  bool ReplaceFile(const TalString& fileKey, const TalString& newFile, TalError& error);

  // Adds the host files `files` to the component `component`, in the component's folder: one
  // File row each, keyed by an identifier made from the file's name (letters, digits, '_' and
  // '.'; "_2", "_3", ... appended when the key is taken), named "SHORT|long" with a short name
  // made as Windows makes them (free among the names of the folder's files) or by its name
  // alone when that is a valid short name, with the sequence numbers after the package's last,
  // and the attributes of a file in a cabinet (Compressed when the package's files are not
  // compressed by default). Their bytes go, in that order, into a new embedded cabinet
  // ("added<N>.cab") on a new disk: a Media row with the next DiskId and the last of the new
  // sequence numbers. `keys` receives the new keys in the order of `files`. Errors, nothing
  // changed: 87 no such component, two files with one name (compared without regard to case),
  // a name Windows does not accept for a file (one holding \ / ? | > < : * " or a control
  // character), no files, or a merge module (whose files are all in its MergeModule.CABinet
  // stream); 2 a file cannot be read; 1627 a file is too large for a cabinet, the sequence numbers
  // run out (past 32767), or the cabinet cannot be written.
  bool AddFiles(const TalString& component, const std::vector<TalString>& files,
                std::vector<TalString>& keys, TalError& error);

  // Makes the package hold all of its files in one embedded MSZIP cabinet, wherever their bytes
  // are now (lying uncompressed beside it, as in an administrative image, in cabinets beside
  // it, or in embedded cabinets): the files go into the new cabinet ("files1.cab") in sequence
  // order and are numbered 1, 2, ... in that order; their File rows lose the Compressed and
  // Noncompressed attributes; the Media table keeps one row (DiskId 1, the last sequence number,
  // the new cabinet); the old embedded cabinets are removed; and the summary's word count says
  // "compressed" (2, with the no-elevation bit 8 kept). Every file is read as Extract reads it
  // (sizes checked against the File table, paths beside the package never leaving its folder).
  // Errors, nothing changed: the first problem reading a file (as Extract reports it); 87 the
  // package has no files or is a merge module; 1627 the cabinet cannot be written.
  bool Compress(TalError& error);

  // Saves the package (see Open). False with the error (installer result code) when it cannot be
  // written; the package and any existing output are then untouched.
  bool Save(TalError& error);

  struct State;

 private:
  explicit ODLEXPackageFileEditor(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};
