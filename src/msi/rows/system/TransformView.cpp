// _TransformView: a temporary table of transform changes, held in memory only.

#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"

using odlex::rows::catalogSchema;

namespace {

std::u16string indexKey(const TalString& table, const TalString& column, const TalString& row) {
  return table.u16() + u'\0' + column.u16() + u'\0' + row.u16();
}

}  // namespace

MSIE_TransformView::MSIE_TransformView() : MSIEntry(catalogSchema(u"_TransformView")) {}

MSIE_TransformView::MSIE_TransformView(const TalString& table, const TalString& column,
                                       const TalString& row, const TalString& data,
                                       const TalString& current)
    : MSIE_TransformView() {
  SetTable(table);
  SetColumn(column);
  SetRow(row);
  SetData(data);
  SetCurrent(current);
}

MSIT_TransformView::MSIT_TransformView() : MSITable(catalogSchema(u"_TransformView")) {}

std::unique_ptr<MSIEntry> MSIT_TransformView::NewEntry() const {
  return std::make_unique<MSIE_TransformView>();
}

MSIE_TransformView* MSIT_TransformView::Add(const TalString& table, const TalString& column,
                                            const TalString& row, const TalString& data,
                                            const TalString& current) {
  return static_cast<MSIE_TransformView*>(
      AddEntry(std::make_unique<MSIE_TransformView>(table, column, row, data, current)));
}

MSIE_TransformView* MSIT_TransformView::Find(const TalString& table, const TalString& column,
                                             const TalString& row) const {
  if (indexedAt_ != GetChangeCount()) {
    index_.clear();
    // Walking in key order and keeping the first row per key gives the smallest Data/Current.
    for (RWCollectable* item : GetTable()) {
      auto* entry = static_cast<MSIE_TransformView*>(item);
      if (!entry->IsDeleted())
        index_.emplace(indexKey(entry->GetTable(), entry->GetColumn(), entry->GetRow()), entry);
    }
    indexedAt_ = GetChangeCount();
  }
  auto found = index_.find(indexKey(table, column, row));
  return found == index_.end() ? nullptr : found->second;
}

bool MSIT_TransformView::Persist() {
  ClearChanges();
  return true;
}
