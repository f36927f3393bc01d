// Operations of the patch-creation table objects.

#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectLiveRows;
using odlex::tables::collectRowsWithValue;

RWBTree& ODLEXTImageFamilies::GetEntries(RWBTree& out) {
  return collectLiveRows<MSIEImageFamilies>(GetEntries(), out,
                                            [](const MSIEImageFamilies&) { return true; });
}

MSIEImageFamilies& ODLEXTImageFamilies::GetWithFamily(const TalString& family) {
  return FindOrThrow(GetTable().Find(family), ODLEXDatabaseError::eImageFamiliesNotFound);
}

MSIEImageFamilies& ODLEXTImageFamilies::GetWithMediaSrcPropName(const TalString& mediaSrcPropName) {
  return FindOrThrow(GetTable().FindByMediaSrcPropName(mediaSrcPropName),
                     ODLEXDatabaseError::eImageFamiliesNotFound);
}

RWBTree& ODLEXTUpgradedImages::GetEntries(RWBTree& out, const MSIEImageFamilies& family) {
  return collectRowsWithValue(GetEntries(), out, &MSIEUpgradedImages::GetFamily,
                              family.GetFamily());
}

MSIEUpgradedImages& ODLEXTUpgradedImages::GetWithFamily(const TalString& family) {
  return FindOrThrow(GetTable().FindByFamily(family), ODLEXDatabaseError::eUpgradedImagesNotFound);
}

MSIEUpgradedImages& ODLEXTUpgradedImages::GetWithUpgraded(const TalString& upgraded) {
  return FindOrThrow(GetTable().Find(upgraded), ODLEXDatabaseError::eUpgradedImagesNotFound);
}

RWBTree& ODLEXTTargetImages::GetEntries(RWBTree& out, const MSIEUpgradedImages& upgraded) {
  return collectRowsWithValue(GetEntries(), out, &MSIETargetImages::GetUpgraded,
                              upgraded.GetUpgraded());
}

MSIETargetImages& ODLEXTTargetImages::GetWithTarget(const TalString& target) {
  return FindOrThrow(GetTable().Find(target), ODLEXDatabaseError::eTargetImagesNotFound);
}

MSIETargetImages& ODLEXTTargetImages::GetWithUpgraded(const TalString& upgraded) {
  return FindOrThrow(GetTable().FindByUpgraded(upgraded),
                     ODLEXDatabaseError::eTargetImagesNotFound);
}

RWBTree& ODLEXTExternalFiles::GetEntries(RWBTree& out, const MSIEImageFamilies& family) {
  return collectRowsWithValue(GetEntries(), out, &MSIEExternalFiles::GetFamily, family.GetFamily());
}

MSIEExternalFiles& ODLEXTExternalFiles::GetEntry(const TalString& family, const TalString& ftk,
                                                 const TalString& filePath) {
  return FindOrThrow(GetTable().Find(family, ftk, filePath),
                     ODLEXDatabaseError::eExternalFilesNotFound);
}

MSIEExternalFiles& ODLEXTExternalFiles::GetWithFamily(const TalString& family) {
  return FindOrThrow(GetTable().FindByFamily(family), ODLEXDatabaseError::eExternalFilesNotFound);
}

RWBTree& ODLEXTFamilyFileRanges::GetEntries(RWBTree& out, const MSIEImageFamilies& family) {
  return collectRowsWithValue(GetEntries(), out, &MSIEFamilyFileRanges::GetFamily,
                              family.GetFamily());
}

MSIEFamilyFileRanges& ODLEXTFamilyFileRanges::GetEntry(const TalString& family,
                                                       const TalString& ftk) {
  return FindOrThrow(GetTable().Find(family, ftk), ODLEXDatabaseError::eFamilyFileRangesNotFound);
}

MSIEFamilyFileRanges& ODLEXTFamilyFileRanges::GetWithFamily(const TalString& family) {
  return FindOrThrow(GetTable().FindByFamily(family),
                     ODLEXDatabaseError::eFamilyFileRangesNotFound);
}

RWBTree& ODLEXTTargetFiles_OptionalData::GetEntries(RWBTree& out, const MSIETargetImages& target) {
  return collectRowsWithValue(GetEntries(), out, &MSIETargetFiles_OptionalData::GetTarget,
                              target.GetTarget());
}

