#pragma once
// The Directory table as the path operations see it: rows of key (Directory), parent key
// (Directory_Parent) and DefaultDir. The table class implements this interface over its own
// rows; MemoryDirectoryModel is a plain implementation for loading and testing.
//
// Keys compare exactly (they are installer identifiers, which are case-sensitive). A row is a
// root when its parent is empty or is the row itself.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace odlex::directory {

struct DirectoryRow {
  std::u16string key;
  std::u16string parent;
  std::u16string defaultDir;

  bool isRoot() const { return parent.empty() || parent == key; }
  bool operator==(const DirectoryRow&) const = default;
};

class DirectoryModel {
 public:
  virtual ~DirectoryModel() = default;

  virtual std::optional<DirectoryRow> find(std::u16string_view key) const = 0;
  // Adds a row; the path operations only add rows whose key is not in use.
  virtual void add(DirectoryRow row) = 0;
  // Calls `visit` once for every row, in any order.
  virtual void forEach(const std::function<void(const DirectoryRow&)>& visit) const = 0;

  // The rows whose parent is `key` (roots excluded, so a root is never its own child).
  std::vector<DirectoryRow> children(std::u16string_view key) const;
};

class MemoryDirectoryModel : public DirectoryModel {
 public:
  std::optional<DirectoryRow> find(std::u16string_view key) const override;
  // A row with a key already present replaces the old one.
  void add(DirectoryRow row) override;
  void forEach(const std::function<void(const DirectoryRow&)>& visit) const override;

  std::size_t size() const { return rows_.size(); }

 private:
  std::map<std::u16string, DirectoryRow, std::less<>> rows_;
};

}  // namespace odlex::directory
