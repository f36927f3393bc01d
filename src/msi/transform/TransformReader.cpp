// Reading a transform: its container, string pool, summary information and records, checked
// throughout (a transform from elsewhere is untrusted input), decoded against the database it
// is to be applied to.

#include <algorithm>
#include <map>
#include <set>

#include "msi/engine/ByteIo.h"
#include "msi/engine/Catalog.h"
#include "msi/engine/Database.h"
#include "msi/engine/StringPool.h"
#include "msi/engine/StringPoolCodec.h"
#include "msi/engine/Text.h"
#include "msi/transform/Records.h"
#include "msi/transform/Transform.h"
#include "storage/StreamName.h"
#include "storage/SummaryInformation.h"

namespace odlex::transform {

using engine::Column;
using engine::Database;
using engine::Error;

namespace {

// A stream of a transform file that keeps the file's reader alive while it is referred to.
class FileStreamSource : public storage::StreamSource {
 public:
  FileStreamSource(std::shared_ptr<const storage::CompoundFileReader> reader,
                   std::shared_ptr<const storage::StreamSource> stream)
      : reader_(std::move(reader)), stream_(std::move(stream)) {}
  std::uint64_t size() const override { return stream_->size(); }
  std::unique_ptr<storage::StreamReader> open(std::string& error) const override {
    return stream_->open(error);
  }

 private:
  std::shared_ptr<const storage::CompoundFileReader> reader_;
  std::shared_ptr<const storage::StreamSource> stream_;
};

void keepReaderAlive(storage::CompoundNode& node,
                     const std::shared_ptr<const storage::CompoundFileReader>& reader) {
  if (node.source)
    node.source = std::make_shared<FileStreamSource>(reader, node.source);
  for (storage::CompoundNode& child : node.children)
    keepReaderAlive(child, reader);
}

bool fail(Error& error, std::string text) {
  error = Error{engine::kTransformFailure, "transform: " + std::move(text)};
  return false;
}

bool readBytes(const storage::CompoundNode& node, std::vector<std::uint8_t>& out, Error& error) {
  if (!node.source) {
    out = node.data;
    return true;
  }
  std::string reason;
  auto reader = node.source->open(reason);
  out.resize(node.source->size());
  if (!reader || !reader->read(out.data(), out.size(), reason))
    return fail(error, storage::describeEntryName(node.name) + ": " + reason);
  return true;
}

struct Streams {
  std::map<std::u16string, const storage::CompoundNode*> tables;  // by table name
  std::map<std::u16string, const storage::CompoundNode*> data;    // by decoded stream name
  const storage::CompoundNode* summary = nullptr;
};

// Parses the records of one table stream.
class RecordParser {
 public:
  RecordParser(const engine::StringPool& pool, unsigned referenceSize, const Streams& streams)
      : pool_(pool), referenceSize_(referenceSize), streams_(streams) {}

