#pragma once
// RWBTree: an ordered set of RWCollectable pointers, sorted by compareTo(). Two items that
// compare equal cannot both be held. Copying a tree copies the pointers, not the objects.
// Operations are O(log n).

#include <set>

#include "odlex/support/RWCollection.h"

class RWBTree : public RWCollection {
  struct Less {
    using is_transparent = void;
    bool operator()(const RWCollectable* a, const RWCollectable* b) const {
      return a->compareTo(b) < 0;
    }
  };
  using Items = std::set<RWCollectable*, Less>;

 public:
  using const_iterator = Items::const_iterator;

  RWBTree() = default;

  std::size_t entries() const override { return items_.size(); }
  // Adds `item` and returns it. When an item that compares equal is already held, nothing is
  // added and that item is returned instead. Null is refused (returns null).
  RWCollectable* insert(RWCollectable* item) override;
  // The held item that compares equal to `target`, or null.
  RWCollectable* find(const RWCollectable* target) const override;
  RWCollectable* remove(const RWCollectable* target) override;
  void clear() override { items_.clear(); }

  // In order, smallest first.
  const_iterator begin() const { return items_.begin(); }
  const_iterator end() const { return items_.end(); }

 protected:
  std::vector<RWCollectable*> items() const override;

 private:
  Items items_;
};

// Walks a tree in order: each call of operator() returns the next item, null after the last.
// The item last returned may be removed from the tree while walking; removing any other item
// invalidates the iterator (copy the tree first to remove freely). Inserting does not.
class RWBTreeIterator {
 public:
  explicit RWBTreeIterator(const RWBTree& tree) : tree_(&tree), next_(tree.begin()) {}

  RWCollectable* operator()();
  // The item last returned by operator(), or null before the first and after the last.
  RWCollectable* key() const { return current_; }
  // Starts again from the smallest item.
  void reset();

 private:
  const RWBTree* tree_;
  RWBTree::const_iterator next_;
  RWCollectable* current_ = nullptr;
};
