#include "msi/engine/Table.h"

#include <algorithm>
#include <atomic>
#include <numeric>

#include "msi/engine/StringPool.h"

namespace odlex::engine {

std::uint64_t Table::Identity::next() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

Table::Table(std::u16string name, std::vector<Column> columns)
    : name_(std::move(name)), columns_(std::move(columns)) {
  while (keyCount_ < columns_.size() && columns_[keyCount_].key())
    ++keyCount_;
}

int Table::columnIndex(std::u16string_view name) const {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].name == name)
      return static_cast<int>(i);
  }
  return -1;
}

bool Table::temporary() const {
  return !columns_.empty() &&
         std::ranges::all_of(columns_, [](const Column& column) { return column.temporary(); });
}

void Table::addColumn(Column column) {
  ++changes_;
  const std::size_t rows = rowCount();
  const std::size_t width = columns_.size();
  const std::uint32_t null = column.isInteger() ? static_cast<std::uint32_t>(kNullInteger) : 0;
  std::vector<std::uint32_t> cells;
  cells.reserve(rows * (width + 1));
  for (std::size_t r = 0; r < rows; ++r) {
    auto old = row(r);
    cells.insert(cells.end(), old.begin(), old.end());
    cells.push_back(null);
  }
  cells_ = std::move(cells);
  columns_.push_back(std::move(column));
}

void Table::removeTemporaryColumns() {
  ++changes_;
  std::vector<bool> keep;
  for (const Column& column : columns_)
    keep.push_back(!column.temporary());
  const std::size_t rows = rowCount();
  std::vector<std::uint32_t> cells;
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      if (keep[c])
        cells.push_back(cell(r, c));
    }
  }
  std::erase_if(columns_, [](const Column& column) { return column.temporary(); });
  cells_ = std::move(cells);
  keyCount_ = 0;
  while (keyCount_ < columns_.size() && columns_[keyCount_].key())
    ++keyCount_;
}

bool Table::release() {
  if (holdCount_ == 0)
    return false;
  --holdCount_;
  return true;
}

bool Table::isNull(std::size_t row, std::size_t column) const {
  std::uint32_t value = cell(row, column);
  return columns_[column].isInteger() ? static_cast<std::int32_t>(value) == kNullInteger
                                      : value == 0;
}

std::u16string_view Table::text(const StringPool& pool, std::size_t row, std::size_t column) const {
  return pool.get(cell(row, column));
}

std::size_t Table::addRow() {
  ++changes_;
  std::size_t index = rowCount();
  for (const Column& column : columns_) {
    cells_.push_back(column.isInteger() ? static_cast<std::uint32_t>(kNullInteger) : 0);
  }
  if (!temporaryRows_.empty())
    temporaryRows_.push_back(0);
  return index;
}

void Table::appendRow(std::span<const std::uint32_t> cells) {
  ++changes_;
  cells_.insert(cells_.end(), cells.begin(), cells.end());
  if (!temporaryRows_.empty())
    temporaryRows_.push_back(0);
}

void Table::removeRow(std::size_t index) {
  ++changes_;
  auto first = cells_.begin() + static_cast<std::ptrdiff_t>(index * columns_.size());
  cells_.erase(first, first + static_cast<std::ptrdiff_t>(columns_.size()));
  if (!temporaryRows_.empty())
    temporaryRows_.erase(temporaryRows_.begin() + static_cast<std::ptrdiff_t>(index));
}

void Table::removeRows(std::span<const std::uint32_t> indexes) {
  ++changes_;
  const std::size_t width = columns_.size();
  std::size_t kept = 0;
  auto doomed = indexes.begin();
  for (std::size_t r = 0, rows = rowCount(); r < rows; ++r) {
    if (doomed != indexes.end() && *doomed == r) {
      ++doomed;
      continue;
    }
    std::copy_n(cells_.begin() + static_cast<std::ptrdiff_t>(r * width), width,
                cells_.begin() + static_cast<std::ptrdiff_t>(kept * width));
    if (!temporaryRows_.empty())
      temporaryRows_[kept] = temporaryRows_[r];
    ++kept;
  }
  resizeRows(kept);
}

void Table::resizeRows(std::size_t rows) {
  ++changes_;
  cells_.resize(rows * columns_.size());
  if (!temporaryRows_.empty())
    temporaryRows_.resize(rows);
}

void Table::markTemporary(std::size_t row) {
  ++changes_;
  if (temporaryRows_.empty())
    temporaryRows_.resize(rowCount());
  temporaryRows_[row] = 1;
}

std::ptrdiff_t Table::findRow(std::span<const std::uint32_t> key) const {
  for (std::size_t r = 0, rows = rowCount(); r < rows; ++r) {
    auto cells = row(r);
    if (std::equal(key.begin(), key.end(), cells.begin()))
      return static_cast<std::ptrdiff_t>(r);
  }
  return -1;
}

std::vector<std::size_t> Table::keyOrder() const {
  std::vector<std::size_t> order(rowCount());
  std::iota(order.begin(), order.end(), std::size_t{0});
  auto keyLess = [this](std::size_t a, std::size_t b) {
    for (std::size_t c = 0; c < keyCount_; ++c) {
      std::uint32_t x = cell(a, c), y = cell(b, c);
      if (columns_[c].isInteger()) {
        // Integers are ordered by value with null (the smallest int32) first.
        auto sx = static_cast<std::int32_t>(x), sy = static_cast<std::int32_t>(y);
        if (sx != sy)
          return sx < sy;
      } else if (x != y) {
        return x < y;
      }
    }
    return false;
  };
  std::stable_sort(order.begin(), order.end(), keyLess);
  return order;
}

std::vector<std::size_t> Table::savedOrder() const {
  std::vector<std::size_t> order = keyOrder();
  std::erase_if(order, [this](std::size_t r) { return temporaryRow(r); });
  return order;
}

std::u16string Table::streamName(const StringPool& pool, std::size_t row) const {
  std::u16string name = name_;
  for (std::size_t c = 0; c < keyCount_; ++c) {
    name += u'.';
    if (columns_[c].isInteger()) {
      std::string digits = std::to_string(integer(row, c));
      name.append(digits.begin(), digits.end());
    } else {
      name += text(pool, row, c);
    }
  }
  return name;
}

}  // namespace odlex::engine
