// Loading a table's rows from the engine, keeping them in key order, and writing them back.

#include "odlex/msi/MSITable.h"

#include <algorithm>
#include <atomic>
#include <numeric>
#include <optional>
#include <unordered_set>

#include "msi/engine/Database.h"
#include "msi/engine/Result.h"
#include "msi/rows/CellOrder.h"
#include "msi/rows/EngineCells.h"
#include "msi/schema/Schema.h"
#include "odlex/msi/Guid.h"
#include "odlex/msi/MSIDatabase.h"

namespace {

MSIEntry* asEntry(RWCollectable* item) {
  return static_cast<MSIEntry*>(item);
}

// The last row epoch given to any table (see GetRowEpoch).
std::atomic<std::uint64_t> lastRowEpoch{0};

}  // namespace

MSITable::MSITable(const odlex::schema::TableSchema& schema)
    : schema_(&schema), rowEpoch_(++lastRowEpoch) {}

MSITable::~MSITable() {
  clearRows();
}

TalString MSITable::GetName() const {
  return TalString(std::u16string(schema_->name));
}

TalString MSITable::GenerateGUID() {
  return odlex::GenerateGuid();
}

TalString MSITable::MakeUniqueKey(const TalString& prefix, int width) {
  std::unique_ptr<MSIEntry> probe = NewEntry();
  for (;; ++nextKeyNumber_) {
    std::string number = std::to_string(nextKeyNumber_);
    if (static_cast<int>(number.size()) < width)
      number.insert(0, static_cast<std::size_t>(width) - number.size(), '0');
    probe->values_[0] =
        MSIRecordColumn::String(TalString(prefix.u16() + TalString::FromUtf8(number).u16()));
    if (!rows_.find(probe.get()))
      return probe->values_[0].GetString();
  }
}

void MSITable::ReportError(unsigned code, const TalString& text) {
  lastError_ = text;
  if (database_)
    database_->AddError(TalError(code, text, GetName()));
}

void MSITable::clearRows() {
  for (RWCollectable* item : rows_)
    delete asEntry(item);
  rows_.clear();
  replaced_.clear();
  indexes_.clear();
  ++changes_;
  rowsDestroyed();
}

void MSITable::rowChanged() {
  rowMarked();
  indexes_.clear();
}

void MSITable::rowMarked() {
  dirty_ = true;
  ++changes_;
}

void MSITable::rowsDestroyed() {
  rowEpoch_ = ++lastRowEpoch;
}

void MSITable::LoadRows(std::vector<std::unique_ptr<MSIEntry>> rows) {
  clearRows();
  knownStreams_.clear();
  dirty_ = false;
  nextKeyNumber_ = 1;
  for (std::unique_ptr<MSIEntry>& entry : rows) {
    entry->owner_ = this;
    entry->modified_ = false;
    entry->deleted_ = false;
    if (rows_.insert(entry.get()) == entry.get())
      entry.release();
  }
}

void MSITable::ClearChanges() {
  std::vector<MSIEntry*> deleted;
  for (RWCollectable* item : rows_) {
    asEntry(item)->modified_ = false;
    if (asEntry(item)->IsDeleted())
      deleted.push_back(asEntry(item));
  }
  for (MSIEntry* row : deleted) {
    rows_.remove(row);
    delete row;
  }
  replaced_.clear();
  indexes_.clear();
  ++changes_;
  rowsDestroyed();
  dirty_ = false;
}

bool MSITable::Populate() {
  clearRows();
  knownStreams_.clear();
  dirty_ = false;
  nextKeyNumber_ = 1;
  odlex::engine::Database* db = openDatabase();
  if (!db)
    return false;
  const odlex::engine::Table* table = db->findTable(schema_->name);
  if (!table)
    return true;
  const odlex::rows::ColumnMap map(*schema_, *table);
  // Rows taken in key order join the tree at its end, without a search each.
  std::vector<std::size_t> order = map.keyOrder(db->strings());
  if (order.size() != table->rowCount()) {
    order.resize(table->rowCount());
    std::iota(order.begin(), order.end(), std::size_t{0});
  }
  std::size_t duplicates = 0;
  for (const std::size_t row : order) {
    std::unique_ptr<MSIEntry> entry = NewEntry();
    for (std::size_t column = 0; column < entry->values_.size(); ++column) {
      entry->values_[column] = map.read(db->strings(), row, column);
      if (entry->values_[column].GetKind() == MSIRecordColumn::kindStream)
        knownStreams_.push_back(entry->values_[column].GetStreamName().u16());
    }
    entry->owner_ = this;
    entry->storedRow_ = static_cast<std::uint32_t>(row);
    if (rows_.append(entry.get()) != entry.get()) {
      ++duplicates;
      continue;
    }
    entry.release();
  }
  rememberStored(*table);
  if (duplicates == 0)
    return true;
  ReportError(odlex::engine::kInvalidData,
              TalString::Format(u"table %s: %u row(s) repeat the key of an earlier row and were "
                                u"left out",
                                GetName(), static_cast<unsigned long>(duplicates)));
  return false;
}

