// The feature tree and the links from features to components.

#include <set>
#include <string>
#include <vector>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

namespace {

// The parent key of `feature`, empty for a root (no parent, or itself).
std::u16string parentOf(const MSIEFeature& feature) {
  const std::u16string parent = feature.GetFeatureParent().u16();
  return parent == feature.GetFeature().u16() ? std::u16string() : parent;
}

// Drops the deleted rows of `found` (asking the host first when `askHost`: code 7 when it
// refuses), then inserts the rest into `out`.
RWBTree& insertPermitted(ODLEXTObject& table, RWBTree& found, RWBTree& out, bool askHost) {
  table.FilterOutDeletedEntries(found, askHost);
  for (RWCollectable* row : found)
    out.insert(row);
  return out;
}

}  // namespace

MSIEFeature& ODLEXTFeature::GetFeatureWithID(const TalString& id) {
  return FindOrThrow(GetTable().Find(id), ODLEXDatabaseError::eFeatureNotFound);
}

ODLEXFeatureInfo::ODLEXFeatureInfo(const MSIEFeature& row)
    : parent(parentOf(row)),
      title(row.GetTitle()),
      description(row.GetDescription()),
      display(row.GetDisplay()),
      level(row.GetLevel()),
      directory(row.GetDirectory()),
      attributes(row.GetAttributes()) {}

RWBTree& ODLEXTFeature::GetFeatures(RWBTree& out) {
  return odlex::tables::collectLiveRows<MSIEFeature>(GetEntries(), out,
                                                     [](const MSIEFeature&) { return true; });
}

ODLEXFeatureInfo ODLEXTFeature::GetFeatureInfoWithFeatureId(const TalString& id) {
  return ODLEXFeatureInfo(GetFeatureWithID(id));
}

bool ODLEXTFeature::SetToFeatureInfo(MSIEFeature& feature, const ODLEXFeatureInfo& info) {
  if (GetFeatureInfo(feature) == info)
    return false;
  if (!info.parent.u16().empty()) {
    MSIEFeature* parent = Lookup(info.parent);
    if (!parent)
      return false;
    RWBTree ancestors;
    if (GetParents(ancestors, *parent, true).contains(&feature))
      return false;
  }
  feature.SetFeatureParent(info.parent);
  feature.SetTitle(info.title);
  feature.SetDescription(info.description);
  feature.SetDisplay(info.display);
  feature.SetLevel(info.level);
  feature.SetDirectory(info.directory);
  feature.SetAttributes(info.attributes);
  Revive(feature);
  return true;
}

bool ODLEXTFeature::IsValid(const MSIEFeature& feature, unsigned int& code) {
  const TalString parent(parentOf(feature));
  if (!parent.u16().empty()) {
    if (MSIEFeature* row = Lookup(parent)) {
      RWBTree ancestors;
      if (GetParents(ancestors, *row, false).contains(const_cast<MSIEFeature*>(&feature)))
        code += 2;
    } else {
      code += 1;
    }
  }
  if (!feature.GetDirectory().u16().empty() &&
      !GetDatabase().GetDirectory().Lookup(feature.GetDirectory()))
    code += 4;
  return code == 0;
}

MSIEFeature& ODLEXTFeature::GetRoot() {
  for (RWCollectable* item : GetTable().GetTable()) {
    auto& feature = static_cast<MSIEFeature&>(*item);
    if (!feature.IsDeleted() && parentOf(feature).empty())
      return feature;
  }
  throw ODLEXDatabaseError(ODLEXDatabaseError::eRootFeatureNotFound);
}

RWBTree& ODLEXTFeature::GetParents(RWBTree& out, const MSIEFeature& feature, bool includeSelf) {
  std::set<std::u16string> seen = {feature.GetFeature().u16()};
  if (includeSelf)
    out.insert(const_cast<MSIEFeature*>(&feature));
  for (MSIEFeature* parent = Lookup(TalString(parentOf(feature)));
       parent && seen.insert(parent->GetFeature().u16()).second;
       parent = Lookup(TalString(parentOf(*parent))))
    out.insert(parent);
  return out;
}

RWBTree& ODLEXTFeature::GetFeaturesShallow(RWBTree& out, const MSIEFeature& feature) {
  RWBTree children;
  for (RWCollectable* item : GetTable().GetTable()) {
    auto& row = static_cast<MSIEFeature&>(*item);
    if (parentOf(row) == feature.GetFeature().u16())
      children.insert(&row);
  }
  return insertPermitted(*this, children, out, true);
}

RWBTree& ODLEXTFeature::GetFeaturesDeep(RWBTree& out, const MSIEFeature& feature) {
  std::set<const RWCollectable*> seen = {&feature};
  std::vector<const MSIEFeature*> pending = {&feature};
  while (!pending.empty()) {
    const MSIEFeature* next = pending.back();
    pending.pop_back();
    RWBTree children;
    for (RWCollectable* child : GetFeaturesShallow(children, *next)) {
      if (seen.insert(child).second) {
        out.insert(child);
        pending.push_back(static_cast<const MSIEFeature*>(child));
      }
    }
  }
  return out;
}

RWBTree& ODLEXTFeature::GetComponentsShallow(RWBTree& out, const MSIEFeature& feature) {
  return GetDatabase().GetFeatureComponents().GetComponents(out, feature.GetFeature(), true);
}

RWBTree& ODLEXTFeature::GetComponentsDeep(RWBTree& out, const MSIEFeature& feature) {
  RWBTree features;
  GetFeaturesDeep(features, feature);
  features.insert(const_cast<MSIEFeature*>(&feature));
  for (RWCollectable* item : features)
    GetComponentsShallow(out, static_cast<const MSIEFeature&>(*item));
  return out;
}

RWBTree& ODLEXTFeatureComponents::GetFeatures(RWBTree& out, const TalString& componentKey,
                                              bool askHost) {
  ODLEXTFeature& features = GetDatabase().GetFeature();
  RWBTree found;
  for (RWCollectable* item : GetTable().GetTable()) {
    const auto& link = static_cast<const MSIEFeatureComponents&>(*item);
    if (link.IsDeleted() || link.GetComponent() != componentKey)
      continue;
    if (MSIEFeature* feature = features.Lookup(link.GetFeature()))
      found.insert(feature);
  }
  return insertPermitted(*this, found, out, askHost);
}

RWBTree& ODLEXTFeatureComponents::GetComponents(RWBTree& out, const TalString& featureKey,
                                                bool askHost) {
  ODLEXTComponent& components = GetDatabase().GetComponent();
  RWBTree found;
  for (RWCollectable* item : GetTable().GetTable()) {
    const auto& link = static_cast<const MSIEFeatureComponents&>(*item);
    if (link.IsDeleted() || link.GetFeature() != featureKey)
      continue;
    if (MSIEComponent* component = components.Lookup(link.GetComponent()))
      found.insert(component);
  }
  return insertPermitted(*this, found, out, askHost);
}

RWBTree& ODLEXTFeatureComponents::GetFeatureComponents(RWBTree& out, const MSIEFeature& feature) {
  RWBTree found;
  for (RWCollectable* item : GetTable().GetTable()) {
    if (static_cast<const MSIEFeatureComponents&>(*item).GetFeature() == feature.GetFeature())
      found.insert(item);
  }
  return insertPermitted(*this, found, out, true);
}

void ODLEXTFeatureComponents::Delete(const MSIEFeature& feature, const MSIEComponent& component) {
  if (MSIEFeatureComponents* link = Lookup(feature.GetFeature(), component.GetComponentID()))
    DeleteEntry(*link);
}
