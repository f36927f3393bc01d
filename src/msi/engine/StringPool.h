#pragma once
// The database's shared string table. Every text cell holds the id of a string here; id 0
// is the null string. Ids are stable for the life of the database: a saved file keeps the
// ids that were read, so unedited tables are written back with the same bytes.

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace odlex::engine {

class StringPool {
 public:
  // The string with this id; empty for 0 or an unknown id.
  std::u16string_view get(std::uint32_t id) const {
    return id < strings_.size() ? std::u16string_view(strings_[id]) : std::u16string_view();
  }
  // The id of `text`, adding it when new. The empty string is null (id 0).
  std::uint32_t intern(std::u16string_view text);
  // The id of `text`, or 0 when it is not in the pool.
  std::uint32_t find(std::u16string_view text) const;
  // Number of ids in use, including the null id 0.
  std::uint32_t size() const { return static_cast<std::uint32_t>(strings_.size()); }

  // Loading: append strings in id order (id 1 first). Empty entries keep their id unused.
  void appendLoaded(std::u16string text);
  void clear();

 private:
  void buildIndex() const;

  std::deque<std::u16string> strings_{std::u16string()};
  // Built on first lookup, so that reading a database never pays for it.
  mutable std::unordered_map<std::u16string_view, std::uint32_t> index_;
  mutable bool indexed_ = false;
};

}  // namespace odlex::engine
