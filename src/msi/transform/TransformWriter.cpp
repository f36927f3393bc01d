// Writing a transform: the difference of two databases encoded as records, with the transform's
// own string pool and summary information.

#include <optional>

#include "msi/engine/ByteIo.h"
#include "msi/engine/Catalog.h"
#include "msi/engine/Database.h"
#include "msi/engine/StringPool.h"
#include "msi/engine/StringPoolCodec.h"
#include "msi/engine/Text.h"
#include "msi/transform/Records.h"
#include "msi/transform/Transform.h"
#include "storage/StreamName.h"

namespace odlex::transform {

using engine::Column;
using engine::Database;
using engine::Error;

namespace {

constexpr storage::Clsid kTransformClsid = {0x82, 0x10, 0x0C, 0x00, 0x00, 0x00, 0x00, 0x00,
                                            0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

struct Record {
  std::uint16_t mask = 0;
  std::vector<std::optional<Value>> cells;  // absent cells are not written
};

struct TableStream {
  std::u16string name;
  std::vector<Column> columns;
  std::vector<Record> records;
};

std::vector<Column> streamsColumns() {
  return engine::streamsCatalogColumns();
}

std::uint16_t insertMask(std::size_t columns) {
  return static_cast<std::uint16_t>(kInsertMask | (columns << 8));
}

Record insertRecord(std::vector<std::optional<Value>> cells) {
  for (auto& cell : cells) {
    if (!cell)
      cell = Value{};
  }
  return Record{insertMask(cells.size()), std::move(cells)};
}

// The records of one changed table. An update past the columns a mask can name becomes a delete
// and an insert of the whole row.
std::vector<Record> rowRecords(const TableEdit& edit) {
  std::vector<Record> records;
  for (const RowEdit& row : edit.rows) {
    switch (row.kind) {
      case RowEdit::kInsert:
        records.push_back(insertRecord(row.cells));
        break;
      case RowEdit::kDelete: {
        std::vector<std::optional<Value>> keys(row.cells.begin(),
                                               row.cells.begin() + edit.keyCount);
        records.push_back(Record{0, std::move(keys)});
        break;
      }
      case RowEdit::kUpdate: {
        std::uint32_t mask = 0;
        bool wide = false;
        for (std::size_t c = edit.keyCount; c < row.cells.size(); ++c) {
          if (!row.cells[c])
            continue;
          wide = wide || c >= kMaskColumns;
          mask |= 1u << c;
        }
        if (!wide) {
          records.push_back(Record{static_cast<std::uint16_t>(mask), row.cells});
          break;
        }
        std::vector<std::optional<Value>> whole(row.cells.size());
        for (std::size_t c = 0; c < whole.size(); ++c)
          whole[c] = row.cells[c] ? row.cells[c] : c < row.before.size() ? row.before[c] : Value{};
        records.push_back(Record{
            0, std::vector<std::optional<Value>>(whole.begin(), whole.begin() + edit.keyCount)});
        records.push_back(insertRecord(std::move(whole)));
        break;
      }
    }
  }
  return records;
}

std::vector<TableStream> tableStreams(const Difference& difference) {
  TableStream tables{kTablesName, engine::tablesCatalogColumns(), {}};
  TableStream columns{kColumnsName, engine::columnsCatalogColumns(), {}};
  std::vector<TableStream> rows;
  for (const TableEdit& edit : difference.tables) {
    const Value name = Value::ofText(edit.name);
    if (edit.state == TableEdit::kDropped) {
      tables.records.push_back(Record{0, {name}});
      continue;
    }
    if (edit.state == TableEdit::kAdded)
      tables.records.push_back(Record{insertMask(1), {name}});
    const std::size_t firstNew =
        edit.state == TableEdit::kAdded ? 0 : edit.columns.size() - edit.addedColumns;
    for (std::size_t c = firstNew; c < edit.columns.size(); ++c) {
      const Column& column = edit.columns[c];
      columns.records.push_back(Record{
          insertMask(4),
          {name, Value::ofInteger(static_cast<std::int32_t>(c + 1)), Value::ofText(column.name),
           Value::ofInteger(static_cast<std::int16_t>(column.type))}});
    }
    if (!edit.rows.empty())
      rows.push_back(TableStream{edit.name, edit.columns, rowRecords(edit)});
  }
  TableStream streams{kStreamsName, streamsColumns(), {}};
  for (const StreamEdit& edit : difference.streams) {
    const Value name = Value::ofText(edit.name);
    Value data;
    data.kind = Value::kStream;
    data.stream = edit.data;
    if (edit.kind == StreamEdit::kDelete)
      streams.records.push_back(Record{0, {name}});
    else if (edit.kind == StreamEdit::kInsert)
      streams.records.push_back(Record{insertMask(2), {name, data}});
    else
      streams.records.push_back(Record{0x0002, {name, data}});
  }
  std::vector<TableStream> all;
  for (TableStream* stream : {&tables, &columns, &streams}) {
    if (!stream->records.empty())
      all.push_back(std::move(*stream));
  }
  for (TableStream& stream : rows)
    all.push_back(std::move(stream));
  return all;
}

// The container name of a stream that is not a table: packed, except system names.
bool streamEntryName(const std::u16string& name, std::u16string& out, Error& error) {
  if (name.starts_with(u'\u0005')) {
    out = name;
    return true;
  }
  auto encoded = storage::encodeStreamName(name, false);
  if (!encoded) {
    error = Error{engine::kFunctionFailed, "the stream name " + engine::toUtf8(name) +
                                               " is too long to store in a transform"};
    return false;
  }
  out = *encoded;
  return true;
}

class Encoder {
 public:
  explicit Encoder(std::uint32_t codePage) : codePage_(codePage) {}

  bool encode(const std::vector<TableStream>& streams, storage::CompoundNode& root, Error& error) {
    for (const TableStream& stream : streams) {
      pool_.intern(stream.name);
      for (const Record& record : stream.records) {
        for (const auto& cell : record.cells) {
          if (cell && cell->kind == Value::kText)
            pool_.intern(cell->text);
        }
      }
    }
    std::vector<std::uint32_t> references(pool_.size(), 1);
    references[0] = 0;
    engine::EncodedPool encoded;
    std::string reason;
    if (!engine::writeStringPool(pool_, references, codePage_, encoded, reason)) {
      error = Error{engine::kFunctionFailed, reason};
      return false;
    }
    remap_ = std::move(encoded.remap);
    referenceSize_ = encoded.referenceSize;
    addTableStream(root, u"_StringPool", std::move(encoded.poolStream));
    addTableStream(root, u"_StringData", std::move(encoded.dataStream));
    for (const TableStream& stream : streams) {
      std::vector<std::uint8_t> bytes;
      for (const Record& record : stream.records) {
        if (!encodeRecord(stream, record, bytes, root, error))
          return false;
      }
      addTableStream(root, stream.name, std::move(bytes));
    }
    return true;
  }

 private:
  static void addTableStream(storage::CompoundNode& root, const std::u16string& name,
                             std::vector<std::uint8_t> bytes) {
    storage::CompoundNode node;
    node.name = *storage::encodeStreamName(name, true);
    node.data = std::move(bytes);
    root.children.push_back(std::move(node));
  }

  bool encodeRecord(const TableStream& stream, const Record& record, std::vector<std::uint8_t>& out,
                    storage::CompoundNode& root, Error& error) {
    engine::appendLe16(out, record.mask);
    const std::size_t keyCount = [&] {
      std::size_t keys = 0;
      while (keys < stream.columns.size() && stream.columns[keys].key())
        ++keys;
      return keys;
    }();
    for (std::size_t c = 0; c < record.cells.size() && c < stream.columns.size(); ++c) {
      if (!record.cells[c])
        continue;
      const Column& column = stream.columns[c];
      const Value& value = *record.cells[c];
      std::uint32_t raw = 0;
      if (column.isBinary()) {
        raw = value.kind == Value::kStream ? 1 : 0;
        if (raw && !addCellStream(stream, record, keyCount, value, root, error))
          return false;
      } else if (column.isString()) {
        raw = value.kind == Value::kText ? remap_[pool_.find(value.text)] : 0;
      } else {
        raw = encodeInteger(column, value.integer, value.kind != Value::kInteger);
      }
      engine::appendLe(out, raw, cellWidth(column, referenceSize_));
    }
    return true;
  }

  static bool addCellStream(const TableStream& stream, const Record& record, std::size_t keyCount,
                            const Value& value, storage::CompoundNode& root, Error& error) {
    const std::u16string name = stream.name == kStreamsName
                                    ? record.cells[0]->text
                                    : streamNameOf(stream.name, record.cells, keyCount);
    storage::CompoundNode node;
    if (!streamEntryName(name, node.name, error))
      return false;
    node.source = value.stream;
    root.children.push_back(std::move(node));
    return true;
  }

  std::uint32_t codePage_;
  engine::StringPool pool_;
  std::vector<std::uint32_t> remap_;
  unsigned referenceSize_ = 2;
};

std::u16string propertyOf(const Database& db, std::u16string_view name) {
  const engine::Table* table = db.findTable(u"Property");
  if (!table || table->columnCount() < 2)
    return {};
  for (std::size_t r = 0; r < table->rowCount(); ++r) {
    if (table->text(db.strings(), r, 0) == name)
      return std::u16string(table->text(db.strings(), r, 1));
  }
  return {};
}

std::optional<storage::SummaryValue> summaryValue(const Database& db, std::uint32_t id) {
  if (!db.summary())
    return std::nullopt;
  const auto found = db.summary()->properties.find(id);
  if (found == db.summary()->properties.end())
    return std::nullopt;
  return found->second;
}

storage::SummaryValue text(std::u16string value) {
  storage::SummaryValue result;
  result.kind = storage::SummaryValue::kString;
  result.text = std::move(value);
  return result;
}

storage::SummaryInformation transformSummary(const Database& base, const Database& target,
                                             const TransformOptions& options) {
  storage::SummaryInformation summary;
  auto& properties = summary.properties;
  storage::SummaryValue codePage;
  codePage.integer = 1252;
  properties[storage::kPidCodePage] =
      summaryValue(target, storage::kPidCodePage).value_or(codePage);
  properties[storage::kPidTitle] = text(u"Transform");
  for (std::uint32_t id : {storage::kPidSubject, storage::kPidAuthor, storage::kPidKeywords,
                           storage::kPidComments, storage::kPidPageCount}) {
    if (auto value = summaryValue(target, id))
      properties[id] = *value;
  }
  properties[storage::kPidTemplate] =
      summaryValue(base, storage::kPidTemplate).value_or(text(u";0"));
  properties[storage::kPidLastAuthor] =
      summaryValue(target, storage::kPidTemplate).value_or(text(u";0"));
  properties[storage::kPidRevisionNumber] =
      text(propertyOf(base, u"ProductCode") + propertyOf(base, u"ProductVersion") + u';' +
           propertyOf(target, u"ProductCode") + propertyOf(target, u"ProductVersion") + u';' +
           propertyOf(target, u"UpgradeCode"));
  storage::SummaryValue flags;
  flags.integer =
      static_cast<std::int32_t>((options.validation << 16) | (options.errorConditions & 0xFFFF));
  properties[storage::kPidCharacterCount] = flags;
  properties[storage::kPidCreatingApplication] = text(u"odlex");
  return summary;
}

}  // namespace

bool generateTransform(const Database& base, const Database& target,
                       const TransformOptions& options, storage::CompoundNode& out, bool& differs,
                       Error& error) {
  out = {};
  Difference difference;
  if (!diffDatabases(base, target, SchemaChanges::kRefuse, difference, error))
    return false;
  differs = !difference.empty();
  if (!differs)
    return true;
  out.isStorage = true;
  out.name = u"Root Entry";
  out.clsid = kTransformClsid;
  Encoder encoder(target.codePage());
  if (!encoder.encode(tableStreams(difference), out, error))
    return false;
  std::vector<std::uint8_t> summaryBytes;
  std::string reason;
  if (!storage::writeSummaryInformation(transformSummary(base, target, options), summaryBytes,
                                        reason)) {
    error = Error{engine::kFunctionFailed, "summary information: " + reason};
    return false;
  }
  storage::CompoundNode summary;
  summary.name = kSummaryStreamName;
  summary.data = std::move(summaryBytes);
  out.children.push_back(std::move(summary));
  return true;
}

bool writeTransformFile(storage::FileSystem& fs, const std::filesystem::path& path,
                        const storage::CompoundNode& transform, Error& error) {
  storage::CompoundFileWriter writer;
  std::string reason;
  if (!writer.plan(transform, reason)) {
    error = Error{engine::kFunctionFailed, path.string() + ": " + reason};
    return false;
  }
  const auto write = [&writer](storage::WritableFile& file, std::string& why) {
    return writer.write(file, why);
  };
  if (!storage::replaceFileAtomically(fs, path, write, reason)) {
    error = Error{engine::kWriteFault, reason};
    return false;
  }
  return true;
}

}  // namespace odlex::transform
