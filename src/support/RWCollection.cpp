#include "odlex/support/RWCollection.h"

#include <unordered_set>

void RWCollection::removeAndDestroy(const RWCollectable* target) {
  delete remove(target);
}

void RWCollection::clearAndDestroy() {
  const std::vector<RWCollectable*> held = items();
  clear();
  std::unordered_set<RWCollectable*> deleted;
  for (RWCollectable* item : held) {
    if (deleted.insert(item).second) {
      delete item;
    }
  }
}
