#pragma once
// The string pool on disk: "_StringPool" holds a header (the code page, and a flag for
// three-byte string references once there are more than 65,535 ids) and one
// (length, reference count) pair per id; "_StringData" holds the strings back to back in
// the code page. A string longer than 65,535 bytes takes two pairs: (0, high length) and
// (low length, reference count); the second id stays unused.

#include <cstdint>
#include <string>
#include <vector>

#include "msi/engine/StringPool.h"

namespace odlex::engine {

struct LoadedPool {
  std::uint32_t codePage = 0;
  unsigned referenceSize = 2;  // bytes per string reference in table streams: 2 or 3
};

bool readStringPool(const std::vector<std::uint8_t>& poolStream,
                    const std::vector<std::uint8_t>& dataStream, StringPool& pool,
                    LoadedPool& loaded, std::string& error);

struct EncodedPool {
  std::vector<std::uint8_t> poolStream;
  std::vector<std::uint8_t> dataStream;
  unsigned referenceSize = 2;
  // Old id -> id on disk (0 for strings that are not referenced and so not written). The
  // mapping keeps the order of ids, so rows sorted by old ids stay sorted.
  std::vector<std::uint32_t> remap;
};

// Writes every string with a non-zero count in `references` (indexed by id).
bool writeStringPool(const StringPool& pool, const std::vector<std::uint32_t>& references,
                     std::uint32_t codePage, EncodedPool& out, std::string& error);

}  // namespace odlex::engine
