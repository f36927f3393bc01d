#pragma once
// Table objects of the feature tree: Feature (features and their parents) and FeatureComponents
// (which components each feature installs). Walks of the tree stop at a missing parent and
// at a feature met before, so a cycle of parents in a damaged package ends. The collectors that
// name code 7 ask the host's permission callback before each row (ODLEXDatabase::UserPermits)
// and throw ODLEXDatabaseError code 7 when it refuses.

#include <vector>

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

  // Adds the host files `files` (paths on this computer) to the feature `featureID`, installed
  // into the folder `directoryID`, the way an authoring tool adds files: each file becomes
  //   - a component of its own in that folder (ODLEXTComponent::Add: a new key and GUID, the
  //     attributes a new component gets), with the file as its key path;
  //   - a File row: the key made from the file's name (its letters, digits, '_' and '.', any
  //     other character '_', a '_' in front when it would start with a digit or '.'; "_2",
  //     "_3", ... appended when a File or MsiFileHash row has the key), the name "SHORT|long",
  //     or the name alone when it is a valid short name, with a short name made as Windows
  //     makes them, free among the names of the folder's files; FileSize; Version and Language
  //     from the version resource of a Windows module; the Noncompressed attribute (8192); the
  //     sequence numbers after the highest of the live File rows and Media rows, in the order
  //     of `files`;
  //   - for a file without a version resource, an MsiFileHash row with the MD5 hash of its
  //     bytes (left out where the database's schema has no MsiFileHash table);
  //   - a FeatureComponents row linking its component to the feature.
  // The files get one new Media row: the DiskId after the highest one, LastSequence the last
  // of their sequence numbers, and no cabinet. Tables cannot hold a file's bytes: the
  // installer reads such files uncompressed from the source image, at the source path that
  // ODLEXTFile::GetLongFilePathSource names (GetSourcePath when the package's summary says
  // short names), so the caller puts them there beside the saved package, or packs them into
  // the package afterwards with ODLEXPackageFileEditor::Compress, which takes every file from
  // wherever it lies into one embedded cabinet.
  // Returns the new File keys in the order of `files` (none for no files, nothing changed).
  // Everything is checked before the first row is added: on an error nothing has changed. Each
  // error is an ODLEXDatabaseErrorWithErrorCode whose status is an installer result code, with
  // a TalError of that code, a text and the name concerned in the lower layer's error list
  // (ODLEXDatabase::GetTalError): code 22 (status 87) no such feature; 18 (87) no such folder;
  // 9 (2) a file cannot be read; 9 (87) a file's name is no valid long file name, is taken in
  // the folder (two of `files` with one name included), or leaves no free short name; 9
  // (1627) a file is larger than a File row records (2 GiB), or the sequence numbers or disk
  // numbers would pass 32767.
  std::vector<TalString> AddFiles(const TalString& featureID, const TalString& directoryID,
                                  const std::vector<TalString>& files);
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
