#include "msi/engine/StringPool.h"

#include <algorithm>
#include <functional>

namespace odlex::engine {

namespace {
// Strings are packed into chunks of this many code units; a longer string gets a chunk of
// its own.
constexpr std::size_t kChunkUnits = std::size_t{1} << 16;
constexpr char16_t kEmpty[] = u"";
}  // namespace

StringPool::StringPool() {
  starts_.push_back(kEmpty);
  lengths_.push_back(0);
}

std::uint32_t StringPool::append(std::u16string_view text) {
  const char16_t* start = kEmpty;
  if (!text.empty()) {
    char16_t* destination;
    if (text.size() > kChunkUnits / 4) {
      chunks_.push_back(std::make_unique_for_overwrite<char16_t[]>(text.size()));
      destination = chunks_.back().get();
    } else {
      if (kChunkUnits - currentUsed_ < text.size() || current_ == nullptr) {
        chunks_.push_back(std::make_unique_for_overwrite<char16_t[]>(kChunkUnits));
        current_ = chunks_.back().get();
        currentUsed_ = 0;
      }
      destination = current_ + currentUsed_;
      currentUsed_ += text.size();
    }
    std::copy(text.begin(), text.end(), destination);
    start = destination;
  }
  starts_.push_back(start);
  lengths_.push_back(static_cast<std::uint32_t>(text.size()));
  return static_cast<std::uint32_t>(lengths_.size() - 1);
}

std::uint32_t StringPool::intern(std::u16string_view text) {
  if (text.empty())
    return 0;
  if (std::uint32_t id = find(text))
    return id;
  std::uint32_t id = append(text);
  addToIndex(id);
  return id;
}

std::uint32_t StringPool::find(std::u16string_view text) const {
  if (!indexed_)
    buildIndex();
  return slotOf(text, std::hash<std::u16string_view>{}(text));
}

std::uint32_t& StringPool::slotOf(std::u16string_view text, std::size_t hash) const {
  const std::size_t mask = index_.size() - 1;
  for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
    std::uint32_t& id = index_[slot];
    if (id == 0 || get(id) == text)
      return id;
  }
}

bool StringPool::addToIndex(std::uint32_t id) const {
  if ((indexedCount_ + 1) * 2 > index_.size()) {
    // Grows to four times the ids filed; each filed text is filed once, under its first id.
    std::vector<std::uint32_t> filed;
    filed.reserve(indexedCount_);
    for (const std::uint32_t held : index_) {
      if (held != 0)
        filed.push_back(held);
    }
    std::size_t size = 16;
    while (size < (indexedCount_ + 1) * 4)
      size *= 2;
    index_.assign(size, 0);
    for (const std::uint32_t held : filed)
      slotOf(get(held), std::hash<std::u16string_view>{}(get(held))) = held;
  }
  std::uint32_t& slot = slotOf(get(id), std::hash<std::u16string_view>{}(get(id)));
  if (slot != 0)
    return false;
  slot = id;
  ++indexedCount_;
  return true;
}

std::uint32_t StringPool::canonical(std::uint32_t id) const {
  if (id >= lengths_.size() || lengths_[id] == 0)
    return 0;
  if (!indexed_)
    buildIndex();
  return repeats_ ? find(get(id)) : id;
}

bool StringPool::repeatsText() const {
  if (!indexed_)
    buildIndex();
  return repeats_;
}

void StringPool::appendLoaded(std::u16string_view text) {
  append(text);
}

void StringPool::clear() {
  chunks_.clear();
  current_ = nullptr;
  currentUsed_ = 0;
  starts_.assign(1, kEmpty);
  lengths_.assign(1, 0);
  index_.clear();
  indexedCount_ = 0;
  indexed_ = false;
  repeats_ = false;
}

void StringPool::buildIndex() const {
  std::size_t size = 16;
  while (size < lengths_.size() * 2)
    size *= 2;
  index_.assign(size, 0);
  indexedCount_ = 0;
  // The first id of a repeated string wins, so lookups are stable.
  for (std::uint32_t id = 1; id < lengths_.size(); ++id) {
    if (lengths_[id] != 0 && !addToIndex(id))
      repeats_ = true;
  }
  indexed_ = true;
}

}  // namespace odlex::engine
