// Collecting the rows a merge adds, and writing them.

#include "package/merge/MergeTarget.h"

#include <algorithm>
#include <set>

#include "msi/engine/Text.h"

namespace odlex::merge {

namespace {

using Kind = Value::Kind;

// How much of two binary cells is compared at a time.
constexpr std::uint64_t kComparePiece = 1 << 20;

const char16_t* kindName(const engine::Column& column) {
  return column.isInteger() ? u"integer" : column.isBinary() ? u"binary" : u"text";
}

// Whether `value` can go into `column` as it is.
bool fits(const engine::Column& column, const Value& value) {
  switch (value.kind) {
    case Kind::kNull:
      return true;
    case Kind::kInteger:
      return column.isInteger() && column.holdsInteger(value.integer);
    case Kind::kText:
      return column.isString();
    case Kind::kStream:
      return column.isBinary();
  }
  return false;
}

// What the engine would refuse in a new table's columns: no key column, a key column after a
// non-key one, a name used twice or empty.
bool validColumns(const std::vector<engine::Column>& columns) {
  if (columns.empty() || !columns.front().key())
    return false;
  std::set<std::u16string> names;
  bool keys = true;
  for (const engine::Column& column : columns) {
    if (column.key() && !keys)
      return false;
    keys = column.key();
    if (column.name.empty() || !names.insert(column.name).second)
      return false;
  }
  return true;
}

}  // namespace

MergeTarget::MergeTarget(engine::Database& package, const engine::Database& module, MergeLog& log)
    : package_(package), module_(module), log_(log) {}

const TableRows* MergeTarget::packageTable(std::u16string_view table) {
  auto found = packageTables_.find(table);
  if (found == packageTables_.end()) {
    const engine::Table* held = package_.findTable(table);
    auto rows = held ? std::make_unique<TableRows>(readTable(package_, *held)) : nullptr;
    found = packageTables_.emplace(std::u16string(table), std::move(rows)).first;
  }
  return found->second.get();
}

std::vector<const Row*> MergeTarget::currentRows(std::u16string_view table) {
  std::vector<const Row*> rows;
  if (const TableRows* held = packageTable(table)) {
    for (const Row& row : held->rows)
      rows.push_back(&row);
  }
  if (auto plan = planned_.find(table); plan != planned_.end()) {
    for (const Row& row : plan->second.rows.rows)
      rows.push_back(&row);
  }
  return rows;
}

MergeTarget::Planned& MergeTarget::planned(const std::u16string& table,
                                           const std::vector<engine::Column>& columns) {
  auto found = planned_.find(table);
  if (found != planned_.end())
    return found->second;
  Planned plan;
  const TableRows* held = packageTable(table);
  plan.create = held == nullptr;
  plan.rows.name = table;
  plan.rows.columns = held ? held->columns : columns;
  if (plan.create && !validColumns(columns))
    log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
              u"table " + table + u" of the module has unusable columns");
  order_.push_back(table);
  return planned_.emplace(table, std::move(plan)).first->second;
}

Row MergeTarget::conform(const Planned& plan, const std::vector<engine::Column>& columns,
                         const Row& row, const TableRows& moduleLayout) {
  const TableRows& target = plan.rows;
  Row result(target.columns.size());
  for (std::size_t c = 0; c < columns.size() && c < row.size(); ++c) {
    const int index = target.columnIndex(columns[c].name);
    const std::u16string where =
        u"column " + columns[c].name + u" of " + target.name + u" row " + moduleLayout.keyText(row);
    if (index < 0) {
      if (!row[c].isNull())
        log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
                  where + u": the package's table has no such column");
      continue;
    }
    const engine::Column& column = target.columns[static_cast<std::size_t>(index)];
    if (!fits(column, row[c]))
      log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
                where + u": the value " + row[c].display() + u" does not fit the package's " +
                    kindName(column) + u" column");
    result[static_cast<std::size_t>(index)] = row[c];
  }
  for (std::size_t c = 0; c < target.keyCount(); ++c) {
    if (result[c].isNull())
      log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
                u"a row of " + target.name + u" has no value for the key column " +
                    target.columns[c].name);
  }
  return result;
}

std::shared_ptr<const storage::StreamSource> MergeTarget::stream(const engine::Database& db,
                                                                 const std::u16string& name,
                                                                 const char16_t* which) const {
  engine::Error error;
  std::shared_ptr<const storage::StreamSource> source = db.streamSource(name, error);
  if (!source)
    log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
              u"the stream " + name + u" of the " + which + u" cannot be read");
  return source;
}

bool MergeTarget::sameBytes(const storage::StreamSource& a, const storage::StreamSource& b,
                            const std::u16string& name) const {
  if (a.size() != b.size())
    return false;
  std::string reason;
  std::unique_ptr<storage::StreamReader> readA = a.open(reason);
  std::unique_ptr<storage::StreamReader> readB = readA ? b.open(reason) : nullptr;
  std::vector<std::uint8_t> pieceA;
  std::vector<std::uint8_t> pieceB;
  for (std::uint64_t left = a.size(); readB && left > 0; left -= pieceA.size()) {
    pieceA.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left, kComparePiece)));
    pieceB.resize(pieceA.size());
    if (!readA->read(pieceA.data(), pieceA.size(), reason) ||
        !readB->read(pieceB.data(), pieceB.size(), reason))
      readB.reset();
    else if (pieceA != pieceB)
      return false;
  }
  if (!readB)
    log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
              u"the stream " + name + u" cannot be read: " + engine::fromUtf8(reason));
  return true;
}

