#pragma once
// TalCollectableString: a TalString that can be kept in the collections. Orders, compares
// and hashes by its text, exactly (case-sensitive).

#include "odlex/support/RWCollectable.h"
#include "odlex/support/TalString.h"

inline constexpr RWClassID TalCollectableStringClassID = 0xC001;

class TalCollectableString : public RWCollectable, public TalString {
 public:
  using TalString::TalString;
  TalCollectableString() = default;
  TalCollectableString(const TalString& s) : TalString(s) {}

  RWCollectable* newSpecies() const override;
  RWCollectable* copy() const override;
  RWClassID isA() const override { return TalCollectableStringClassID; }
  static RWClassID classIsA() { return TalCollectableStringClassID; }

  // Against another TalCollectableString: the texts' exact comparison. Against any other
  // class: ordered by class id, so mixed collections still have a consistent order.
  int compareTo(const RWCollectable* other) const override;
  unsigned hash() const override { return TalString::hash(); }
  bool isEqual(const RWCollectable* other) const override { return compareTo(other) == 0; }
};
