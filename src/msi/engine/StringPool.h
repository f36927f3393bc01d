#pragma once
// The database's shared string table. Every text cell holds the id of a string here; id 0
// is the null string. Ids are stable for the life of the database, and so are the views
// get() returns: strings are packed into large chunks that never move, so a package with
// hundreds of thousands of strings costs little more than its text.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace odlex::engine {

class StringPool {
 public:
  StringPool();
  StringPool(const StringPool&) = delete;
  StringPool& operator=(const StringPool&) = delete;

  // The string with this id; empty for 0 or an unknown id.
  std::u16string_view get(std::uint32_t id) const {
    return id < lengths_.size() ? std::u16string_view(starts_[id], lengths_[id])
                                : std::u16string_view();
  }
  // The id of `text`, adding it when new. The empty string is null (id 0).
  std::uint32_t intern(std::u16string_view text);
  // The id of `text`, or 0 when it is not in the pool.
  std::uint32_t find(std::u16string_view text) const;
  // The id intern(get(id)) gives: `id` itself unless its text is empty (0) or is held under an
  // earlier id too (a loaded pool may repeat a string), without looking the text up when the
  // pool holds no string twice.
  std::uint32_t canonical(std::uint32_t id) const;
  // Whether some text is held under more than one id (a loaded pool may repeat a string).
  bool repeatsText() const;
  // Number of ids in use, including the null id 0.
  std::uint32_t size() const { return static_cast<std::uint32_t>(lengths_.size()); }

  // Loading, into a pool just cleared: append strings in id order (id 1 first). Empty entries
  // keep their id unused. The index of lookups is built after, on the first one.
  void appendLoaded(std::u16string_view text);
  void clear();

 private:
  std::uint32_t append(std::u16string_view text);
  void buildIndex() const;
  // Files `id` in the index; false when its text is filed under an earlier id already.
  bool addToIndex(std::uint32_t id) const;
  // The slot of the index that holds the id of `text`, or the empty slot where it would go.
  std::uint32_t& slotOf(std::u16string_view text, std::size_t hash) const;

  std::vector<std::unique_ptr<char16_t[]>> chunks_;
  char16_t* current_ = nullptr;  // the chunk short strings are packed into
  std::size_t currentUsed_ = 0;
  std::vector<const char16_t*> starts_;
  std::vector<std::uint32_t> lengths_;
  // Built on first lookup, so that reading a database never pays for it: ids by the hash of
  // their text, open addressing with linear probing, 0 for an empty slot, at most half full.
  mutable std::vector<std::uint32_t> index_;
  mutable std::size_t indexedCount_ = 0;
  mutable bool indexed_ = false;
  // Some text is held under more than one id; known once the index is built.
  mutable bool repeats_ = false;
};

}  // namespace odlex::engine