MSIETargetFiles_OptionalData& ODLEXTTargetFiles_OptionalData::GetEntry(const TalString& target,
                                                                       const TalString& ftk) {
  return FindOrThrow(GetTable().Find(target, ftk),
                     ODLEXDatabaseError::eTargetFilesOptionalDataNotFound);
}

MSIETargetFiles_OptionalData& ODLEXTTargetFiles_OptionalData::GetWithTarget(
    const TalString& target) {
  return FindOrThrow(GetTable().FindByTarget(target),
                     ODLEXDatabaseError::eTargetFilesOptionalDataNotFound);
}

namespace {

constexpr char16_t kEveryImage[] = u"*";

// Whether the FTK `pattern` names the file key `ftk`: the same key, or a prefix of it followed
// by "*".
bool namesFile(const TalString& pattern, const TalString& ftk) {
  const std::u16string& text = pattern.u16();
  if (!text.empty() && text.back() == u'*')
    return ftk.u16().starts_with(std::u16string_view(text).substr(0, text.size() - 1));
  return text == ftk.u16();
}

}  // namespace

RWBTree& ODLEXTUpgradedFilesToIgnore::GetEntries(RWBTree& out, const MSIEUpgradedImages& upgraded) {
  for (RWCollectable* item : GetEntries()) {
    const auto* row = static_cast<const MSIEUpgradedFilesToIgnore*>(item);
    if (!row->IsDeleted() &&
        (row->GetUpgraded() == upgraded.GetUpgraded() || row->GetUpgraded() == kEveryImage))
      out.insert(item);
  }
  return out;
}

// The most particular row wins: this image before every image, then the file's own key before
// the longest prefix that covers it.
MSIEUpgradedFilesToIgnore& ODLEXTUpgradedFilesToIgnore::GetEntry(const TalString& upgraded,
                                                                 const TalString& ftk) {
  for (const TalString& image : {upgraded, TalString(kEveryImage)}) {
    if (MSIEUpgradedFilesToIgnore* exact = GetTable().Find(image, ftk))
      return *exact;
    MSIEUpgradedFilesToIgnore* best = nullptr;
    for (RWCollectable* item : GetEntries()) {
      auto* row = static_cast<MSIEUpgradedFilesToIgnore*>(item);
      if (!row->IsDeleted() && row->GetUpgraded() == image && namesFile(row->GetFTK(), ftk) &&
          (!best || row->GetFTK().length() > best->GetFTK().length()))
        best = row;
    }
    if (best)
      return *best;
  }
  throw ODLEXDatabaseError(ODLEXDatabaseError::eUpgradedFilesToIgnoreNotFound);
}

MSIEUpgradedFilesToIgnore& ODLEXTUpgradedFilesToIgnore::GetWithUpgraded(const TalString& upgraded) {
  MSIEUpgradedFilesToIgnore* row = GetTable().FindByUpgraded(upgraded);
  return FindOrThrow(row ? row : GetTable().FindByUpgraded(kEveryImage),
                     ODLEXDatabaseError::eUpgradedFilesToIgnoreNotFound);
}

RWBTree& ODLEXTUpgradedFiles_OptionalData::GetEntries(RWBTree& out,
                                                      const MSIEUpgradedImages& upgraded) {
  return collectRowsWithValue(GetEntries(), out, &MSIEUpgradedFiles_OptionalData::GetUpgraded,
                              upgraded.GetUpgraded());
}

MSIEUpgradedFiles_OptionalData& ODLEXTUpgradedFiles_OptionalData::GetEntry(
    const TalString& upgraded, const TalString& ftk) {
  return FindOrThrow(GetTable().Find(upgraded, ftk),
                     ODLEXDatabaseError::eUpgradedFilesOptionalDataNotFound);
}

MSIEUpgradedFiles_OptionalData& ODLEXTUpgradedFiles_OptionalData::GetWithUpgraded(
    const TalString& upgraded) {
  return FindOrThrow(GetTable().FindByUpgraded(upgraded),
                     ODLEXDatabaseError::eUpgradedFilesOptionalDataNotFound);
}

MSIEProperties& ODLEXTProperties::GetWithName(const TalString& name) {
  return FindOrThrow(GetTable().Find(name), ODLEXDatabaseError::ePropertiesNotFound);
}
