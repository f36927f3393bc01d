#include "msi/engine/Database.h"

#include <algorithm>
#include <set>

#include "msi/engine/Catalog.h"
#include "msi/engine/Text.h"
#include "storage/CompoundFileNames.h"
#include "storage/StreamName.h"

namespace odlex::engine {

namespace {
constexpr std::size_t kMaxColumns = 32;

bool readWhole(const storage::StreamSource& source, std::vector<std::uint8_t>& out,
               std::string& reason) {
  auto reader = source.open(reason);
  if (!reader)
    return false;
  out.resize(source.size());
  return reader->read(out.data(), out.size(), reason);
}

// A stream still in the opened file: the source and its readers share the file's reader, which
// stays open while any of them lives.
class OpenedFileSource final : public storage::StreamSource {
 public:
  OpenedFileSource(std::shared_ptr<const storage::CompoundFileReader> file,
                   std::shared_ptr<const storage::StreamSource> stream)
      : file_(std::move(file)), stream_(std::move(stream)) {}
  std::uint64_t size() const override { return stream_->size(); }
  std::unique_ptr<storage::StreamReader> open(std::string& error) const override {
    struct Reader final : storage::StreamReader {
      std::shared_ptr<const storage::CompoundFileReader> file;
      std::unique_ptr<storage::StreamReader> stream;
      bool read(std::uint8_t* out, std::size_t length, std::string& why) override {
        return stream->read(out, length, why);
      }
    };
    auto reader = std::make_unique<Reader>();
    reader->file = file_;
    reader->stream = stream_->open(error);
    return reader->stream ? std::move(reader) : nullptr;
  }

