#pragma once
// RWCollectable: the base of every object kept in the collections (RWBTree, RWOrdered) and
// created by class id through the factory (RWFactory).
//
// A derived class overrides isA() (its fixed class id), newSpecies() and copy(), and, when
// its objects are to be ordered or looked up by value, compareTo(), isEqual() and hash().
// The defaults work by identity: compareTo orders objects of different classes by class id
// and objects of one class by address; isEqual and hash use the address.

#include <cstddef>

using RWClassID = unsigned short;

// Class id of RWCollectable itself, and the "no such class" answer of the factory. Both lie
// above the ids that the library's own classes use.
inline constexpr RWClassID RWCollectableClassID = 0xC000;
inline constexpr RWClassID RWUnknownClassID = 0xFFFF;

class RWCollectable {
 public:
  RWCollectable() = default;
  RWCollectable(const RWCollectable&) = default;
  RWCollectable& operator=(const RWCollectable&) = default;
  virtual ~RWCollectable() = default;

  // A new default-constructed object of the same class, or null.
  virtual RWCollectable* newSpecies() const;
  // A new copy of this object, or null.
  virtual RWCollectable* copy() const;
  virtual RWClassID isA() const;
  static RWClassID classIsA() { return RWCollectableClassID; }

  // Negative, 0 or positive as this object sorts before, with or after `other`.
  virtual int compareTo(const RWCollectable* other) const;
  virtual unsigned hash() const;
  virtual bool isEqual(const RWCollectable* other) const;
};
