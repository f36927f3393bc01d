#pragma once
// The rows one execute found, copied out of the tables at that moment, so that later edits
// of the tables do not change a result being fetched. Cells stay raw (string ids, integers)
// until a row is read; a binary cell holds 1 + the index of its stream's name.

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "msi/engine/StringPool.h"
#include "msi/query/Field.h"
#include "msi/query/Predicate.h"

namespace odlex::query {

class ResultSet {
 public:
  ResultSet() = default;
  explicit ResultSet(std::vector<ValueKind> kinds) : kinds_(std::move(kinds)) {}

  std::size_t rowCount() const { return kinds_.empty() ? 0 : cells_.size() / kinds_.size(); }

  // Appends one row: a cell per column, in the order of the kinds given at construction.
  void appendCell(std::uint32_t cell) { cells_.push_back(cell); }
  // The cell that stands for the stream `name`; the same name gives the same cell.
  std::uint32_t streamCell(std::u16string name);

  // Keeps only the first of identical rows, in order.
  void removeDuplicates();

  void read(std::size_t row, const engine::StringPool& strings, Record& record) const;

 private:
  std::span<const std::uint32_t> row(std::size_t index) const {
    return {cells_.data() + index * kinds_.size(), kinds_.size()};
  }

  std::vector<ValueKind> kinds_;
  std::vector<std::uint32_t> cells_;
  std::vector<std::u16string> streamNames_;
  std::unordered_map<std::u16string, std::uint32_t> streamCells_;
};

}  // namespace odlex::query
