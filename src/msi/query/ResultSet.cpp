#include "msi/query/ResultSet.h"

#include <algorithm>
#include <unordered_set>

#include "msi/engine/Table.h"

namespace odlex::query {

std::uint32_t ResultSet::streamCell(std::u16string name) {
  auto [slot, added] =
      streamCells_.try_emplace(name, static_cast<std::uint32_t>(streamNames_.size() + 1));
  if (added)
    streamNames_.push_back(std::move(name));
  return slot->second;
}

void ResultSet::removeDuplicates() {
  std::size_t width = kinds_.size();
  if (width == 0)
    return;
  auto hash = [this](std::size_t index) {
    std::size_t value = 0;
    for (std::uint32_t cell : row(index))
      value = value * 1000003u ^ cell;
    return value;
  };
  auto equal = [this](std::size_t a, std::size_t b) { return std::ranges::equal(row(a), row(b)); };
  std::unordered_set<std::size_t, decltype(hash), decltype(equal)> seen(rowCount(), hash, equal);
  std::size_t kept = 0;
  for (std::size_t index = 0; index < rowCount(); ++index) {
    if (seen.contains(index))
      continue;
    std::copy_n(cells_.begin() + index * width, width, cells_.begin() + kept * width);
    seen.insert(kept);
    ++kept;
  }
  cells_.resize(kept * width);
}

void ResultSet::read(std::size_t index, const engine::StringPool& strings, Record& record) const {
  record.clear();
  std::span<const std::uint32_t> cells = row(index);
  for (std::size_t column = 0; column < kinds_.size(); ++column) {
    std::uint32_t cell = cells[column];
    switch (kinds_[column]) {
      case ValueKind::kInteger:
        record.push_back(static_cast<std::int32_t>(cell) == engine::kNullInteger
                             ? Field::null()
                             : Field::ofInteger(static_cast<std::int32_t>(cell)));
        break;
      case ValueKind::kString:
        record.push_back(Field::ofString(std::u16string(strings.get(cell))));
        break;
      case ValueKind::kBinary:
        record.push_back(cell == 0 ? Field::null() : Field::ofStream(streamNames_[cell - 1]));
        break;
    }
  }
}

}  // namespace odlex::query
