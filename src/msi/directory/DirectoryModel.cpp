#include "msi/directory/DirectoryModel.h"

namespace odlex::directory {

std::vector<DirectoryRow> DirectoryModel::children(std::u16string_view key) const {
  std::vector<DirectoryRow> out;
  forEach([&](const DirectoryRow& row) {
    if (!row.isRoot() && row.parent == key) {
      out.push_back(row);
    }
  });
  return out;
}

std::optional<DirectoryRow> MemoryDirectoryModel::find(std::u16string_view key) const {
  const auto it = rows_.find(key);
  if (it == rows_.end()) {
    return std::nullopt;
  }
  return it->second;
}

void MemoryDirectoryModel::add(DirectoryRow row) {
  auto key = row.key;
  rows_.insert_or_assign(std::move(key), std::move(row));
}

void MemoryDirectoryModel::forEach(const std::function<void(const DirectoryRow&)>& visit) const {
  for (const auto& [key, row] : rows_) {
    visit(row);
  }
}

}  // namespace odlex::directory
