// The product's own tables: text-file edits and removals, keywords, the change log, and the
// descriptions of standard actions and properties.

#include "odlex/tables/ODLEXTProductTables.h"

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

template <class Row, class Select>
void collect(RWBTree& out, const RWBTree& rows, Select select) {
  for (RWCollectable* item : rows) {
    auto* row = static_cast<Row*>(item);
    if (row && !row->IsDeleted() && select(*row))
      out.insert(row);
  }
}

}  // namespace

template <class Derived, ODLEXTObject::typeID type>
void ODLEXTTextFileTable<Derived, type>::Persist() {
  if (!this->IsLoaded())
    return;
  for (RWCollectable* item : this->GetEntries()) {
    if (!static_cast<const MSIEntry*>(item)->IsDeleted()) {
      static_cast<Derived*>(this)->ScheduleActions();
      break;
    }
  }
  ODLEXTObject::Persist();
}

template <class Derived, ODLEXTObject::typeID type>
void ODLEXTTextFileTable<Derived, type>::CollectOfComponent(RWBTree& out,
                                                            const MSIEComponent& component) {
  const TalString key = component.GetComponentID();
  collect<MSIEntry>(out, this->GetEntries(),
                    [&](const MSIEntry& row) { return row.GetComponentKey() == key; });
}

template class ODLEXTTextFileTable<ODLEXTZrTextFile, ODLEXTObject::eZrTextFile>;
template class ODLEXTTextFileTable<ODLEXTZrRemoveTextFile, ODLEXTObject::eZrRemoveTextFile>;

void ODLEXTZrTextFile::GetZrTextFiles(RWBTree& out, const MSIEComponent& component) {
  CollectOfComponent(out, component);
}

unsigned ODLEXTZrTextFile::GetZrTextFiles(RWBTree& out, const RWBTree& in,
                                          const TalString& fileName, const TalString& dirProperty) {
  const std::size_t before = out.entries();
  collect<MSIEZrTextFile>(out, in, [&](const MSIEZrTextFile& row) {
    return row.GetFileName() == fileName && row.GetDirProperty() == dirProperty;
  });
  return static_cast<unsigned>(out.entries() - before);
}

bool ODLEXTZrTextFile::Change(RWBTree& rows, const RWBTree& values) {
  bool changed = false;
  const std::vector<RWCollectable*> targets(rows.begin(), rows.end());
  for (RWCollectable* item : targets) {
    const RWCollectable* counterpart = values.find(item);
    if (counterpart)
      changed = Change(static_cast<MSIEZrTextFile&>(*item),
                       static_cast<const MSIEZrTextFile&>(*counterpart)) ||
                changed;
  }
  return changed;
}

void ODLEXTZrTextFile::SetEntriesAction(RWBTree& rows, msidbZrTextFileAction bits) {
  for (RWCollectable* item : rows) {
    if (auto* row = static_cast<MSIEZrTextFile*>(item))
      row->SetAction(row->GetAction() | bits);
  }
}

void ODLEXTZrTextFile::ResetEntriesAction(RWBTree& rows, msidbZrTextFileAction bits) {
  for (RWCollectable* item : rows) {
    if (auto* row = static_cast<MSIEZrTextFile*>(item))
      row->SetAction(row->GetAction() & ~static_cast<long>(bits));
  }
}

void ODLEXTZrTextFile::ScheduleActions() {
  ODLEXTCustomAction& actions = GetDatabase().GetCustomAction();
  actions.AddTextFileInstallChanges();
  actions.AddTextFileInitialize();
}

void ODLEXTZrRemoveTextFile::GetZrRemoveTextFiles(RWBTree& out, const MSIEComponent& component) {
  CollectOfComponent(out, component);
}

void ODLEXTZrRemoveTextFile::ScheduleActions() {
  ODLEXTCustomAction& actions = GetDatabase().GetCustomAction();
  actions.AddRemoveTextFileInstallChanges();
  actions.AddTextFileInitialize();
}

unsigned ODLEXTZrKeyword::GetWithKeyword(RWBTree& out, const TalString& keyword) {
  const std::size_t before = out.entries();
  collect<MSIEZrKeyword>(out, GetEntries(),
                         [&](const MSIEZrKeyword& row) { return row.GetKeyword() == keyword; });
  return static_cast<unsigned>(out.entries() - before);
}

MSIEZrKeyword& ODLEXTZrKeyword::GetEntry(const TalString& keyword, unsigned short index) {
  return FindOrThrow(GetTable().Find(keyword, static_cast<short>(index)),
                     ODLEXDatabaseError::eKeywordNotFound);
}

bool ODLEXTZrKeyword::IsOperatorSame(const MSIEZrKeyword& a, const MSIEZrKeyword& b) {
  return a.GetOperator() == b.GetOperator();
}

void ODLEXTZrKeyword::Delete(const TalString& keyword) {
  RWBTree rows;
  GetWithKeyword(rows, keyword);
  for (RWCollectable* item : rows)
    Delete(static_cast<MSIEZrKeyword&>(*item));
}

MSIEZrChangeLog& ODLEXTZrChangeLog::Find(const TalString& entry) {
  return FindOrThrow(GetTable().Find(entry), ODLEXDatabaseError::eChangeLogNotFound);
}

template <class Derived, ODLEXTObject::typeID type>
RWBTree& ODLEXTVersionedInformation<Derived, type>::GetEntries(RWBTree& out,
                                                               eSchemaVersion version) {
  using Row = typename ODLEXTRowTable<Derived, type>::Entry;
  collect<Row>(out, this->GetEntries(), [version](const Row& row) {
    return row.GetVerFirst() <= version && version <= row.GetVerLast();
  });
  return out;
}

template class ODLEXTVersionedInformation<ODLEXT_ZrActionInformation,
                                          ODLEXTObject::e_ZrActionInformation>;
template class ODLEXTVersionedInformation<ODLEXT_ZrPropertyInformation,
                                          ODLEXTObject::e_ZrPropertyInformation>;
