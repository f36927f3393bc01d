// Loads a whole subtree of a compound file into memory.

#include "storage/CompoundFile.h"

namespace odlex::storage {

bool readCompoundTree(const CompoundFileReader& reader, std::uint32_t entry, CompoundNode& out,
                      std::string& error, StreamContents contents) {
  const std::vector<CompoundEntry>& entries = reader.entries();
  if (entry >= entries.size()) {
    error = "entry " + std::to_string(entry) + " does not exist";
    return false;
  }
  // A work list instead of recursion: storages may be nested as deeply as the file likes. Each
  // node's children are sized before their addresses are taken, so the pointers stay valid.
  std::vector<std::pair<std::uint32_t, CompoundNode*>> pending{{entry, &out}};
  while (!pending.empty()) {
    const auto [index, node] = pending.back();
    pending.pop_back();
    const CompoundEntry& source = entries[index];
    node->name = source.name;
    node->isStorage = source.isStorage;
    node->clsid = source.clsid;
    node->stateBits = source.stateBits;
    node->created = source.created;
    node->modified = source.modified;
    if (!source.isStorage) {
      if (contents == StreamContents::kSource)
        node->source = reader.streamSource(index);
      else if (!reader.readStream(index, node->data, error))
        return false;
      continue;
    }
    node->children.resize(source.children.size());
    for (std::size_t i = 0; i < source.children.size(); ++i) {
      pending.emplace_back(source.children[i], &node->children[i]);
    }
  }
  return true;
}

}  // namespace odlex::storage
