#pragma once
// The database's shared string table. Every text cell holds the id of a string here; id 0
// is the null string. Ids are stable for the life of the database, and so are the views
// get() returns: strings are packed into large chunks that never move, so a package with
// hundreds of thousands of strings costs little more than its text.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
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
  // Number of ids in use, including the null id 0.
  std::uint32_t size() const { return static_cast<std::uint32_t>(lengths_.size()); }

  // Loading, into a pool just cleared: append strings in id order (id 1 first). Empty entries
  // keep their id unused. The index of lookups is built after, on the first one.
  void appendLoaded(std::u16string_view text);
  void clear();

 private:
  // Hashes and compares ids by their text, and looks text up without copying it.
  struct TextHash {
    using is_transparent = void;
    const StringPool* pool;
    std::size_t operator()(std::uint32_t id) const;
    std::size_t operator()(std::u16string_view text) const;
  };
  struct TextEqual {
    using is_transparent = void;
    const StringPool* pool;
    bool operator()(std::uint32_t a, std::uint32_t b) const;
    bool operator()(std::u16string_view text, std::uint32_t id) const;
    bool operator()(std::uint32_t id, std::u16string_view text) const;
  };

  std::uint32_t append(std::u16string_view text);
  void buildIndex() const;

  std::vector<std::unique_ptr<char16_t[]>> chunks_;
  char16_t* current_ = nullptr;  // the chunk short strings are packed into
  std::size_t currentUsed_ = 0;
  std::vector<const char16_t*> starts_;
  std::vector<std::uint32_t> lengths_;
  // Built on first lookup, so that reading a database never pays for it.
  mutable std::unordered_set<std::uint32_t, TextHash, TextEqual> index_;
  mutable bool indexed_ = false;
};

}  // namespace odlex::engine
