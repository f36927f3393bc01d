#include "msi/rows/tables/DirectoryTableModel.h"

#include <memory>
#include <string>

#include "odlex/msi/MSIRows.h"

namespace odlex::rows {
namespace {

const TalString kKeyColumn(u"Directory");
const TalString kParentColumn(u"Directory_Parent");
const TalString kDefaultDirColumn(u"DefaultDir");

// Rows are read by column name: a Directory table may also hold plain MSIEntry rows of the
// Directory schema (AddEntry takes any row of the table's schema).
std::u16string textOf(const MSIEntry& entry, const TalString& column) {
  MSIRecordColumn value;
  entry.GetColumn(column, value);
  return value.GetString().u16();
}

directory::DirectoryRow rowOf(const MSIEntry& entry) {
  return directory::DirectoryRow{textOf(entry, kKeyColumn), textOf(entry, kParentColumn),
                                 textOf(entry, kDefaultDirColumn)};
}

}  // namespace

std::optional<directory::DirectoryRow> DirectoryTableModel::find(std::u16string_view key) const {
  const MSIEDirectory probe{TalString(key)};
  const MSIEntry* entry = table_.FindEntry(probe);
  if (!entry) {
    return std::nullopt;
  }
  return rowOf(*entry);
}

void DirectoryTableModel::add(directory::DirectoryRow row) {
  std::unique_ptr<MSIEntry> entry = table_.CreateEntry();
  // An empty text stores null: a root row has no parent.
  entry->SetColumn(kKeyColumn, MSIRecordColumn::String(TalString(std::move(row.key))));
  entry->SetColumn(kParentColumn, MSIRecordColumn::String(TalString(std::move(row.parent))));
  entry->SetColumn(kDefaultDirColumn,
                   MSIRecordColumn::String(TalString(std::move(row.defaultDir))));
  // The path operations add only keys no live row uses, which the table always takes.
  table_.AddEntry(std::move(entry));
}

void DirectoryTableModel::forEach(
    const std::function<void(const directory::DirectoryRow&)>& visit) const {
  for (const RWCollectable* item : table_.GetTable()) {
    const auto& entry = static_cast<const MSIEntry&>(*item);
    if (!entry.IsDeleted()) {
      visit(rowOf(entry));
    }
  }
}

}  // namespace odlex::rows
