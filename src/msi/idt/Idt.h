#pragma once
// Table text files (".idt"): one table of an installer database as tab-separated text, the
// archive format the installer's own database tool reads and writes.
//
// File layout (text in the database's code page, every line ending CR LF):
//   line 1   column names
//   line 2   column type words: s<n>/S<n> text, l<n>/L<n> localizable text (n = length limit,
//            0 = unlimited), i2/I2 and i4/I4 integers, v0/V0 binary; upper case = nullable
//   line 3   table name, then the key column names; when a row holds a non-ASCII character the
//            line starts with the code page the file is written in ("932\tTable\tKey")
//   rest     one row per line, fields in column order; an empty field is null
// Fields are separated by tabs. Control characters inside a value are translated so they
// cannot clash with the separators: NUL->0x15, BS->0x1B, TAB->0x10, LF->0x19, FF->0x18,
// CR->0x11; reading translates them back.
//
// Binary cells: the field holds a file name (the row's key values joined with '.', plus
// ".ibd"); the data lives in that file inside a folder named after the table, beside the .idt
// file. Names taken from package data are made safe before anything is written (see
// SafeFileName.h); names read from a file must already be plain file names.
//
// Two pseudo-tables have fixed layouts:
//   _ForceCodepage       two empty lines, then "<code page>\t_ForceCodepage"; importing it sets
//                        the database's code page.
//   _SummaryInformation  columns PropertyId (i2) and Value (l255), key PropertyId; one row per
//                        summary property, times as "YYYY/MM/DD hh:mm:ss" (UTC); importing it
//                        replaces the whole summary information.
//
// Import replaces the table, as the installer's tool does: rows and streams of an existing
// table of that name are discarded and the table is re-created from the file's header.
// ImportMode::kMergeRows instead keeps the table, requires identical columns, and replaces
// rows whose key matches. The file is checked completely before the database is touched:
// field counts, integers against their size (the smallest value of each size is the null
// marker and is refused), nulls in non-nullable columns, duplicate keys within the file, and
// every binary data file. Empty lines among the rows are skipped. A file whose line 3 names a
// code page imports only into a database of that code page or a neutral one (code page 0),
// which then takes it. The catalog tables (_Tables, _Columns, _Streams, _Storages) export but
// do not import.
//
// Result codes: kSuccess; kInvalidTable (no such table to export); kFileNotFound (idt or binary
// file missing); kBadPathname (unsafe binary file name or table folder); kDatatypeMismatch
// (merge into a table with other columns); kWriteFault (a file could not be written);
// kFunctionFailed for everything wrong in a file's content, with "file:line: field N (Column):
// reason" in the error text.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/engine/Result.h"
#include "storage/FileSystem.h"

namespace odlex::idt {

inline constexpr std::u16string_view kForceCodepageTable = u"_ForceCodepage";
inline constexpr std::u16string_view kSummaryInformationTable = u"_SummaryInformation";

// Largest .idt or binary data file read.
inline constexpr std::uint64_t kMaxInputFileSize = std::uint64_t{1} << 30;

// The data of one binary cell: the file name written in the field, and where its bytes are
// (still in the database until they are written).
struct BinaryFile {
  std::string fileName;
  std::shared_ptr<const storage::StreamSource> data;
};

// A table exported in memory: the .idt text and the data files of its binary cells.
struct ExportedTable {
  std::string text;
  // The folder name for the data files (the table name, made safe).
  std::string folderName;
  std::vector<BinaryFile> binaries;
};

// Exports `table` (a table of the database, a catalog table, or one of the pseudo-tables) to
// memory. Rows are sorted by primary key: text by character code, integers by value, null first.
std::uint32_t exportTableText(engine::Database& db, std::u16string_view table, ExportedTable& out,
                              engine::Error& error);

// Writes the data files of `exported` into `folder` (created when missing), each copied in
// pieces. File names that are not plain names (see SafeFileName.h) are refused with
// kBadPathname.
std::uint32_t writeBinaryFiles(storage::FileSystem& fs, const ExportedTable& exported,
                               const std::filesystem::path& folder, engine::Error& error);

// Exports `table` to `idtFile`, its data files into the folder named after the table beside it.
std::uint32_t exportTable(engine::Database& db, std::u16string_view table, storage::FileSystem& fs,
                          const std::filesystem::path& idtFile, engine::Error& error);

// Exports every table in _Tables order into `folder` as "<Table>.idt", then
// _SummaryInformation.idt (when the database has summary information) and _ForceCodepage.idt
// (when the code page is not 0).
std::uint32_t exportAll(engine::Database& db, storage::FileSystem& fs,
                        const std::filesystem::path& folder, engine::Error& error);

enum class ImportMode { kReplaceTable, kMergeRows };

struct ImportOptions {
  ImportMode mode = ImportMode::kReplaceTable;
  // When set, receives one line per text value longer than its column's declared length.
  // Such values are imported anyway: the installer does not enforce the lengths either.
  std::vector<std::string>* warnings = nullptr;
};

// Imports `idtFile` (a table or one of the pseudo-tables) into the database.
std::uint32_t importTable(engine::Database& db, storage::FileSystem& fs,
                          const std::filesystem::path& idtFile, engine::Error& error,
                          const ImportOptions& options = {});

}  // namespace odlex::idt
