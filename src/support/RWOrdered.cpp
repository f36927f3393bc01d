#include "odlex/support/RWOrdered.h"

#include <algorithm>

RWCollectable* RWOrdered::insertAt(std::size_t i, RWCollectable* item) {
  if (item == nullptr) {
    return nullptr;
  }
  items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(std::min(i, items_.size())), item);
  return item;
}

std::size_t RWOrdered::index(const RWCollectable* target) const {
  if (target == nullptr) {
    return RW_NPOS;
  }
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (items_[i]->isEqual(target)) {
      return i;
    }
  }
  return RW_NPOS;
}

RWCollectable* RWOrdered::find(const RWCollectable* target) const {
  return at(index(target));
}

RWCollectable* RWOrdered::remove(const RWCollectable* target) {
  return removeAt(index(target));
}

RWCollectable* RWOrdered::removeAt(std::size_t i) {
  if (i >= items_.size()) {
    return nullptr;
  }
  RWCollectable* item = items_[i];
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(i));
  return item;
}