bool MSITable::PopulateKeepingEdits() {
  std::vector<std::unique_ptr<MSIEntry>> edited;
  const RWBTree rows = rows_;
  for (RWCollectable* item : rows) {
    if (asEntry(item)->modified_ || asEntry(item)->deleted_) {
      rows_.remove(item);
      edited.emplace_back(asEntry(item));
    }
  }
  std::vector<std::unique_ptr<MSIEntry>> replaced = std::move(replaced_);
  const bool populated = Populate();
  replaced_ = std::move(replaced);
  for (std::unique_ptr<MSIEntry>& row : edited) {
    if (RWCollectable* read = rows_.remove(row.get()))
      delete asEntry(read);
    row->owner_ = this;
    // Its values are not those of the table as now read.
    row->storedRow_ = MSIEntry::kNoRow;
    rows_.insert(row.release());
    rowChanged();
  }
  return populated;
}

MSIBinary MSITable::ReadStream(const TalString& name) const {
  const odlex::engine::Database* db = database_ ? database_->engineDatabase() : nullptr;
  std::vector<std::uint8_t> bytes;
  odlex::engine::Error error;
  if (!db || !db->readStream(name.u16(), bytes, error))
    return MSIBinary();
  return MSIBinary(std::move(bytes));
}

bool MSITable::Persist() {
  odlex::engine::Database* db = openDatabase();
  if (!db)
    return false;
  // Writing rows that are the table's own, unchanged, would only give the table a new version,
  // and the database a reason to write its file again.
  if (matchesStored(db->findTable(schema_->name)))
    return true;
  std::vector<MSIEntry*> live;
  std::vector<MSIEntry*> deleted;
  for (RWCollectable* item : rows_)
    (asEntry(item)->IsDeleted() ? deleted : live).push_back(asEntry(item));
  for (MSIEntry* row : deleted) {
    rows_.remove(row);
    delete row;
  }
  replaced_.clear();
  indexes_.clear();
  rowsDestroyed();

  odlex::engine::Table* table = db->findTable(schema_->name);
  if (!table && !live.empty()) {
    odlex::engine::Error error;
    table = db->createTable(std::u16string(schema_->name), odlex::schema::engineColumns(*schema_),
                            error);
    if (!table) {
      ReportError(error.code, TalString::FromUtf8(error.text));
      return false;
    }
  }
  if (table) {
    // Data that moves to a new stream name is read before any stream is replaced. The name a
    // row's streams take is made only for rows that have one.
    for (MSIEntry* row : live) {
      std::optional<TalString> target;
      for (std::size_t column = 0; column < row->values_.size(); ++column) {
        const MSIRecordColumn& cell = row->values_[column];
        if (cell.GetKind() != MSIRecordColumn::kindStream)
          continue;
        if (!target)
          target = odlex::rows::streamNameOf(*row);
        if (cell.GetStreamName() != *target)
          row->BinaryAt(column);
      }
    }
    const odlex::rows::ColumnMap map(*schema_, *table);
    // Rows unchanged since they were read from (or written to) this table as it still is are
    // copied from their cells; the others are written from their values.
    const bool stored = storedIn(*table);
    const std::size_t width = table->columnCount();
    std::vector<std::uint32_t> cells(live.size() * width);
    for (std::size_t index = 0; index < live.size(); ++index) {
      const MSIEntry* row = live[index];
      const std::span<std::uint32_t> target(cells.data() + index * width, width);
      if (stored && !row->modified_ && row->storedRow_ < table->rowCount())
        map.writeUnchanged(db->strings(), row->storedRow_, target);
      else
        map.write(
            db->strings(), row->values_,
            [row](std::size_t column) { return !row->cellIsNull(column); }, target);
    }
    table->assignRows(std::move(cells));
    writeStreams(live, *table);
    for (std::size_t index = 0; index < live.size(); ++index)
      live[index]->storedRow_ = static_cast<std::uint32_t>(index);
    rememberStored(*table);
  }
  for (MSIEntry* row : live)
    row->modified_ = false;
  dirty_ = false;
  return true;
}

