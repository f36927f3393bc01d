#pragma once
// The installer database engine: a whole database held in memory. Opening reads the
// container directory, the string pool and every table; stream contents (binary cells,
// cabinets, signatures) stay in the file and are read on demand. Commit writes a complete
// new file beside the target and renames it into place.

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Result.h"
#include "msi/engine/StringPool.h"
#include "msi/engine/Table.h"
#include "storage/CompoundFile.h"
#include "storage/FileSystem.h"
#include "storage/SummaryInformation.h"

namespace odlex::engine {

class Database {
 public:
  enum class OpenMode { kReadOnly, kUpdate, kCreate };

  // Opens `path`. kCreate makes a new empty database (the file is written on commit).
  // A damaged or foreign file gives kInstallPackageInvalid with the reason in `error`.
  static std::unique_ptr<Database> open(storage::FileSystem& fs, const std::filesystem::path& path,
                                        OpenMode mode, Error& error);
  // Opens `source` for reading; commit writes to `output`, never to `source`.
  static std::unique_ptr<Database> openInto(storage::FileSystem& fs,
                                            const std::filesystem::path& source,
                                            const std::filesystem::path& output, Error& error);
  ~Database();

  const std::filesystem::path& path() const { return outputPath_; }
  const std::filesystem::path& sourcePath() const { return sourcePath_; }
  bool readOnly() const { return mode_ == OpenMode::kReadOnly; }

  std::uint32_t codePage() const { return codePage_; }
  void setCodePage(std::uint32_t codePage) {
    codePage_ = codePage;
    ++changes_;
  }

  StringPool& strings() { return strings_; }
  const StringPool& strings() const { return strings_; }

  // Persistent tables in _Tables order.
  std::size_t tableCount() const { return tables_.size(); }
  Table& table(std::size_t index) { return *tables_[index]; }
  const Table& table(std::size_t index) const { return *tables_[index]; }
  Table* findTable(std::u16string_view name);
  const Table* findTable(std::u16string_view name) const;
  // Adds an empty table. Fails with kAlreadyExists, or kInvalidParameter for a bad name or
  // column list (no key column, duplicate names, a key column after a non-key column, a
  // temporary key in a table that is not temporary as a whole).
  Table* createTable(std::u16string name, std::vector<Column> columns, Error& error);
  // Appends a column to `table` (one of this database's), null in every row. Fails with
  // kInvalidParameter for a duplicate name, a key column, a bad type or a 33rd column.
  bool addColumn(Table& table, Column column, Error& error);
  // Removes a table and the streams of its binary cells.
  bool dropTable(std::u16string_view name);

  // The catalog tables _Tables, _Columns, _Streams and _Storages as read-only snapshots
  // (binary cells of _Streams/_Storages name their data by the row's Name). Null for any
  // other name.
  std::unique_ptr<Table> catalogView(std::u16string_view name);

  // Streams of the _Streams table, by their decoded names ("Binary.Icon", ...).
  std::vector<std::u16string> streamNames() const;
  bool hasStream(std::u16string_view name) const;
  bool readStream(std::u16string_view name, std::vector<std::uint8_t>& out, Error& error) const;
  // The stream `name` as a source read in pieces; null with kFileNotFound when there is none.
  // A stream still in the opened file keeps that file open while the source lives, so the
  // source may outlive the database. REQUIRES: the stream is not changed meanwhile.
  std::shared_ptr<const storage::StreamSource> streamSource(std::u16string_view name,
                                                            Error& error) const;
  void setStream(std::u16string name, std::vector<std::uint8_t> data);
  // Sets (adds or replaces) the stream `name` to the bytes of `source`, which are read only when
  // the database is saved or the stream read: a large stream made elsewhere (a cabinet written
  // to a file) joins the package without being held in memory. REQUIRES: `source` stays
  // readable until the database has been saved or the stream replaced.
  void setStreamSource(std::u16string name, std::shared_ptr<const storage::StreamSource> source);
  bool removeStream(std::u16string_view name);

  // Sub-storages of the _Storages table (embedded transforms and the like).
  std::vector<std::u16string> storageNames() const;
  bool readStorage(std::u16string_view name, storage::CompoundNode& out, Error& error) const;
  void setStorage(std::u16string name, storage::CompoundNode storage);
  bool removeStorage(std::u16string_view name);