 private:
  std::shared_ptr<const storage::CompoundFileReader> file_;
  std::shared_ptr<const storage::StreamSource> stream_;
};

bool validColumnType(const Column& column) {
  if (column.isInteger()) {
    unsigned size = column.type & column_type::kSizeMask;
    return size == 2 || size == 4;
  }
  return true;
}
}  // namespace

Database::Database(storage::FileSystem& fs, OpenMode mode) : fs_(fs), mode_(mode) {}

Database::~Database() = default;

Table* Database::findTable(std::u16string_view name) {
  for (auto& table : tables_) {
    if (table->name() == name)
      return table.get();
  }
  return nullptr;
}

const Table* Database::findTable(std::u16string_view name) const {
  return const_cast<Database*>(this)->findTable(name);
}

Table* Database::createTable(std::u16string name, std::vector<Column> columns, Error& error) {
  auto fail = [&error](std::uint32_t code, std::string text) -> Table* {
    error = Error{code, std::move(text)};
    return nullptr;
  };
  const std::string where = "table " + toUtf8(name);
  if (name.empty() || !storage::encodeStreamName(name, true)) {
    return fail(kInvalidParameter, where + ": the name is empty or too long to store");
  }
  if (name.starts_with(u"_Streams") || name == u"_Tables" || name == u"_Columns" ||
      name == u"_Storages" || name == u"_StringPool" || name == u"_StringData") {
    return fail(kInvalidParameter, where + ": the name is reserved for the database itself");
  }
  if (findTable(name))
    return fail(kAlreadyExists, where + " already exists");
  if (columns.empty() || columns.size() > kMaxColumns) {
    return fail(kInvalidParameter,
                where + ": a table has 1 to 32 columns, not " + std::to_string(columns.size()));
  }
  if (!columns.front().key())
    return fail(kInvalidParameter, where + ": the first column is not a key");
  std::set<std::u16string> names;
  bool keysEnded = false;
  const bool allTemporary =
      std::all_of(columns.begin(), columns.end(), [](const Column& c) { return c.temporary(); });
  for (const Column& column : columns) {
    const std::string what = where + ", column " + toUtf8(column.name);
    if (column.name.empty() || !names.insert(column.name).second) {
      return fail(kInvalidParameter, what + ": empty or duplicate column name");
    }
    if (column.key() && keysEnded) {
      return fail(kInvalidParameter, what + ": key columns must come first");
    }
    // Temporary columns are never written, so a temporary key would leave the saved table
    // without the key it was built on; only a table that is temporary as a whole has one.
    if (column.key() && column.temporary() && !allTemporary) {
      return fail(kInvalidParameter,
                  what + ": a key column of a table that is saved cannot be temporary");
    }
    keysEnded = !column.key();
    if (!validColumnType(column)) {
      return fail(kInvalidParameter, what + ": integers are 2 or 4 bytes wide");
    }
  }
  // A table-marked stream that no table claimed is kept as it was read; a new table of that
  // name replaces it, since both would be stored under one name.
  const std::u16string stored = *storage::encodeStreamName(name, true);
  std::erase_if(preserved_, [&stored](const StreamSlot& slot) {
    return storage::cfb::compareEntryNames(slot.storedName, stored) == 0;
  });
  tables_.push_back(std::make_unique<Table>(std::move(name), std::move(columns)));
  return tables_.back().get();
}

bool Database::addColumn(Table& table, Column column, Error& error) {
  const std::string what = "table " + toUtf8(table.name()) + ", column " + toUtf8(column.name);
  auto fail = [&error, &what](std::string text) {
    error = Error{kInvalidParameter, what + ": " + text};
    return false;
  };
  if (column.name.empty() || table.columnIndex(column.name) >= 0)
    return fail("empty or duplicate column name");
  if (table.columnCount() >= kMaxColumns)
    return fail("a table has at most 32 columns");
  if (column.key())
    return fail("a column added to a table cannot be a key");
  if (!validColumnType(column))
    return fail("integers are 2 or 4 bytes wide");
  table.addColumn(std::move(column));
  return true;
}

bool Database::dropTable(std::u16string_view name) {
  auto found = std::find_if(tables_.begin(), tables_.end(),
                            [name](const auto& table) { return table->name() == name; });
  if (found == tables_.end())
    return false;
  const std::u16string prefix = std::u16string(name) + u'.';
  auto first = streams_.lower_bound(prefix);
  auto last = first;
  while (last != streams_.end() && last->first.starts_with(prefix))
    ++last;
  streams_.erase(first, last);
  tables_.erase(found);
  return true;
}

std::unique_ptr<Table> Database::catalogView(std::u16string_view name) {
  if (name == u"_Tables") {
    auto view = std::make_unique<Table>(u"_Tables", tablesCatalogColumns());
    for (const auto& table : tables_) {
      view->appendRow(std::vector<std::uint32_t>{strings_.intern(table->name())});
    }
    return view;
  }
  if (name == u"_Columns") {
    auto view = std::make_unique<Table>(u"_Columns", columnsCatalogColumns());
    for (const auto& table : tables_) {
      std::uint32_t tableId = strings_.intern(table->name());
      std::int32_t number = 0;
      for (const Column& column : table->columns()) {
        if (column.temporary())
          continue;
        view->appendRow(std::vector<std::uint32_t>{
            tableId, static_cast<std::uint32_t>(++number), strings_.intern(column.name),
            static_cast<std::uint32_t>(static_cast<std::int16_t>(column.type))});
      }
    }
    return view;
  }
  if (name == u"_Streams" || name == u"_Storages") {
    auto view = std::make_unique<Table>(std::u16string(name), streamsCatalogColumns());
    auto names = name == u"_Streams" ? streamNames() : storageNames();
    for (const auto& entry : names) {
      view->appendRow(std::vector<std::uint32_t>{strings_.intern(entry), 1});
    }
    return view;
  }
  return nullptr;
}

std::vector<std::u16string> Database::streamNames() const {
  std::vector<std::u16string> names;
  names.reserve(streams_.size());
  for (const auto& [name, slot] : streams_)
    names.push_back(name);
  return names;
}

bool Database::hasStream(std::u16string_view name) const {
  return streams_.find(name) != streams_.end();
}

bool Database::readStream(std::u16string_view name, std::vector<std::uint8_t>& out,
                          Error& error) const {
  const auto found = streams_.find(name);
  if (found == streams_.end()) {
    error = Error{kFileNotFound, "no stream named " + toUtf8(name)};
    return false;
  }
  const StreamSlot& slot = found->second;
  if (slot.data) {
    out = *slot.data;
    return true;
  }
  std::string reason;
  if (slot.source ? readWhole(*slot.source, out, reason)
                  : reader_->readStream(slot.entry, out, reason))
    return true;
  error = Error{kReadFault, "stream " + toUtf8(name) + ": " + reason};
  return false;
}

std::shared_ptr<const storage::StreamSource> Database::streamSource(std::u16string_view name,
                                                                    Error& error) const {
  const auto found = streams_.find(name);
  if (found == streams_.end()) {
    error = Error{kFileNotFound, "no stream named " + toUtf8(name)};
    return nullptr;
  }
  const StreamSlot& slot = found->second;
  if (slot.source)
    return slot.source;
  if (slot.data)
    return storage::memorySource(*slot.data);
  return std::make_shared<OpenedFileSource>(reader_, reader_->streamSource(slot.entry));
}

void Database::setStream(std::u16string name, std::vector<std::uint8_t> data) {
  ++changes_;
  const auto found = streams_.find(name);
  if (found != streams_.end()) {
    found->second.data = std::move(data);
    found->second.source.reset();
    return;
  }
  std::u16string key = name;
  streams_.emplace(std::move(key),
                   StreamSlot{std::move(name), {}, kNoEntry, std::move(data), nullptr});
}

void Database::setStreamSource(std::u16string name,
                               std::shared_ptr<const storage::StreamSource> source) {
  ++changes_;
  const auto found = streams_.find(name);
  if (found != streams_.end()) {
    found->second.data.reset();
    found->second.source = std::move(source);
    return;
  }
  std::u16string key = name;
  streams_.emplace(std::move(key),
                   StreamSlot{std::move(name), {}, kNoEntry, std::nullopt, std::move(source)});
}

bool Database::removeStream(std::u16string_view name) {
  const auto found = streams_.find(name);
  if (found == streams_.end())
    return false;
  streams_.erase(found);
  ++changes_;
  return true;
}

std::vector<std::u16string> Database::storageNames() const {
  std::vector<std::u16string> names;
  for (const StorageSlot& slot : storages_)
    names.push_back(slot.name);
  std::sort(names.begin(), names.end());
  return names;
}

bool Database::readStorage(std::u16string_view name, storage::CompoundNode& out,
                           Error& error) const {
  for (const StorageSlot& slot : storages_) {
    if (slot.name != name)
      continue;
    if (slot.replacement) {
      out = *slot.replacement;
      return true;
    }
    return readStoredNode(slot, out, error);
  }
  error = Error{kFileNotFound, "no storage named " + toUtf8(name)};
  return false;
}

void Database::setStorage(std::u16string name, storage::CompoundNode storage) {
  ++changes_;
  for (StorageSlot& slot : storages_) {
    if (slot.name == name) {
      slot.replacement = std::move(storage);
      return;
    }
  }
  storages_.push_back(StorageSlot{std::move(name), {}, kNoEntry, std::move(storage)});
}

bool Database::removeStorage(std::u16string_view name) {
  if (std::erase_if(storages_, [name](const StorageSlot& slot) { return slot.name == name; }) == 0)
    return false;
  ++changes_;
  return true;
}

bool Database::readStoredNode(const StorageSlot& slot, storage::CompoundNode& out, Error& error,
                              storage::StreamContents contents) const {
  std::string reason;
  if (storage::readCompoundTree(*reader_, slot.entry, out, reason, contents))
    return true;
  error = Error{kReadFault, "storage " + toUtf8(slot.name) + ": " + reason};
  return false;
}

}  // namespace odlex::engine
