#pragma once
// RWFactory: creates collectable objects from their class id or class name. Each collectable
// class registers a creator function under its fixed id and its name when the library is
// loaded and removes it when the library is unloaded (odlex::FactoryRegistration does both).
// There is one process-wide factory, getRWFactory(). Nothing is locked: registration happens
// during static initialisation and everything else on the host's thread.

#include <cstddef>
#include <new>
#include <unordered_map>

#include "odlex/support/RWCollectable.h"
#include "odlex/support/RWStringID.h"

// Returns a new object of one class, or null.
using RWUserCreator = RWCollectable* (*)();

class RWFactory {
 public:
  RWFactory() = default;
  RWFactory(const RWFactory&) = delete;
  RWFactory& operator=(const RWFactory&) = delete;

  // Registers `creator` under `id` and `name`. A second registration of the same id (or name)
  // replaces the first.
  void addFunction(RWUserCreator creator, RWClassID id, const RWStringID& name);
  void removeFunction(RWClassID id);
  void removeFunction(const RWStringID& name);

  // A new object of the registered class, or null when nothing is registered or the creator
  // returned null.
  RWCollectable* create(RWClassID id) const;
  RWCollectable* create(const RWStringID& name) const;
  RWUserCreator getFunction(RWClassID id) const;
  RWUserCreator getFunction(const RWStringID& name) const;
  // The id registered under `name`, or RWUnknownClassID; the name registered for `id`, or "".
  RWClassID classID(const RWStringID& name) const;
  RWStringID stringID(RWClassID id) const;

  std::size_t entries() const { return byId_.size(); }
  // Bucket count of the id table, and a request to grow it (never below what it holds).
  std::size_t buckets() const { return byId_.bucket_count(); }
  void resize(std::size_t buckets) { byId_.rehash(buckets); }

 private:
  struct Entry {
    RWUserCreator creator;
    RWStringID name;
  };
  std::unordered_map<RWClassID, Entry> byId_;
  std::unordered_map<RWStringID, RWClassID> byName_;
};

// The process-wide factory: created on first use, never null, never destroyed (so that
// registrations undone during static destruction always find it).
RWFactory* getRWFactory();
void rwAddToFactory(RWUserCreator creator, RWClassID id, const RWStringID& name);
void rwRemoveFromFactory(RWClassID id);
void rwRemoveFromFactory(const RWStringID& name);

namespace odlex {

// Creator for a default-constructible collectable class.
template <typename T>
RWCollectable* CreateDefault() {
  return new (std::nothrow) T();
}

// Registers a class with the process-wide factory for as long as it lives: define one as a
// static object in the class's source file, e.g.
//   static const odlex::FactoryRegistration registration(&odlex::CreateDefault<ODLEXTIcon>,
//                                                        ODLEXTIcon::classIsA(), "ODLEXTIcon");
class FactoryRegistration {
 public:
  FactoryRegistration(RWUserCreator creator, RWClassID id, const RWStringID& name);
  ~FactoryRegistration();
  FactoryRegistration(const FactoryRegistration&) = delete;
  FactoryRegistration& operator=(const FactoryRegistration&) = delete;

 private:
  RWClassID id_;
  RWStringID name_;
};

}  // namespace odlex
