#pragma once
// Table objects of the patch-creation tables, which only a patch-creation file (.pcp) holds:
// the image families, the upgraded and target images of each family, the files that need
// special treatment in them, and the properties of the patch build.
//
// GetEntries(RWBTree& out, ...) collectors insert the live rows (those not marked deleted)
// that belong to one row of the table they refer to into `out`, keep whatever `out` already
// held, and return `out`; GetEntries() with no argument is still the table's whole row tree.
// Lookups return the row (deleted rows are never found) or throw the table's not-found
// ODLEXDatabaseError. GetWith<Column> lookups by a column that is not the whole key return the
// first matching row in key order.

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTImageFamilies
    : public ODLEXTRowTable<ODLEXTImageFamilies, ODLEXTObject::eImageFamilies> {
 public:
  using ODLEXTObject::GetEntries;
  // Every family (the table refers to no other).
  RWBTree& GetEntries(RWBTree& out);
  // The family `family`; code 69 when there is none.
  MSIEImageFamilies& GetWithFamily(const TalString& family);
  // The family whose media source path is kept in the property `mediaSrcPropName`; code 69
  // when there is none.
  MSIEImageFamilies& GetWithMediaSrcPropName(const TalString& mediaSrcPropName);
};

class ODLEXTUpgradedImages
    : public ODLEXTRowTable<ODLEXTUpgradedImages, ODLEXTObject::eUpgradedImages> {
 public:
  using ODLEXTObject::GetEntries;
  // The upgraded images of the family `family`.
  RWBTree& GetEntries(RWBTree& out, const MSIEImageFamilies& family);
  // The first upgraded image of the family `family`; code 72 when it has none.
  MSIEUpgradedImages& GetWithFamily(const TalString& family);
  // The upgraded image `upgraded`; code 72 when there is none.
  MSIEUpgradedImages& GetWithUpgraded(const TalString& upgraded);
};

class ODLEXTTargetImages : public ODLEXTRowTable<ODLEXTTargetImages, ODLEXTObject::eTargetImages> {
 public:
  using ODLEXTObject::GetEntries;
  // The target images that the upgraded image `upgraded` updates.
  RWBTree& GetEntries(RWBTree& out, const MSIEUpgradedImages& upgraded);
  // The target image `target`; code 70 when there is none.
  MSIETargetImages& GetWithTarget(const TalString& target);
  // The first target image that the upgraded image `upgraded` updates; code 70 when none does.
  MSIETargetImages& GetWithUpgraded(const TalString& upgraded);
};

class ODLEXTExternalFiles
    : public ODLEXTRowTable<ODLEXTExternalFiles, ODLEXTObject::eExternalFiles> {
 public:
  using ODLEXTObject::GetEntries;
  // The external files of the family `family`.
  RWBTree& GetEntries(RWBTree& out, const MSIEImageFamilies& family);
  // The external file `filePath` given for the file `ftk` of the family `family`; code 68
  // when there is none.
  MSIEExternalFiles& GetEntry(const TalString& family, const TalString& ftk,
                              const TalString& filePath);
  // The first external file of the family `family`; code 68 when it has none.
  MSIEExternalFiles& GetWithFamily(const TalString& family);
};

class ODLEXTFamilyFileRanges
    : public ODLEXTRowTable<ODLEXTFamilyFileRanges, ODLEXTObject::eFamilyFileRanges> {
 public:
  using ODLEXTObject::GetEntries;
  // The file ranges kept unchanged in the family `family`.
  RWBTree& GetEntries(RWBTree& out, const MSIEImageFamilies& family);
  // The ranges of the file `ftk` in the family `family`; code 73 when there are none.
  MSIEFamilyFileRanges& GetEntry(const TalString& family, const TalString& ftk);
  // The first file of the family `family` with ranges; code 73 when it has none.
  MSIEFamilyFileRanges& GetWithFamily(const TalString& family);
};

class ODLEXTTargetFiles_OptionalData
    : public ODLEXTRowTable<ODLEXTTargetFiles_OptionalData,
                            ODLEXTObject::eTargetFiles_OptionalData> {
 public:
  using ODLEXTObject::GetEntries;
  // The file options given for the target image `target`.
  RWBTree& GetEntries(RWBTree& out, const MSIETargetImages& target);
  // The options of the file `ftk` of the target image `target`; code 74 when there are none.
  MSIETargetFiles_OptionalData& GetEntry(const TalString& target, const TalString& ftk);
  // The first file options of the target image `target`; code 74 when it has none.
  MSIETargetFiles_OptionalData& GetWithTarget(const TalString& target);
};

// A row leaves a file out of the patch. Its Upgraded column names an upgraded image, or is "*"
// for every upgraded image; its FTK names a file key, or ends in "*" to name every file key
// that starts with what precedes it.
class ODLEXTUpgradedFilesToIgnore
    : public ODLEXTRowTable<ODLEXTUpgradedFilesToIgnore, ODLEXTObject::eUpgradedFilesToIgnore> {
 public:
  using ODLEXTObject::GetEntries;
  // The rows that apply to the upgraded image `upgraded`: its own and those for every image.
  RWBTree& GetEntries(RWBTree& out, const MSIEUpgradedImages& upgraded);
  // The row that leaves out the file `ftk` of the upgraded image `upgraded`, the most particular
  // first: a row of this image before one for every image, and within them the file's own key
  // before the longest prefix that covers it; code 76 when no row leaves the file out.
  MSIEUpgradedFilesToIgnore& GetEntry(const TalString& upgraded, const TalString& ftk);
  // The first row (in key order) of the upgraded image `upgraded`, else the first for every
  // image; code 76 when there is none.
  MSIEUpgradedFilesToIgnore& GetWithUpgraded(const TalString& upgraded);
};

class ODLEXTUpgradedFiles_OptionalData
    : public ODLEXTRowTable<ODLEXTUpgradedFiles_OptionalData,
                            ODLEXTObject::eUpgradedFiles_OptionalData> {
 public:
  using ODLEXTObject::GetEntries;
  // The file options given for the upgraded image `upgraded`.
  RWBTree& GetEntries(RWBTree& out, const MSIEUpgradedImages& upgraded);
  // The options of the file `ftk` of the upgraded image `upgraded`; code 75 when there are
  // none.
  MSIEUpgradedFiles_OptionalData& GetEntry(const TalString& upgraded, const TalString& ftk);
  // The first file options of the upgraded image `upgraded`; code 75 when it has none.
  MSIEUpgradedFiles_OptionalData& GetWithUpgraded(const TalString& upgraded);
};

class ODLEXTProperties : public ODLEXTRowTable<ODLEXTProperties, ODLEXTObject::eProperties> {
 public:
  // The patch-build property `name`; code 71 when there is none.
  MSIEProperties& GetWithName(const TalString& name);
};
