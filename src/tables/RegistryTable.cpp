// The Registry table object: lookups, the text of a registry value and the tree of keys.

#include <algorithm>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/CaseMapping.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

MSIERegistry& ODLEXTRegistry::GetRegistryWithID(const TalString& id) {
  return FindOrThrow(GetTable().Find(id), ODLEXDatabaseError::eRegistryNotFound);
}

MSIEComponent& ODLEXTRegistry::GetComponent(const MSIERegistry& row) {
  return odlex::tables::followReference(GetDatabase().GetComponent().Lookup(row.GetComponent()),
                                        kType, row, ODLEXDatabaseError::eComponentNotFound);
}

RWBTree& ODLEXTRegistry::GetRegistries(RWBTree& out, const MSIEComponent& component) {
  return odlex::tables::collectRowsOfComponent(GetEntries(), out, component);
}

TalString ODLEXTRegistry::GetRootText(short root) const {
  static const char16_t* const kRoots[] = {u"HKCR", u"HKCU", u"HKLM", u"HKU"};
  if (root == -1)
    return currentUserBaseName;
  return root >= 0 && root <= 3 ? TalString(kRoots[root]) : TalString();
}

TalString ODLEXTRegistry::GetRegistryString(const MSIERegistry& row) const {
  std::u16string text = GetRootText(row.GetRoot()).u16();
  text += u'\\';
  text += row.GetKey().u16();
  text += u'\\';
  text += row.GetName().u16().empty() ? std::u16string(u"(Default)") : row.GetName().u16();
  return TalString(text);
}

TalString ODLEXTRegistry::GetKeyPath(const TalString& id) {
  return GetRegistryString(GetRegistryWithID(id));
}

bool ODLEXTRegistry::IsRegistryInComponentKeyPath(const MSIERegistry& row) {
  const MSIEComponent* component = GetDatabase().GetComponent().Lookup(row.GetComponent());
  return component && component->GetKeyPath() == row.GetRegistryID() &&
         (component->GetAttributes() & msidbComponentAttributesRegistryKeyPath) != 0;
}

RWBTree& ODLEXTRegistry::GetPermissions(RWBTree& out, const MSIERegistry& row) {
  return GetDatabase().GetLockPermissions().GetLockPermissions(out, u"Registry",
                                                               row.GetRegistryID());
}

void ODLEXTRegistry::SetPermissions(const MSIERegistry& row, const RWBTree& permissions) {
  GetDatabase().GetLockPermissions().SetLockPermissions(u"Registry", row.GetRegistryID(),
                                                        permissions);
}

std::pair<std::u16string, std::u16string> ODLEXTRegistry::normalPath(
    const std::u16string& keyPath) {
  std::u16string spelled;
  std::size_t start = 0;
  while (start <= keyPath.size()) {
    std::size_t end = keyPath.find(u'\\', start);
    if (end == std::u16string::npos)
      end = keyPath.size();
    if (end > start) {
      if (!spelled.empty())
        spelled += u'\\';
      spelled.append(keyPath, start, end - start);
    }
    start = end + 1;
  }
  std::u16string folded = spelled;
  std::ranges::transform(folded, folded.begin(), odlex::FoldCaseChar);
  return {spelled, folded};
}

std::u16string ODLEXTRegistry::keyPathOf(const MSIERegistry& row) const {
  return GetRootText(row.GetRoot()).u16() + u'\\' + row.GetKey().u16();
}

void ODLEXTRegistry::StartTreeFill() {
  tree_.clear();
  iterators_.clear();
  tree_[u""];
  for (RWCollectable* item : GetEntries()) {
    const auto& row = static_cast<const MSIERegistry&>(*item);
    if (row.IsDeleted())
      continue;
    const auto [spelled, folded] = normalPath(keyPathOf(row));
    // Each prefix ending at a separator (and the whole path) is a key; link it to its parent.
    std::u16string parent;
    for (std::size_t end = 0; end <= folded.size(); ++end) {
      if (end < folded.size() && folded[end] != u'\\')
        continue;
      const std::u16string key = folded.substr(0, end);
      auto [at, added] = tree_.try_emplace(key);
      if (added) {
        at->second.path = spelled.substr(0, end);
        auto& siblings = tree_[parent].children;
        siblings.insert(std::ranges::upper_bound(siblings, key), key);
      }
      parent = key;
    }
  }
}

RWBTree& ODLEXTRegistry::GetTreeEntries(RWBTree& out, const TalString& keyPath) {
  const std::u16string wanted = normalPath(keyPath.u16()).second;
  return odlex::tables::collectLiveRows<MSIERegistry>(
      GetEntries(), out,
      [&](const MSIERegistry& row) { return normalPath(keyPathOf(row)).second == wanted; });
}

int ODLEXTRegistry::OpenTreeChildIterator(const TalString& keyPath) {
  std::u16string key = normalPath(keyPath.u16()).second;
  if (!tree_.contains(key))
    return -1;
  iterators_[nextIterator_] = {std::move(key), 0};
  return nextIterator_++;
}

bool ODLEXTRegistry::GetNextTreeChild(int iterator, TalString& child) {
  const auto open = iterators_.find(iterator);
  if (open == iterators_.end())
    return false;
  const std::vector<std::u16string>& children = tree_.at(open->second.key).children;
  if (open->second.next >= children.size())
    return false;
  child = TalString(tree_.at(children[open->second.next++]).path);
  return true;
}

void ODLEXTRegistry::CloseTreeChildIterator(int iterator) {
  iterators_.erase(iterator);
}
