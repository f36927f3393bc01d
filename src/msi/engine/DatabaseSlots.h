#pragma once
// Private parts of Database: where the contents of streams and storages come from.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "msi/engine/Database.h"

namespace odlex::engine {

constexpr std::uint32_t kNoEntry = UINT32_MAX;

// A stream of the _Streams table. Its contents are either still in the opened file (entry)
// or were set in memory (data).
struct Database::StreamSlot {
  std::u16string name;        // decoded name, as the _Streams table shows it
  std::u16string storedName;  // name in the container; empty for a new stream
  std::uint32_t entry = kNoEntry;
  std::optional<std::vector<std::uint8_t>> data;
};

struct Database::StorageSlot {
  std::u16string name;
  std::u16string storedName;
  std::uint32_t entry = kNoEntry;
  std::optional<storage::CompoundNode> replacement;
};

}  // namespace odlex::engine
