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
  // Shared items are looked at before they are copied, so inserting a held item copies nothing.
  if (items_.use_count() > 1) {
    if (const auto held = items_->find(item); held != items_->end())
      return *held;
  }
  return *writableItems().insert(item).first;
}

RWCollectable* RWBTree::append(RWCollectable* item) {
  if (item == nullptr) {
    return nullptr;
  }
  if (items_.use_count() > 1)
    return insert(item);
  // With the end as the hint, an item past the last costs one comparison; any other item is
  // placed (or refused) as insert does.
  const std::size_t before = items_->size();
  const auto at = items_->insert(items_->end(), item);
  return items_->size() == before ? *at : item;
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
  if (items_.use_count() > 1 && items_->find(target) == items_->end())
    return nullptr;
  Items& items = writableItems();
  const auto found = items.find(target);
  if (found == items.end())
    return nullptr;
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
