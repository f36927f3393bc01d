#pragma once
// RWCollection: what every collection of RWCollectable pointers offers. A collection holds
// pointers and never owns the objects, except that the *AndDestroy operations delete them.
// Nothing here is locked: collections are for the host's thread only.

#include <cstddef>
#include <vector>

#include "odlex/support/RWCollectable.h"
#include "odlex/support/RWDefs.h"

class RWCollection {
 public:
  virtual ~RWCollection() = default;

  virtual std::size_t entries() const = 0;
  // Adds `item`; returns the pointer now held for it (see the collection), or null.
  virtual RWCollectable* insert(RWCollectable* item) = 0;
  // The held item that matches `target` (see the collection), or null.
  virtual RWCollectable* find(const RWCollectable* target) const = 0;
  // Takes the held item that matches `target` out of the collection and returns it, or null.
  virtual RWCollectable* remove(const RWCollectable* target) = 0;
  // Forgets every item without deleting it.
  virtual void clear() = 0;

  bool isEmpty() const { return entries() == 0; }
  bool contains(const RWCollectable* target) const { return find(target) != nullptr; }
  // Removes the matching item and deletes it.
  void removeAndDestroy(const RWCollectable* target);
  // Deletes every item (each distinct pointer once) and empties the collection.
  void clearAndDestroy();

 protected:
  RWCollection() = default;
  RWCollection(const RWCollection&) = default;
  RWCollection& operator=(const RWCollection&) = default;

  // Every held pointer, in the collection's order.
  virtual std::vector<RWCollectable*> items() const = 0;
};
