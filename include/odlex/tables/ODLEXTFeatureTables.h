#pragma once
// Table objects of the feature tree: Feature (features and their parents) and FeatureComponents
// (which components each feature installs). Walks of the tree stop at a missing parent and
// at a feature met before, so a cycle of parents in a damaged package ends. The collectors that
// name code 7 ask the host's permission callback before each row (ODLEXDatabase::UserPermits)
// and throw ODLEXDatabaseError code 7 when it refuses.

#include "odlex/tables/ODLEXTRowTable.h"

// A feature's editable attributes (not its key), in one value to show in an editor and write
// back with ODLEXTFeature::SetToFeatureInfo.
struct ODLEXFeatureInfo {
  explicit ODLEXFeatureInfo(const MSIEFeature& row);
  bool operator==(const ODLEXFeatureInfo& other) const = default;

  TalString parent;
  TalString title;
  TalString description;
  NullableSignedShort display;
  short level = 0;
  TalString directory;
  short attributes = 0;
};

class ODLEXTFeature : public ODLEXTRowTable<ODLEXTFeature, ODLEXTObject::eFeature> {
 public:
  // The row `id`; code 22 when there is none.
  MSIEFeature& GetFeatureWithID(const TalString& id);
  // Inserts the live features into `out`; returns `out`.
  RWBTree& GetFeatures(RWBTree& out);
  // The attributes of `feature`, or of the feature `id` (code 22 when there is none).
  ODLEXFeatureInfo GetFeatureInfo(const MSIEFeature& feature) { return ODLEXFeatureInfo(feature); }
  ODLEXFeatureInfo GetFeatureInfoWithFeatureId(const TalString& id);
  // Writes `info` into `feature`, marking the row and the table modified, and returns true;
  // false, changing nothing, when they are equal already or when info's parent would break
  // the tree: a parent that is no live feature, or `feature` itself or a feature below it (a
  // circle). An empty parent makes the feature a root.
  bool SetToFeatureInfo(MSIEFeature& feature, const ODLEXFeatureInfo& info);
  // `code` sums 1 (the parent names no live feature), 2 (the feature is its own ancestor
  // through other features), 4 (Directory_ names no Directory row); true when it stays 0.
  bool IsValid(const MSIEFeature& feature, unsigned int& code);
  // The first live feature, in key order, that has no parent (or names itself); code 11 when
  // there is none.
  MSIEFeature& GetRoot();
  // Inserts into `out` the ancestors of `feature`, nearest first, and with `includeSelf` the
  // feature itself; returns `out`.
  RWBTree& GetParents(RWBTree& out, const MSIEFeature& feature, bool includeSelf);
  // Inserts into `out` the live features whose parent is `feature` (Shallow), or every live
  // feature below it (Deep); code 7 when the host refuses.
  RWBTree& GetFeaturesShallow(RWBTree& out, const MSIEFeature& feature);
  RWBTree& GetFeaturesDeep(RWBTree& out, const MSIEFeature& feature);
  // Inserts into `out` the live components linked to `feature` (Shallow), or to it and every
  // feature below it (Deep); code 7 when the host refuses.
  RWBTree& GetComponentsShallow(RWBTree& out, const MSIEFeature& feature);
  RWBTree& GetComponentsDeep(RWBTree& out, const MSIEFeature& feature);
};

class ODLEXTFeatureComponents
    : public ODLEXTRowTable<ODLEXTFeatureComponents, ODLEXTObject::eFeatureComponents> {
 public:
  using ODLEXTRowTable::Delete;
  // Inserts into `out` the live Feature rows linked to the component `componentKey`; with
  // `askHost`, code 7 when the host refuses. Returns `out`.
  RWBTree& GetFeatures(RWBTree& out, const TalString& componentKey, bool askHost);
  // Inserts into `out` the live Component rows linked to the feature `featureKey`; with
  // `askHost`, code 7 when the host refuses. Returns `out`.
  RWBTree& GetComponents(RWBTree& out, const TalString& featureKey, bool askHost);
  // Inserts into `out` the live link rows of `feature`; code 7 when the host refuses.
  RWBTree& GetFeatureComponents(RWBTree& out, const MSIEFeature& feature);
  // Unlinks `component` from `feature`: their link row is deleted (nothing when there is none).
  void Delete(const MSIEFeature& feature, const MSIEComponent& component);
};