void MSITable::rememberStored(const odlex::engine::Table& table) {
  const odlex::engine::Table::Version version = table.version();
  storedTable_ = version.table;
  storedChanges_ = version.changes;
}

bool MSITable::storedIn(const odlex::engine::Table& table) const {
  return table.version() == odlex::engine::Table::Version{storedTable_, storedChanges_};
}

bool MSITable::matchesStored(const odlex::engine::Table* table) const {
  if (dirty_ || !replaced_.empty())
    return false;
  if (!table)
    return rows_.isEmpty();
  if (!storedIn(*table) || rows_.entries() != table->rowCount())
    return false;
  // Rows written back name a repeated text by its first id; the table's cells may name another.
  if (database_->engineDatabase()->strings().repeatsText())
    return false;
  std::vector<bool> seen(table->rowCount(), false);
  for (RWCollectable* item : rows_) {
    const MSIEntry* row = asEntry(item);
    if (row->modified_ || row->deleted_ || row->storedRow_ >= seen.size() || seen[row->storedRow_])
      return false;
    seen[row->storedRow_] = true;
  }
  return true;
}

bool MSITable::HasUnsavedChanges() const {
  if (dirty_)
    return true;
  const odlex::engine::Database* db = database_ ? database_->engineDatabase() : nullptr;
  const odlex::engine::Table* table = db ? db->findTable(schema_->name) : nullptr;
  return table && !matchesStored(table);
}

void MSITable::writeStreams(const std::vector<MSIEntry*>& live, odlex::engine::Table& table) {
  odlex::engine::Database& db = *database_->engineDatabase();
  std::unordered_set<std::u16string> used;
  for (std::size_t index = 0; index < live.size(); ++index) {
    MSIEntry& row = *live[index];
    for (std::size_t column = 0; column < row.values_.size(); ++column) {
      if (!row.isBinaryColumn(column))
        continue;
      const int target = table.columnIndex(schema_->columns[column].name);
      if (row.cellIsNull(column) || target < 0 || !table.columns()[target].isBinary()) {
        row.values_[column] = MSIRecordColumn();
        continue;
      }
      std::u16string name = table.streamName(db.strings(), index);
      if (const MSIBinary* data = row.binaries_[column].get())
        db.setStream(name,
                     std::vector<std::uint8_t>(data->GetData(), data->GetData() + data->GetSize()));
      row.values_[column] = MSIRecordColumn::Stream(TalString(name));
      used.insert(std::move(name));
    }
  }
  for (const std::u16string& name : knownStreams_) {
    if (!used.contains(name))
      db.removeStream(name);
  }
  knownStreams_.assign(used.begin(), used.end());
}

odlex::engine::Database* MSITable::openDatabase() {
  lastError_ = TalString();
  odlex::engine::Database* db = database_ ? database_->engineDatabase() : nullptr;
  if (!db)
    ReportError(odlex::engine::kInvalidHandle,
                TalString(u"table " + GetName().u16() + u": no open database"));
  return db;
}

bool MSITable::Drop() {
  odlex::engine::Database* db = openDatabase();
  if (!db)
    return false;
  if (db->findTable(schema_->name))
    db->dropTable(schema_->name);
  clearRows();
  knownStreams_.clear();
  dirty_ = false;
  return true;
}

MSIEntry* MSITable::AddEntry(std::unique_ptr<MSIEntry> entry) {
  if (!entry || &entry->GetSchema() != schema_)
    return nullptr;
  MSIEntry* held = asEntry(rows_.find(entry.get()));
  if (held) {
    if (!held->IsDeleted())
      return nullptr;
    rows_.remove(held);
    held->owner_ = nullptr;
    replaced_.emplace_back(held);
  }
  entry->owner_ = this;
  entry->modified_ = true;
  rows_.insert(entry.get());
  rowChanged();
  return entry.release();
}

