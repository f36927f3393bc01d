#pragma once
// What a full read of a package saw, so the two readers can be checked against each other
// (and so the compiler cannot drop the reads).

#include <cstddef>
#include <cstdint>

namespace odlex::bench {

struct ReadTotals {
  std::size_t tables = 0;
  std::size_t rows = 0;
  std::size_t nonNullCells = 0;
  // String lengths and integer values, summed; the same for both readers on ASCII text.
  std::uint64_t checksum = 0;

  bool operator==(const ReadTotals&) const = default;
};

}  // namespace odlex::bench
