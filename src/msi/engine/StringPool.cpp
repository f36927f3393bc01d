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

StringPool::StringPool() : index_(0, TextHash{this}, TextEqual{this}) {
  starts_.push_back(kEmpty);
  lengths_.push_back(0);
}

std::size_t StringPool::TextHash::operator()(std::uint32_t id) const {
  return std::hash<std::u16string_view>{}(pool->get(id));
}

std::size_t StringPool::TextHash::operator()(std::u16string_view text) const {
  return std::hash<std::u16string_view>{}(text);
}

bool StringPool::TextEqual::operator()(std::uint32_t a, std::uint32_t b) const {
  return pool->get(a) == pool->get(b);
}

bool StringPool::TextEqual::operator()(std::u16string_view text, std::uint32_t id) const {
  return text == pool->get(id);
}

bool StringPool::TextEqual::operator()(std::uint32_t id, std::u16string_view text) const {
  return pool->get(id) == text;
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
  index_.insert(id);
  return id;
}

std::uint32_t StringPool::find(std::u16string_view text) const {
  if (!indexed_)
    buildIndex();
  auto found = index_.find(text);
  return found == index_.end() ? 0 : *found;
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
  indexed_ = false;
}

void StringPool::buildIndex() const {
  index_.reserve(lengths_.size());
  // The first id of a duplicated string wins, so lookups are stable.
  for (std::uint32_t id = 1; id < lengths_.size(); ++id) {
    if (lengths_[id] != 0)
      index_.insert(id);
  }
  indexed_ = true;
}

}  // namespace odlex::engine
