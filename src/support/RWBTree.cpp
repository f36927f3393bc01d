#include "odlex/support/RWBTree.h"

RWBTree::Items& RWBTree::writableItems() {
  if (items_.use_count() > 1)
    items_ = std::make_shared<Items>(*items_);
  return *items_;
}

RWCollectable* RWBTree::insert(RWCollectable* item) {
  if (item == nullptr) {
    return nullptr;
  }
  if (const auto held = items_->find(item); held != items_->end())
    return *held;
  writableItems().insert(item);
  return item;
}

RWCollectable* RWBTree::find(const RWCollectable* target) const {
  if (target == nullptr) {
    return nullptr;
  }
  const auto found = items_->find(target);
  return found == items_->end() ? nullptr : *found;
}

RWCollectable* RWBTree::remove(const RWCollectable* target) {
  if (target == nullptr) {
    return nullptr;
  }
  if (items_->find(target) == items_->end())
    return nullptr;
  Items& items = writableItems();
  const auto found = items.find(target);
  RWCollectable* item = *found;
  items.erase(found);
  return item;
}

void RWBTree::clear() {
  if (items_.use_count() > 1)
    items_ = std::make_shared<Items>();
  else
    items_->clear();
}

std::vector<RWCollectable*> RWBTree::items() const {
  return {items_->begin(), items_->end()};
}

RWCollectable* RWBTreeIterator::operator()() {
  if (next_ == end_) {
    current_ = nullptr;
    return nullptr;
  }
  current_ = *next_++;
  return current_;
}

void RWBTreeIterator::reset() {
  next_ = tree_->begin();
  end_ = tree_->end();
  current_ = nullptr;
}
