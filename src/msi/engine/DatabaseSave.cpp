// Saving a database: the string pool, the catalog tables and every table are encoded in memory;
// streams and storages still in the opened file are copied from it in bounded pieces as the new
// file is written beside the target, which it then replaces in one rename, so a failure at any
// step leaves the old file as it was.

#include <algorithm>

#include "msi/engine/Catalog.h"
#include "msi/engine/Database.h"
#include "msi/engine/StringPoolCodec.h"
#include "msi/engine/TableCodec.h"
#include "msi/engine/Text.h"
#include "storage/StreamName.h"

namespace odlex::engine {

namespace {
constexpr char16_t kSummaryStreamName[] = u"\u0005SummaryInformation";

void count(std::vector<std::uint32_t>& references, std::uint32_t id) {
  if (id != 0 && id < references.size())
    ++references[id];
}

storage::CompoundNode streamNode(std::u16string name, std::vector<std::uint8_t> data) {
  storage::CompoundNode node;
  node.name = std::move(name);
  node.data = std::move(data);
  return node;
}

// The container name of a stream or storage: its original name when it came from the file, else
// the packed form (names starting with U+0005 are system streams and are never packed).
bool containerName(const std::u16string& storedName, const std::u16string& name,
                   std::u16string& out, Error& error) {
  if (!storedName.empty()) {
    out = storedName;
    return true;
  }
  if (name.starts_with(u'\u0005')) {
    out = name;
    return true;
  }
  auto encoded = storage::encodeStreamName(name, false);
  if (!encoded) {
    error = Error{kFunctionFailed, "the name " + toUtf8(name) + " is too long to store"};
    return false;
  }
  out = *encoded;
  return true;
}
}  // namespace

bool Database::buildTree(storage::CompoundNode& root, Error& error) {
  // Names in the catalog tables are pool strings too.
  std::vector<std::pair<std::uint32_t, std::vector<std::uint32_t>>> catalogIds;
  for (const auto& table : tables_) {
    std::vector<std::uint32_t> columnIds;
    for (const Column& column : table->columns())
      columnIds.push_back(strings_.intern(column.name));
    catalogIds.emplace_back(strings_.intern(table->name()), std::move(columnIds));
  }

  std::vector<std::uint32_t> references(strings_.size(), 0);
  Table tablesCatalog(u"_Tables", tablesCatalogColumns());
  Table columnsCatalog(u"_Columns", columnsCatalogColumns());
  for (std::size_t t = 0; t < tables_.size(); ++t) {
    const Table& table = *tables_[t];
    if (table.temporary())
      continue;
    const auto& [tableId, columnIds] = catalogIds[t];
    tablesCatalog.appendRow(std::vector<std::uint32_t>{tableId});
    count(references, tableId);
    std::int32_t number = 0;
    for (std::size_t c = 0; c < table.columnCount(); ++c) {
      const Column& column = table.columns()[c];
      if (column.temporary())
        continue;
      columnsCatalog.appendRow(std::vector<std::uint32_t>{
          tableId, static_cast<std::uint32_t>(++number), columnIds[c],
          static_cast<std::uint32_t>(static_cast<std::int16_t>(column.type))});
      count(references, tableId);
      count(references, columnIds[c]);
      if (!column.isString())
        continue;
      for (std::size_t r = 0; r < table.rowCount(); ++r) {
        if (!table.temporaryRow(r))
          count(references, table.cell(r, c));
      }
    }
  }

  EncodedPool pool;
  std::string reason;
  if (!writeStringPool(strings_, references, codePage_, pool, reason)) {
    error = Error{kFunctionFailed, reason};
    return false;
  }

  root = {};
  root.isStorage = true;
  root.name = u"Root Entry";
  root.clsid = rootClsid_;
  if (reader_) {
    root.created = reader_->entries()[0].created;
    root.modified = reader_->entries()[0].modified;
  }
  auto addTableStream = [&](const Table& table, std::vector<std::uint8_t> bytes) {
    root.children.push_back(
        streamNode(*storage::encodeStreamName(table.name(), true), std::move(bytes)));
  };
  root.children.push_back(
      streamNode(*storage::encodeStreamName(u"_StringPool", true), std::move(pool.poolStream)));
  root.children.push_back(
      streamNode(*storage::encodeStreamName(u"_StringData", true), std::move(pool.dataStream)));
  std::vector<std::uint8_t> bytes;
  for (const Table* table : {&tablesCatalog, &columnsCatalog}) {
    std::vector<std::size_t> order = table->keyOrder();
    encodeTable(*table, order, pool.referenceSize, pool.remap, bytes);
    addTableStream(*table, std::move(bytes));
  }
  for (const auto& table : tables_) {
    if (storedRowSize(table->columns(), pool.referenceSize) == 0)
      continue;
    std::vector<std::size_t> order = table->savedOrder();
    encodeTable(*table, order, pool.referenceSize, pool.remap, bytes);
    addTableStream(*table, std::move(bytes));
  }

  for (const auto& [name, slot] : streams_) {
    storage::CompoundNode node;
    if (slot.data)
      node.data = *slot.data;
    else
      node.source = slot.source ? slot.source : reader_->streamSource(slot.entry);
    if (!containerName(slot.storedName, slot.name, node.name, error))
      return false;
    root.children.push_back(std::move(node));
  }
  // Streams kept as they were read go back under the names they were read with.
  for (const StreamSlot& slot : preserved_) {
    storage::CompoundNode node;
    node.name = slot.storedName;
    node.source = reader_->streamSource(slot.entry);
    root.children.push_back(std::move(node));
  }
  for (const StorageSlot& slot : storages_) {
    storage::CompoundNode node;
    if (slot.replacement) {
      node = *slot.replacement;
    } else if (!readStoredNode(slot, node, error, storage::StreamContents::kSource)) {
      return false;
    }
    if (!containerName(slot.storedName, slot.name, node.name, error))
      return false;
    node.isStorage = true;
    root.children.push_back(std::move(node));
  }

  if (summary_) {
    std::vector<std::uint8_t> summaryBytes = summaryStream_;
    if (summaryBytes.empty() &&
        !storage::writeSummaryInformation(*summary_, summaryBytes, reason)) {
      error = Error{kFunctionFailed, "summary information: " + reason};
      return false;
    }
    root.children.push_back(streamNode(kSummaryStreamName, std::move(summaryBytes)));
  }

  return true;
}

std::uint32_t Database::commit(Error& error) {
  if (readOnly()) {
    error = Error{kAccessDenied, outputPath_.string() + ": the database was opened read-only"};
    return error.code;
  }
  if (!unchangedOnDisk(outputPath_, outputStamp_, error))
    return error.code;
  if (committedUnchanged())
    return kSuccess;
  Contents writing = contents();
  std::optional<storage::FileStamp> written;
  if (const std::uint32_t code = write(outputPath_, error, &written); code != kSuccess)
    return code;
  outputStamp_ = written;
  committed_ = std::move(writing);
  // The streams still to be read stay in the file opened, which the new one replaced by name.
  if (outputPath_ == sourcePath_)
    sourceStamp_ = outputStamp_;
  return kSuccess;
}

Database::Contents Database::contents() const {
  Contents now;
  now.tables.reserve(tables_.size());
  for (const auto& table : tables_)
    now.tables.push_back(table->version());
  now.changes = changes_;
  return now;
}

bool Database::committedUnchanged() const {
  return committed_ && *committed_ == contents();
}

bool Database::unchangedOnDisk(const std::filesystem::path& path,
                               const std::optional<storage::FileStamp>& seen, Error& error) const {
  if (fs_.stampOf(path) == seen)
    return true;
  error = Error{kFunctionFailed, path.string() +
                                     ": changed on disk by another program since it was opened; "
                                     "nothing was written (open it again to see the changes)"};
  return false;
}

std::uint32_t Database::saveAs(const std::filesystem::path& target, Error& error) {
  return write(target, error, nullptr);
}

std::uint32_t Database::write(const std::filesystem::path& target, Error& error,
                              std::optional<storage::FileStamp>* written) {
  if (reader_ && !unchangedOnDisk(sourcePath_, sourceStamp_, error))
    return error.code;
  storage::CompoundNode root;
  std::string reason;
  storage::CompoundFileWriter writer;
  if (!buildTree(root, error)) {
    error.text = target.string() + ": " + error.text;
    return error.code;
  }
  if (!writer.plan(root, reason)) {
    error = Error{kFunctionFailed, target.string() + ": " + reason};
    return error.code;
  }
  const auto writeFile = [&writer](storage::WritableFile& file, std::string& why) {
    return writer.write(file, why);
  };
  if (!storage::replaceFileAtomically(fs_, target, writeFile, reason, written)) {
    error = Error{kWriteFault, reason};
    return error.code;
  }
  return kSuccess;
}

}  // namespace odlex::engine