std::unique_ptr<MSIEntry> MSITable::CreateEntry(const MSIEntry& values) const {
  std::unique_ptr<MSIEntry> entry = NewEntry();
  for (std::size_t column = 0; column < entry->values_.size(); ++column) {
    const int from =
        values.GetColumnIndex(TalString(std::u16string(schema_->columns[column].name)));
    if (from < 0 || values.cellIsNull(from))
      continue;
    if (entry->isBinaryColumn(column) != values.isBinaryColumn(from) ||
        entry->isIntegerColumn(column) != values.isIntegerColumn(from))
      continue;
    if (entry->isBinaryColumn(column))
      entry->binaries_[column] = std::make_shared<MSIBinary>(values.BinaryAt(from));
    else
      entry->values_[column] = values.values_[from];
  }
  return entry;
}

MSIEntry* MSITable::AddCopy(const MSIEntry& values) {
  return AddEntry(CreateEntry(values));
}

MSIEntry* MSITable::FindEntry(const MSIEntry& probe) const {
  MSIEntry* held = asEntry(rows_.find(&probe));
  return held && !held->IsDeleted() ? held : nullptr;
}

MSITable::IndexKey MSITable::IndexKey::of(const MSIRecordColumn& cell) {
  IndexKey key;
  key.kind = cell.GetKind();
  if (cell.GetKind() == MSIRecordColumn::kindString)
    key.text = odlex::rows::CellText::of(cell);
  else if (cell.GetKind() == MSIRecordColumn::kindInteger)
    key.number = cell.GetInteger();
  // Stream cells all index alike: their value is the data, not the stream's name.
  return key;
}

const MSITable::ColumnIndex& MSITable::indexOf(std::size_t column) const {
  auto [index, built] = indexes_.try_emplace(column);
  if (built) {
    index->second.reserve(rows_.entries());
    for (RWCollectable* item : rows_)
      index->second.emplace_back(IndexKey::of(asEntry(item)->values_[column]), asEntry(item));
    // Stable: rows of one value stay in key order.
    std::stable_sort(index->second.begin(), index->second.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
  }
  return index->second;
}

std::pair<MSITable::ColumnIndex::const_iterator, MSITable::ColumnIndex::const_iterator>
MSITable::rowsWith(const ColumnIndex& index, const MSIRecordColumn& value) {
  struct ByKey {
    bool operator()(const std::pair<IndexKey, MSIEntry*>& row, const IndexKey& key) const {
      return row.first < key;
    }
    bool operator()(const IndexKey& key, const std::pair<IndexKey, MSIEntry*>& row) const {
      return key < row.first;
    }
  };
  return std::equal_range(index.begin(), index.end(), IndexKey::of(value), ByKey{});
}

MSIEntry* MSITable::FindEntryBy(std::size_t column, const MSIRecordColumn& value) const {
  auto [first, last] = rowsWith(indexOf(column), value);
  for (auto at = first; at != last; ++at)
    if (!at->second->IsDeleted())
      return at->second;
  return nullptr;
}

std::vector<MSIEntry*> MSITable::FindEntriesBy(std::size_t column,
                                               const MSIRecordColumn& value) const {
  std::vector<MSIEntry*> found;
  auto [first, last] = rowsWith(indexOf(column), value);
  for (auto at = first; at != last; ++at)
    if (!at->second->IsDeleted())
      found.push_back(at->second);
  return found;
}

bool MSITable::rekey(MSIEntry& entry, std::size_t column, const MSIRecordColumn& value) {
  // The indexes read the value about to be replaced.
  indexes_.clear();
  rows_.remove(&entry);
  MSIRecordColumn old = entry.values_[column];
  entry.values_[column] = value;
  MSIEntry* held = asEntry(rows_.find(&entry));
  if (held && !held->IsDeleted()) {
    entry.values_[column] = std::move(old);
    rows_.insert(&entry);
    return false;
  }
  if (held) {
    rows_.remove(held);
    held->owner_ = nullptr;
    replaced_.emplace_back(held);
  }
  rows_.insert(&entry);
  return true;
}
