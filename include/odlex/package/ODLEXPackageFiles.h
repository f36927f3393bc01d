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

namespace odlex::package {
class ExtractRoot;
}

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
  // Writes each file at its relative path (an empty path: its directory did not resolve).
  void writeFiles(odlex::package::ExtractRoot& root,
                  const std::vector<std::pair<const ODLEXPackageFile*, std::u16string>>& chosen,
                  std::vector<TalError>& problems);
  void writeBinaryStreams(odlex::package::ExtractRoot& root, std::vector<TalError>& problems);

  std::unique_ptr<State> state_;
  std::vector<ODLEXPackageFile> files_;
};
