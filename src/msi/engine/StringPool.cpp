#include "msi/engine/StringPool.h"

namespace odlex::engine {

std::uint32_t StringPool::intern(std::u16string_view text) {
  if (text.empty()) return 0;
  if (std::uint32_t id = find(text)) return id;
  auto id = static_cast<std::uint32_t>(strings_.size());
  strings_.emplace_back(text);
  index_.emplace(std::u16string_view(strings_.back()), id);
  return id;
}

std::uint32_t StringPool::find(std::u16string_view text) const {
  if (text.empty()) return 0;
  if (!indexed_) buildIndex();
  auto found = index_.find(text);
  return found == index_.end() ? 0 : found->second;
}

void StringPool::appendLoaded(std::u16string text) {
  strings_.push_back(std::move(text));
  if (indexed_ && !strings_.back().empty()) {
    index_.emplace(std::u16string_view(strings_.back()),
                   static_cast<std::uint32_t>(strings_.size() - 1));
  }
}

void StringPool::clear() {
  strings_.clear();
  strings_.emplace_back();
  index_.clear();
  indexed_ = false;
}

void StringPool::buildIndex() const {
  index_.reserve(strings_.size());
  // The first id of a duplicated string wins, so lookups are stable.
  for (std::uint32_t id = 1; id < strings_.size(); ++id) {
    if (!strings_[id].empty()) index_.emplace(std::u16string_view(strings_[id]), id);
  }
  indexed_ = true;
}

}  // namespace odlex::engine
