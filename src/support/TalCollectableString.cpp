#include "odlex/support/TalCollectableString.h"

#include <new>

RWCollectable* TalCollectableString::newSpecies() const {
  return new (std::nothrow) TalCollectableString();
}

RWCollectable* TalCollectableString::copy() const {
  return new (std::nothrow) TalCollectableString(*this);
}

int TalCollectableString::compareTo(const RWCollectable* other) const {
  const auto* string = dynamic_cast<const TalCollectableString*>(other);
  return string ? TalString::compareTo(*string) : RWCollectable::compareTo(other);
}