  // Summary information; absent in a database that never had the stream. Until it is
  // replaced, saving writes the stream exactly as it was read.
  const std::optional<storage::SummaryInformation>& summary() const { return summary_; }
  void setSummary(storage::SummaryInformation info) {
    summary_ = std::move(info);
    summaryStream_.clear();
    ++changes_;
  }

  // Writes the database to path(): a new file beside it, renamed into place. kAccessDenied
  // when opened read-only. On failure the existing file is untouched. Refused with
  // kFunctionFailed, nothing written, when another program changed or replaced the source or
  // path() since this object last read or wrote them: streams still in the source would be
  // read from someone else's bytes, and their file would be overwritten. When nothing changed
  // since the last commit wrote path() (committedUnchanged()), the file already holds the
  // database and is not written again.
  std::uint32_t commit(Error& error);
  // Whether a commit wrote path() and nothing changed since: no table, column or cell, stream,
  // storage, summary information or code page.
  bool committedUnchanged() const;
  // Writes a complete copy to `target` the same way, whatever the open mode; refused likewise
  // when the source changed.
  std::uint32_t saveAs(const std::filesystem::path& target, Error& error);

 private:
  static constexpr std::uint32_t kNoEntry = UINT32_MAX;
  // A stream of the _Streams table. Its contents are either still in the opened file (entry),
  // were set in memory (data), or are read from a source set by the caller (source).
  struct StreamSlot {
    std::u16string name;        // decoded name, as the _Streams table shows it
    std::u16string storedName;  // name in the container; empty for a new stream
    std::uint32_t entry = kNoEntry;
    std::optional<std::vector<std::uint8_t>> data;
    std::shared_ptr<const storage::StreamSource> source;  // set by setStreamSource
  };
  struct StorageSlot {
    std::u16string name;
    std::u16string storedName;
    std::uint32_t entry = kNoEntry;
    std::optional<storage::CompoundNode> replacement;
  };
  using StreamSlots = std::map<std::u16string, StreamSlot, std::less<>>;
  // What a commit wrote: the tables by their versions (which change with every edit and differ
  // between tables), everything else by the count of changes made through this object.
  struct Contents {
    std::vector<Table::Version> tables;
    std::uint64_t changes = 0;
    friend bool operator==(const Contents&, const Contents&) = default;
  };
  Contents contents() const;

  Database(storage::FileSystem& fs, OpenMode mode);
  bool load(Error& error);
  // Copies a storage of the opened file with everything in it.
  bool readStoredNode(const StorageSlot& slot, storage::CompoundNode& out, Error& error,
                      storage::StreamContents contents = storage::StreamContents::kRead) const;
  // The tree of the file to write: tables encoded, streams still in the opened file as
  // sources read when the file is written.
  bool buildTree(storage::CompoundNode& root, Error& error);
  // Writes the whole database to `target` (commit and saveAs); the new file's stamp goes to
  // `written` when given.
  std::uint32_t write(const std::filesystem::path& target, Error& error,
                      std::optional<storage::FileStamp>* written);
  // False with the reason when `path` no longer names the file as `seen` recorded it.
  bool unchangedOnDisk(const std::filesystem::path& path,
                       const std::optional<storage::FileStamp>& seen, Error& error) const;

  storage::FileSystem& fs_;
  OpenMode mode_;
  std::filesystem::path sourcePath_;
  std::filesystem::path outputPath_;
  // Shared with the sources of streams handed out, which may outlive the database.
  std::shared_ptr<storage::CompoundFileReader> reader_;
  // The source as it was read, and the output as last read or written (nothing: absent).
  std::optional<storage::FileStamp> sourceStamp_;
  std::optional<storage::FileStamp> outputStamp_;
  storage::Clsid rootClsid_{};
  std::uint32_t codePage_ = 0;
  StringPool strings_;
  std::vector<std::unique_ptr<Table>> tables_;
  StreamSlots streams_;  // by name, so packages with many binary cells look them up quickly
  std::vector<StorageSlot> storages_;
  // Root streams the database does not interpret (digital signatures and the like), kept
  // byte for byte under their encoded names.
  std::vector<StreamSlot> preserved_;
  std::optional<storage::SummaryInformation> summary_;
  std::vector<std::uint8_t> summaryStream_;  // as read, while unchanged
  // Streams, storages, summary information and code page set or removed since opening.
  std::uint64_t changes_ = 0;
  std::optional<Contents> committed_;  // as the last commit wrote them
};

}  // namespace odlex::engine
