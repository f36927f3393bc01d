#pragma once
// Transforms in the installer's own format: a compound file (class id 000C1082-...) holding
//   - its own string pool (_StringPool, _StringData) with the code page of the target;
//   - one table stream per changed table, row by row (not column by column as in a package):
//     each record is a 16-bit mask followed by the cells it carries, in column order, with the
//     widths of a package's table streams and the transform's string references:
//       mask 0                       delete the row; the key cells follow;
//       mask bit 0 set               insert the row; bits 8-15 give how many leading columns
//                                    follow (the rest are null);
//       any other mask               update: the key cells and every column whose bit (1 << c)
//                                    is set follow;
//   - _Tables records (one text cell: insert adds the table, delete drops it) and _Columns
//     records (table, number, name, type) for added tables and columns; only non-key columns
//     can be added to an existing table, at its end;
//   - the data of every binary cell it sets, in a stream named like the package's own
//     ("Binary.Icon": the table and the key values joined by '.'), and a _Streams table for
//     streams outside the tables (cabinets), whose data is in a stream of the row's name;
//   - summary information: the revision number holds "{base product code}base version;
//     {target product code}target version;{upgrade code}", the template the base's template,
//     the last author the target's, and the character count the validation flags (high 16 bits)
//     and the error conditions to suppress when the transform is applied (low 16 bits).
//
// Updates of a table with more than 16 columns that change a column past the sixteenth, which a
// 16-bit mask cannot name, are written as a delete followed by an insert of the whole row.
//
// Where Wine's installer engine (8.0), which the tests apply our transforms with, behaves
// otherwise, and why we keep our behaviour:
//   - it ignores the error conditions passed to it: a transform that adds an existing row or
//     table, deletes a missing row or table, updates a missing row or has another code page
//     applies without an error; we fail on each condition that is not suppressed, which is what
//     the conditions are for;
//   - it inserts a missing row that is updated; suppressed, we skip the update: it carries only
//     the key and the cells it changes, not a whole row;
//   - a missing table that is dropped exists afterwards; suppressed, we skip the drop;
//   - streams outside the tables (a _Streams table stream) make it crash: the installer's
//     transforms do not change streams outside the tables (embedded cabinets), so a transform of
//     ours carrying one is only for odlex; the difference of two packages whose streams outside
//     the tables are the same has none;
//   - it keeps the old data of a binary cell that an update changes (the data of an inserted
//     row's binary cell it does take); we store both under the same name, the cell's stream name,
//     and apply both.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "msi/engine/Result.h"
#include "msi/transform/Difference.h"
#include "storage/CompoundFile.h"
#include "storage/FileSystem.h"

namespace odlex::transform {

// Conditions that applying a transform reports unless told to suppress them.
enum ErrorCondition : std::uint32_t {
  kAddExistingRow = 0x0001,
  kDeleteMissingRow = 0x0002,
  kAddExistingTable = 0x0004,
  kDeleteMissingTable = 0x0008,
  kUpdateMissingRow = 0x0010,
  kChangeCodePage = 0x0020,
  kViewTransform = 0x0100,  // show the changes in _TransformView instead of applying them
};

// What an installer checks before it applies the transform during an installation.
enum ValidationFlag : std::uint32_t {
  kValidateLanguage = 0x0001,
  kValidateProduct = 0x0002,
  kValidatePlatform = 0x0004,
  kValidateMajorVersion = 0x0008,
  kValidateMinorVersion = 0x0010,
  kValidateUpdateVersion = 0x0020,
  kValidateNewLessBaseVersion = 0x0040,
  kValidateNewLessEqualBaseVersion = 0x0080,
  kValidateNewEqualBaseVersion = 0x0100,
  kValidateNewGreaterEqualBaseVersion = 0x0200,
  kValidateNewGreaterBaseVersion = 0x0400,
  kValidateUpgradeCode = 0x0800,
};

// Flag names as the tool spells them ("add-existing-row", "product", ...), in bit order.
struct FlagName {
  const char* name;
  std::uint32_t bit;
};
const std::vector<FlagName>& errorConditionNames();
const std::vector<FlagName>& validationNames();
// "a,b,c" or a number (decimal or 0x hex) to flags; false with the unknown word in `error`.
bool parseFlags(const std::string& text, const std::vector<FlagName>& names, std::uint32_t& flags,
                std::string& error);

struct TransformOptions {
  std::uint32_t errorConditions = 0;  // stored for the installer to suppress
  std::uint32_t validation = 0;
};

// The transform that turns `base` into `target`. `differs` is false (and `out` empty) when the
// two have the same tables and streams. kFunctionFailed when a table's columns changed in a way
// a transform cannot carry, or a name is too long to store.
bool generateTransform(const engine::Database& base, const engine::Database& target,
                       const TransformOptions& options, storage::CompoundNode& out, bool& differs,
                       engine::Error& error);

// Writes a transform (or any compound tree) to `path` atomically, streams copied in pieces.
bool writeTransformFile(storage::FileSystem& fs, const std::filesystem::path& path,
                        const storage::CompoundNode& transform, engine::Error& error);
// Reads the container of a transform file; its streams are read from the file when used, and
// the file stays open as long as any of them is referred to.
bool readTransformFile(storage::FileSystem& fs, const std::filesystem::path& path,
                       storage::CompoundNode& transform, engine::Error& error);

// A transform decoded against the database it is to be applied to (which gives the columns of
// the tables it changes).
struct DecodedTransform {
  std::uint32_t codePage = 0;         // of its string pool
  std::uint32_t errorConditions = 0;  // from its summary information
  std::uint32_t validation = 0;
  Difference changes;  // dropped tables first, then added tables, then the rest
};

// kTransformFailure with the reason when the transform is damaged, or changes a table that
// `base` does not have and it does not add.
bool decodeTransform(const storage::CompoundNode& transform, const engine::Database& base,
                     DecodedTransform& out, engine::Error& error);

// One change that could not be applied as written.
struct Conflict {
  std::uint32_t condition = 0;  // an ErrorCondition; 0 for a change no flag suppresses
  std::string text;             // which table and row
  bool suppressed = false;
};

// Applies `transform` to `db`, the conditions in `suppress` (and those the transform's summary
// names) being ignored: an existing row that is added takes the transform's values; an update or
// delete of a missing row, the delete of a missing table and a code-page mismatch are skipped;
// an existing table that is added is kept and gets the columns it lacks. Every conflict is
// listed in `conflicts`. When one is not suppressed, the result is kTransformFailure and `db` is
// left unchanged. The validation flags are not checked: they concern the installed product the
// installer applies the transform to, not a database.
std::uint32_t applyTransform(engine::Database& db, const DecodedTransform& transform,
                             std::uint32_t suppress, std::vector<Conflict>& conflicts,
                             engine::Error& error);

// The changes as the installer's _TransformView table shows them: per changed table, rows with
// Column "CREATE" / "DROP" (no Row), "INSERT" / "DELETE" (Row = the key values joined by tabs),
// or a column name with Data the new value and Current the value in `base`; an added column
// shows its type in Data and its number in Current.
struct ViewRow {
  std::u16string table, column, row, data, current;
};
std::vector<ViewRow> transformViewRows(const DecodedTransform& transform,
                                       const engine::Database& base);

}  // namespace odlex::transform
