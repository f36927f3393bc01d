#pragma once
// The rows of a Directory table object as the folder-path operations see them. Reads go to the
// table's live rows (rows marked deleted are left out); a row added through the model is added
// to the table, so it is tracked and persisted like any other new row.

#include <functional>
#include <optional>
#include <string_view>

#include "msi/directory/DirectoryModel.h"
#include "odlex/msi/MSITable.h"

namespace odlex::rows {

class DirectoryTableModel final : public directory::DirectoryModel {
 public:
  // `table` holds rows of the Directory table and outlives the model.
  explicit DirectoryTableModel(MSITable& table) : table_(table) {}

  std::optional<directory::DirectoryRow> find(std::u16string_view key) const override;
  void add(directory::DirectoryRow row) override;
  void forEach(const std::function<void(const directory::DirectoryRow&)>& visit) const override;

 private:
  MSITable& table_;
};

}  // namespace odlex::rows
