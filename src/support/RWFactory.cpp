#include "odlex/support/RWFactory.h"

void RWFactory::addFunction(RWUserCreator creator, RWClassID id, const RWStringID& name) {
  removeFunction(id);
  removeFunction(name);
  byId_[id] = Entry{creator, name};
  byName_[name] = id;
}

void RWFactory::removeFunction(RWClassID id) {
  const auto found = byId_.find(id);
  if (found == byId_.end()) {
    return;
  }
  byName_.erase(found->second.name);
  byId_.erase(found);
}

void RWFactory::removeFunction(const RWStringID& name) {
  const auto found = byName_.find(name);
  if (found != byName_.end()) {
    removeFunction(found->second);
  }
}

RWCollectable* RWFactory::create(RWClassID id) const {
  const RWUserCreator creator = getFunction(id);
  return creator ? creator() : nullptr;
}

RWCollectable* RWFactory::create(const RWStringID& name) const {
  return create(classID(name));
}

RWUserCreator RWFactory::getFunction(RWClassID id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : found->second.creator;
}

RWUserCreator RWFactory::getFunction(const RWStringID& name) const {
  return getFunction(classID(name));
}

RWClassID RWFactory::classID(const RWStringID& name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? RWUnknownClassID : found->second;
}

RWStringID RWFactory::stringID(RWClassID id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? RWStringID() : found->second.name;
}

RWFactory* getRWFactory() {
  // Deliberately never destroyed: registrations are undone by static objects whose
  // destruction order relative to this one is not known.
  static RWFactory* const factory = new RWFactory();
  return factory;
}

void rwAddToFactory(RWUserCreator creator, RWClassID id, const RWStringID& name) {
  getRWFactory()->addFunction(creator, id, name);
}

void rwRemoveFromFactory(RWClassID id) {
  getRWFactory()->removeFunction(id);
}

void rwRemoveFromFactory(const RWStringID& name) {
  getRWFactory()->removeFunction(name);
}

namespace odlex {

FactoryRegistration::FactoryRegistration(RWUserCreator creator, RWClassID id,
                                         const RWStringID& name)
    : id_(id), name_(name) {
  rwAddToFactory(creator, id, name);
}

FactoryRegistration::~FactoryRegistration() {
  rwRemoveFromFactory(id_);
  rwRemoveFromFactory(name_);
}

}  // namespace odlex
