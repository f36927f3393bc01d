#pragma once
// RWOrdered: RWCollectable pointers in the order in which they were added. Lookups match with
// isEqual() and take the first match. The same pointer may be held more than once. Copying
// copies the pointers, not the objects.

#include <vector>

#include "odlex/support/RWCollection.h"

class RWOrdered : public RWCollection {
 public:
  using const_iterator = std::vector<RWCollectable*>::const_iterator;

  RWOrdered() = default;

  std::size_t entries() const override { return items_.size(); }
  // Adds `item` at the end and returns it; null is refused (returns null).
  RWCollectable* insert(RWCollectable* item) override { return append(item); }
  RWCollectable* append(RWCollectable* item) { return insertAt(items_.size(), item); }
  RWCollectable* prepend(RWCollectable* item) { return insertAt(0, item); }
  // Adds `item` before position `i` (clamped to the end) and returns it.
  RWCollectable* insertAt(std::size_t i, RWCollectable* item);
  RWCollectable* find(const RWCollectable* target) const override;
  RWCollectable* remove(const RWCollectable* target) override;
  void clear() override { items_.clear(); }

  // Item at position `i`, or null when `i` is out of range.
  RWCollectable* at(std::size_t i) const { return i < items_.size() ? items_[i] : nullptr; }
  RWCollectable* first() const { return at(0); }
  RWCollectable* last() const { return items_.empty() ? nullptr : items_.back(); }
  // Position of the first item equal to `target`, or RW_NPOS.
  std::size_t index(const RWCollectable* target) const;
  // Takes the item at position `i` out and returns it, or null when out of range.
  RWCollectable* removeAt(std::size_t i);

  const_iterator begin() const { return items_.begin(); }
  const_iterator end() const { return items_.end(); }

 protected:
  std::vector<RWCollectable*> items() const override { return items_; }

 private:
  std::vector<RWCollectable*> items_;
};