  bool parse(const std::u16string& table, const std::vector<Column>& columns,
             const std::vector<std::uint8_t>& bytes, std::vector<RowEdit>& rows, Error& error) {
    std::size_t keyCount = 0;
    while (keyCount < columns.size() && columns[keyCount].key())
      ++keyCount;
    const std::string where = "table " + engine::toUtf8(table);
    for (std::size_t at = 0; at < bytes.size();) {
      if (bytes.size() - at < 2)
        return fail(error, where + ": a record is cut short at byte " + std::to_string(at));
      const std::uint16_t mask = engine::readLe16(bytes.data() + at);
      at += 2;
      RowEdit row;
      std::size_t present = keyCount;
      if (mask == 0) {
        row.kind = RowEdit::kDelete;
      } else if (mask & kInsertMask) {
        row.kind = RowEdit::kInsert;
        present = mask >> 8;
        if (present < keyCount || present > columns.size())
          return fail(error, where + ": an inserted row has " + std::to_string(present) + " of " +
                                 std::to_string(columns.size()) + " columns");
      } else {
        row.kind = RowEdit::kUpdate;
        if (columns.size() < kMaskColumns && (mask >> columns.size()) != 0)
          return fail(error, where + ": an update names a column the table does not have");
      }
      row.cells.resize(columns.size());
      for (std::size_t c = 0; c < columns.size(); ++c) {
        const bool carried = row.kind == RowEdit::kUpdate
                                 ? c < keyCount || (c < kMaskColumns && (mask & (1u << c)))
                                 : c < present;
        if (!carried) {
          if (row.kind == RowEdit::kInsert)
            row.cells[c] = Value{};
          continue;
        }
        const unsigned width = cellWidth(columns[c], referenceSize_);
        if (bytes.size() - at < width)
          return fail(error, where + ": a record is cut short at byte " + std::to_string(at));
        const std::uint32_t raw = width == 2   ? engine::readLe16(bytes.data() + at)
                                  : width == 3 ? engine::readLe24(bytes.data() + at)
                                               : engine::readLe32(bytes.data() + at);
        at += width;
        if (!cellOf(columns[c], raw, where, row.cells[c], error))
          return false;
      }
      if (!attachStreams(table, columns, keyCount, row, where, error))
        return false;
      rows.push_back(std::move(row));
    }
    return true;
  }

 private:
  bool cellOf(const Column& column, std::uint32_t raw, const std::string& where,
              std::optional<Value>& cell, Error& error) const {
    Value value;
    std::int32_t number = 0;
    if (column.isBinary()) {
      value.kind = raw != 0 ? Value::kStream : Value::kNull;
    } else if (column.isString()) {
      if (raw >= pool_.size())
        return fail(error, where + ": string reference " + std::to_string(raw) +
                               " is beyond the string pool");
      value = Value::ofText(std::u16string(pool_.get(raw)));
    } else if (decodeInteger(column, raw, number)) {
      value = Value::ofInteger(number);
    }
    cell = std::move(value);
    return true;
  }

  // A binary cell's data is the stream named after the row; a cell marked null that still has
  // a stream takes it.
  bool attachStreams(const std::u16string& table, const std::vector<Column>& columns,
                     std::size_t keyCount, RowEdit& row, const std::string& where,
                     Error& error) const {
    for (std::size_t c = 0; c < columns.size(); ++c) {
      if (!columns[c].isBinary() || !row.cells[c])
        continue;
      const std::u16string name = table == kStreamsName && row.cells[0]
                                      ? row.cells[0]->text
                                      : streamNameOf(table, row.cells, keyCount);
      const auto found = streams_.data.find(name);
      Value& value = *row.cells[c];
      if (found != streams_.data.end()) {
        value.kind = Value::kStream;
        value.stream = found->second->source ? found->second->source
                                             : storage::memorySource(found->second->data);
      } else if (value.kind == Value::kStream) {
        return fail(error, where + ": the stream " + engine::toUtf8(name) + " is missing");
      }
    }
    return true;
  }