bool MergeTarget::sameRow(const Row& existing, bool existingCollected, const Row& incoming) const {
  for (std::size_t c = 0; c < existing.size(); ++c) {
    const Value& a = existing[c];
    const Value& b = incoming[c];
    if (a.kind == Kind::kStream && b.kind == Kind::kStream) {
      const auto held = stream(existingCollected ? module_ : package_, a.text,
                               existingCollected ? u"module" : u"package");
      if (!sameBytes(*held, *stream(module_, b.text, u"module"), b.text))
        return false;
    } else if (!(a == b)) {
      return false;
    }
  }
  return true;
}

void MergeTarget::add(const std::u16string& table, const std::vector<engine::Column>& columns,
                      Row row, Conflicts conflicts) {
  Planned& plan = planned(table, columns);
  const TableRows moduleLayout{table, columns, {}};
  Row fitted = conform(plan, columns, row, moduleLayout);
  const std::u16string key = plan.rows.keyOf(fitted);
  if (!plan.create && !plan.packageIndexed) {
    for (const Row& held : packageTable(table)->rows)
      plan.package.emplace(plan.rows.keyOf(held), held);
    plan.packageIndexed = true;
  }
  const Row* existing = nullptr;
  bool collected = false;
  if (auto found = plan.package.find(key); found != plan.package.end()) {
    existing = &found->second;
  } else if (auto earlier = plan.byKey.find(key); earlier != plan.byKey.end()) {
    existing = &earlier->second;
    collected = true;
  }
  if (existing) {
    if (conflicts == Conflicts::kReport && !sameRow(*existing, collected, fitted))
      log_.record(ODLEXMergeError::eTableMerge,
                  u"row " + plan.rows.keyText(fitted) + u" of " + table +
                      u" differs from the package's row with that key; the package's row stays");
    return;
  }
  plan.byKey.emplace(key, fitted);
  plan.rows.rows.push_back(std::move(fitted));
}

bool MergeTarget::hasStream(const std::u16string& name) const {
  for (const auto& [added, source] : newStreams_) {
    if (added == name)
      return true;
  }
  return package_.hasStream(name);
}

std::vector<std::pair<std::u16string, std::size_t>> MergeTarget::counts() const {
  std::vector<std::pair<std::u16string, std::size_t>> result;
  for (const std::u16string& table : order_) {
    const std::size_t rows = planned_.find(table)->second.rows.rows.size();
    if (rows > 0)
      result.emplace_back(table, rows);
  }
  return result;
}

void MergeTarget::apply() {
  // First every stream the rows need, found before anything is written.
  std::vector<std::pair<std::u16string, std::shared_ptr<const storage::StreamSource>>> streams;
  for (const std::u16string& name : order_) {
    const TableRows& rows = planned_.find(name)->second.rows;
    for (const Row& row : rows.rows) {
      for (const Value& value : row) {
        if (value.kind == Kind::kStream)
          streams.emplace_back(rows.streamName(row), stream(module_, value.text, u"module"));
      }
    }
  }
  // Then the tables: the only step the engine can refuse, undone when it does.
  std::vector<std::u16string> created;
  for (const std::u16string& name : order_) {
    Planned& plan = planned_.find(name)->second;
    if (!plan.create || plan.rows.rows.empty())
      continue;
    engine::Error error;
    if (!package_.createTable(name, plan.rows.columns, error)) {
      for (const std::u16string& made : created)
        package_.dropTable(made);
      log_.stop(ODLEXDatabaseError::eMergeStep54, ODLEXMergeError::eTableMerge,
                u"table " + name + u" cannot be made in the package");
    }
    created.push_back(name);
  }
  for (const std::u16string& name : order_) {
    const TableRows& rows = planned_.find(name)->second.rows;
    engine::Table* table = package_.findTable(name);
    if (!table)
      continue;  // a table made for no rows
    std::vector<std::uint32_t> cells(rows.columns.size());
    for (const Row& row : rows.rows) {
      for (std::size_t c = 0; c < row.size(); ++c) {
        const Value& value = row[c];
        switch (value.kind) {
          case Kind::kNull:
            cells[c] =
                rows.columns[c].isInteger() ? static_cast<std::uint32_t>(engine::kNullInteger) : 0;
            break;
          case Kind::kInteger:
            cells[c] = static_cast<std::uint32_t>(value.integer);
            break;
          case Kind::kText:
            cells[c] = package_.strings().intern(value.text);
            break;
          case Kind::kStream:
            cells[c] = 1;
            break;
        }
      }
      table->appendRow(cells);
    }
  }
  for (auto& [name, source] : streams)
    package_.setStreamSource(name, std::move(source));
  for (auto& [name, source] : newStreams_)
    package_.setStreamSource(name, std::move(source));
}

}  // namespace odlex::merge
