#include "odlex/support/RWBTree.h"

RWCollectable* RWBTree::insert(RWCollectable* item) {
  if (item == nullptr) {
    return nullptr;
  }
  return *items_.insert(item).first;
}

RWCollectable* RWBTree::find(const RWCollectable* target) const {
  if (target == nullptr) {
    return nullptr;
  }
  const auto found = items_.find(target);
  return found == items_.end() ? nullptr : *found;
}

RWCollectable* RWBTree::remove(const RWCollectable* target) {
  if (target == nullptr) {
    return nullptr;
  }
  const auto found = items_.find(target);
  if (found == items_.end()) {
    return nullptr;
  }
  RWCollectable* item = *found;
  items_.erase(found);
  return item;
}

std::vector<RWCollectable*> RWBTree::items() const {
  return {items_.begin(), items_.end()};
}

RWCollectable* RWBTreeIterator::operator()() {
  if (next_ == tree_->end()) {
    current_ = nullptr;
    return nullptr;
  }
  current_ = *next_++;
  return current_;
}

void RWBTreeIterator::reset() {
  next_ = tree_->begin();
  current_ = nullptr;
}