  const engine::StringPool& pool_;
  unsigned referenceSize_;
  const Streams& streams_;
};

bool sortStreams(const storage::CompoundNode& root, Streams& streams) {
  for (const storage::CompoundNode& child : root.children) {
    if (child.isStorage)
      continue;
    if (child.name == kSummaryStreamName) {
      streams.summary = &child;
      continue;
    }
    const storage::DecodedStreamName decoded = storage::decodeStreamName(child.name);
    (decoded.isTable ? streams.tables : streams.data).emplace(decoded.name, &child);
  }
  return true;
}

bool readPool(const Streams& streams, engine::StringPool& pool, engine::LoadedPool& loaded,
              Error& error) {
  const auto poolStream = streams.tables.find(u"_StringPool");
  const auto dataStream = streams.tables.find(u"_StringData");
  if (poolStream == streams.tables.end() || dataStream == streams.tables.end())
    return fail(error, "the string pool is missing");
  std::vector<std::uint8_t> poolBytes, dataBytes;
  std::string reason;
  if (!readBytes(*poolStream->second, poolBytes, error) ||
      !readBytes(*dataStream->second, dataBytes, error))
    return false;
  if (!engine::readStringPool(poolBytes, dataBytes, pool, loaded, reason))
    return fail(error, reason);
  return true;
}

bool readFlags(const Streams& streams, DecodedTransform& out, Error& error) {
  if (!streams.summary)
    return true;
  std::vector<std::uint8_t> bytes;
  storage::SummaryInformation summary;
  std::string reason;
  if (!readBytes(*streams.summary, bytes, error))
    return false;
  if (!storage::readSummaryInformation(bytes, summary, reason))
    return fail(error, "summary information: " + reason);
  const auto found = summary.properties.find(storage::kPidCharacterCount);
  if (found != summary.properties.end()) {
    const auto flags = static_cast<std::uint32_t>(found->second.integer);
    out.errorConditions = flags & 0xFFFF;
    out.validation = flags >> 16;
  }
  return true;
}

// The columns of each table that the transform's _Columns records add, by number.
using AddedColumns = std::map<std::u16string, std::map<std::int32_t, Column>>;

bool collectColumns(const std::vector<RowEdit>& rows, AddedColumns& added, Error& error) {
  for (const RowEdit& row : rows) {
    if (row.kind != RowEdit::kInsert)
      continue;
    const Value& table = *row.cells[0];
    const Value& number = *row.cells[1];
    const Value& name = *row.cells[2];
    const Value& type = *row.cells[3];
    if (table.kind != Value::kText || number.kind != Value::kInteger || number.integer < 1 ||
        number.integer > 32 || name.kind != Value::kText || type.kind != Value::kInteger)
      return fail(error, "_Columns: a column record is incomplete");
    const Column column{name.text, static_cast<std::uint16_t>(type.integer)};
    if (column.isInteger() &&
        column.integerSize() != static_cast<unsigned>(column.type & engine::column_type::kSizeMask))
      return fail(error, "_Columns: column " + engine::toUtf8(name.text) + " has a bad type");
    added[table.text][number.integer] = column;
  }
  return true;
}

// The columns of `table` after the transform: the base's followed by those added, numbered on
// from them, or all of them for a table the transform adds.
bool columnsAfter(const std::u16string& table, const Database& base, bool addedTable,
                  const AddedColumns& added, std::vector<Column>& columns, Error& error) {
  const engine::Table* existing = base.findTable(table);
  if (!addedTable && !existing)
    return fail(error,
                "it changes table " + engine::toUtf8(table) + ", which the database does not have");
  const auto found = added.find(table);
  // An added table that exists and whose columns the transform does not list keeps its own.
  columns = existing && (!addedTable || found == added.end()) ? existing->columns()
                                                              : std::vector<Column>{};
  if (found == added.end())
    return !columns.empty() || fail(error, "table " + engine::toUtf8(table) + " has no columns");
  for (const auto& [number, column] : found->second) {
    if (static_cast<std::size_t>(number) <= columns.size())
      continue;
    if (static_cast<std::size_t>(number) != columns.size() + 1)
      return fail(error, "table " + engine::toUtf8(table) + ": column numbers have a gap");
    columns.push_back(column);
  }
  if (columns.empty() || !columns.front().key())
    return fail(error, "table " + engine::toUtf8(table) + " has no key column");
  return true;
}

}  // namespace

bool readTransformFile(storage::FileSystem& fs, const std::filesystem::path& path,
                       storage::CompoundNode& transform, Error& error) {
  std::string reason;
  auto file = fs.openRead(path, reason);
  std::shared_ptr<const storage::CompoundFileReader> reader =
      file ? storage::CompoundFileReader::open(std::move(file), reason) : nullptr;
  if (!reader ||
      !storage::readCompoundTree(*reader, 0, transform, reason, storage::StreamContents::kSource)) {
    error = Error{engine::kOpenFailed, path.string() + ": " + reason};
    return false;
  }
  keepReaderAlive(transform, reader);
  return true;
}

bool decodeTransform(const storage::CompoundNode& transform, const Database& base,
                     DecodedTransform& out, Error& error) {
  out = {};
  Streams streams;
  sortStreams(transform, streams);
  engine::StringPool pool;
  engine::LoadedPool loaded;
  if (!readPool(streams, pool, loaded, error) || !readFlags(streams, out, error))
    return false;
  out.codePage = loaded.codePage;
  RecordParser parser(pool, loaded.referenceSize, streams);

  auto records = [&](const std::u16string& table, const std::vector<Column>& columns,
                     std::vector<RowEdit>& rows) {
    const auto found = streams.tables.find(table);
    std::vector<std::uint8_t> bytes;
    return found == streams.tables.end() || (readBytes(*found->second, bytes, error) &&
                                             parser.parse(table, columns, bytes, rows, error));
  };
  std::vector<RowEdit> tableRows, columnRows, streamRows;
  AddedColumns added;
  if (!records(kTablesName, engine::tablesCatalogColumns(), tableRows) ||
      !records(kColumnsName, engine::columnsCatalogColumns(), columnRows) ||
      !records(kStreamsName, engine::streamsCatalogColumns(), streamRows) ||
      !collectColumns(columnRows, added, error))
    return false;

  std::set<std::u16string> addedTables, listed;
  for (const RowEdit& row : tableRows) {
    const Value& name = *row.cells[0];
    if (name.kind != Value::kText)
      return fail(error, "_Tables: a record has no table name");
    if (row.kind == RowEdit::kDelete) {
      const engine::Table* existing = base.findTable(name.text);
      out.changes.tables.push_back(TableEdit{TableEdit::kDropped,
                                             name.text,
                                             existing ? existing->columns() : std::vector<Column>{},
                                             existing ? existing->keyCount() : 0,
                                             0,
                                             {}});
    } else if (row.kind == RowEdit::kInsert) {
      addedTables.insert(name.text);
    }
  }
  auto decodeTable = [&](const std::u16string& name, bool isAdded) {
    TableEdit edit;
    edit.name = name;
    edit.state = isAdded ? TableEdit::kAdded : TableEdit::kChanged;
    if (!columnsAfter(name, base, isAdded, added, edit.columns, error))
      return false;
    while (edit.keyCount < edit.columns.size() && edit.columns[edit.keyCount].key())
      ++edit.keyCount;
    const engine::Table* existing = base.findTable(name);
    if (!isAdded && existing)
      edit.addedColumns = edit.columns.size() - existing->columnCount();
    if (!records(name, edit.columns, edit.rows))
      return false;
    listed.insert(name);
    out.changes.tables.push_back(std::move(edit));
    return true;
  };
  for (const std::u16string& name : addedTables) {
    if (!decodeTable(name, true))
      return false;
  }
  for (const auto& [name, node] : streams.tables) {
    const bool own = name == kTablesName || name == kColumnsName || name == kStreamsName ||
                     name == u"_StringPool" || name == u"_StringData";
    if (!own && !listed.contains(name) && !decodeTable(name, false))
      return false;
  }
  for (const auto& [name, columns] : added) {
    if (!listed.contains(name) && !decodeTable(name, false))
      return false;
  }
  for (const RowEdit& row : streamRows) {
    const Value& name = *row.cells[0];
    if (name.kind != Value::kText)
      return fail(error, "_Streams: a record has no stream name");
    const Value* data = row.cells[1] ? &*row.cells[1] : nullptr;
    out.changes.streams.push_back(StreamEdit{row.kind == RowEdit::kDelete   ? StreamEdit::kDelete
                                             : row.kind == RowEdit::kInsert ? StreamEdit::kInsert
                                                                            : StreamEdit::kUpdate,
                                             name.text, data ? data->stream : nullptr});
  }
  return true;
}

}  // namespace odlex::transform
