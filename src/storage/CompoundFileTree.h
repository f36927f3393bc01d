#pragma once
// Arranges the children of one storage as the red-black tree the compound file directory
// stores, so readers can binary-search them.

#include <cstdint>
#include <vector>

namespace odlex::storage::cfb {

struct SiblingNode {
  std::uint32_t left;   // position of the left sibling, or kNoStream
  std::uint32_t right;  // position of the right sibling, or kNoStream
  std::uint8_t color;   // kRed or kBlack
};

// Lays `count` siblings, already sorted by name, out as a balanced tree: position i holds the
// i-th name. Every path from the root to a missing child passes the same number of black nodes
// and no red node has a red child. Returns the root's position (kNoStream when count is 0).
std::uint32_t arrangeSiblings(std::uint32_t count, std::vector<SiblingNode>& nodes);

}  // namespace odlex::storage::cfb
