#include "odlex/support/RWCollectable.h"

#include <cstdint>
#include <functional>

RWCollectable* RWCollectable::newSpecies() const {
  return nullptr;
}

RWCollectable* RWCollectable::copy() const {
  return nullptr;
}

RWClassID RWCollectable::isA() const {
  return RWCollectableClassID;
}

int RWCollectable::compareTo(const RWCollectable* other) const {
  if (this == other) {
    return 0;
  }
  if (other == nullptr) {
    return 1;
  }
  // Different classes order by class id, so that classes that compare by value and classes
  // that compare by identity can share a collection.
  if (isA() != other->isA()) {
    return isA() < other->isA() ? -1 : 1;
  }
  return std::less<const RWCollectable*>()(this, other) ? -1 : 1;
}

unsigned RWCollectable::hash() const {
  const std::uint64_t h = std::hash<const void*>()(this);
  return static_cast<unsigned>(h ^ (h >> 32));
}

bool RWCollectable::isEqual(const RWCollectable* other) const {
  return this == other;
}
