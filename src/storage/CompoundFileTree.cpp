#include "storage/CompoundFileTree.h"

#include <algorithm>

#include "storage/CompoundFileFormat.h"

namespace odlex::storage::cfb {
namespace {

// Splits [first, last) at its middle; the halves differ in size by at most one, so every
// missing child sits on one of two neighbouring levels. Depth is logarithmic in the count.
std::uint32_t placeRange(std::uint32_t first, std::uint32_t last, std::uint32_t depth,
                         std::vector<SiblingNode>& nodes, std::vector<std::uint32_t>& depths) {
  if (first >= last)
    return kNoStream;
  const std::uint32_t middle = first + (last - first) / 2;
  depths[middle] = depth;
  nodes[middle].left = placeRange(first, middle, depth + 1, nodes, depths);
  nodes[middle].right = placeRange(middle + 1, last, depth + 1, nodes, depths);
  return middle;
}

}  // namespace

std::uint32_t arrangeSiblings(std::uint32_t count, std::vector<SiblingNode>& nodes) {
  nodes.assign(count, SiblingNode{kNoStream, kNoStream, kBlack});
  std::vector<std::uint32_t> depths(count, 0);
  const std::uint32_t root = placeRange(0, count, 0, nodes, depths);
  // Nodes on the deepest level (never the root) are red: paths that end below them then pass
  // as many black nodes as the paths that end one level higher.
  const std::uint32_t deepest = count == 0 ? 0 : *std::max_element(depths.begin(), depths.end());
  for (std::uint32_t i = 0; i < count; ++i) {
    if (deepest > 0 && depths[i] == deepest)
      nodes[i].color = kRed;
  }
  return root;
}

}  // namespace odlex::storage::cfb
