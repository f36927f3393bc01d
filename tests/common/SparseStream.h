#pragma once
// Large streams made of zeros with one marker byte at the end: cheap to write (a sparse file
// holds them in no room) and easy to check after a save, a piece at a time.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "storage/CompoundFile.h"

namespace odlex::test {

inline constexpr std::uint8_t kSparseMarker = 0x5A;

// Writes `size` bytes to a new file `path`: zeros (a hole, no room on disk), then the marker.
inline void writeSparseFile(const std::filesystem::path& path, std::uint64_t size) {
  { std::ofstream file(path, std::ios::binary); }
  std::filesystem::resize_file(path, size - 1);
  std::ofstream(path, std::ios::binary | std::ios::app).put(static_cast<char>(kSparseMarker));
}

// Checks that `source` holds `size` bytes, all zero except the last, which is the marker.
inline void expectSparseStream(const storage::StreamSource& source, std::uint64_t size) {
  ASSERT_EQ(source.size(), size);
  std::string reason;
  auto reader = source.open(reason);
  ASSERT_TRUE(reader) << reason;
  std::vector<std::uint8_t> piece(1 << 20);
  std::uint64_t nonZero = 0;
  for (std::uint64_t left = size; left > 0; left -= piece.size()) {
    ASSERT_TRUE(reader->read(piece.data(), piece.size(), reason)) << reason;
    nonZero += piece.size() - std::count(piece.begin(), piece.end(), 0);
  }
  EXPECT_EQ(nonZero, 1u);
  EXPECT_EQ(piece.back(), kSparseMarker);
}

}  // namespace odlex::test
