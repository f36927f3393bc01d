#pragma once
// RWBTree: an ordered set of RWCollectable pointers, sorted by compareTo(). Two items that
// compare equal cannot both be held. Copying a tree copies the pointers, not the objects.
// Operations are O(log n).
//
// Walking a tree (range-for, begin/end, RWBTreeIterator) visits the items held when the walk
// began, each once, whatever the walk's body does to the tree: a host that renames a row's key
// inside a range-for over its table re-files that row in the tree, and the walk neither meets
// it again nor skips another. The items are shared copy-on-write: a walk, like a copy of the
// tree, costs nothing until the tree is changed while it lasts, and then the tree takes a copy
// of its pointers once.

#include <iterator>
#include <memory>
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
  // A position in the items held when the walk began; it keeps them alive while it lasts.
  class const_iterator {
   public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = RWCollectable*;
    using difference_type = std::ptrdiff_t;
    using pointer = RWCollectable* const*;
    using reference = RWCollectable* const&;

    const_iterator() = default;
    reference operator*() const { return *at_; }
    const_iterator& operator++() {
      ++at_;
      return *this;
    }
    const_iterator operator++(int) {
      const_iterator before = *this;
      ++at_;
      return before;
    }
    const_iterator& operator--() {
      --at_;
      return *this;
    }
    const_iterator operator--(int) {
      const_iterator before = *this;
      --at_;
      return before;
    }
    bool operator==(const const_iterator& other) const { return at_ == other.at_; }

   private:
    friend class RWBTree;
    const_iterator(std::shared_ptr<const Items> items, Items::const_iterator at)
        : items_(std::move(items)), at_(at) {}

    std::shared_ptr<const Items> items_;
    Items::const_iterator at_;
  };

  RWBTree() = default;
  RWBTree(const RWBTree&) = default;
  RWBTree& operator=(const RWBTree&) = default;

  std::size_t entries() const override { return items_->size(); }
  // Adds `item` and returns it. When an item that compares equal is already held, nothing is
  // added and that item is returned instead. Null is refused (returns null).
  RWCollectable* insert(RWCollectable* item) override;
  // As insert, in constant time when `item` orders after every item held: loading items that
  // are already in order costs one comparison each instead of a search.
  RWCollectable* append(RWCollectable* item);
  // The held item that compares equal to `target`, or null.
  RWCollectable* find(const RWCollectable* target) const override;
  RWCollectable* remove(const RWCollectable* target) override;
  void clear() override;

  // In order, smallest first.
  const_iterator begin() const { return {items_, items_->begin()}; }
  const_iterator end() const { return {items_, items_->end()}; }

 protected:
  std::vector<RWCollectable*> items() const override;

 private:
  // The items, copied first when a walk or another tree still shares them.
  Items& writableItems();

  std::shared_ptr<Items> items_ = std::make_shared<Items>();
};

// Walks a tree in order: each call of operator() returns the next item, null after the last.
// It visits the items held when it was made (or last reset), whatever is inserted or removed
// meanwhile.
class RWBTreeIterator {
 public:
  explicit RWBTreeIterator(const RWBTree& tree) : tree_(&tree), next_(tree.begin()) {}

  RWCollectable* operator()();
  // The item last returned by operator(), or null before the first and after the last.
  RWCollectable* key() const { return current_; }
  // Starts again from the smallest item held now.
  void reset();

 private:
  const RWBTree* tree_;
  RWBTree::const_iterator next_;
  RWBTree::const_iterator end_ = tree_->end();
  RWCollectable* current_ = nullptr;
};
