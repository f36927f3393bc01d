#pragma once
// RWStringID: the name under which a collectable class registers with the factory, next to
// its numeric class id (for example "ODLEXTActionText"). Plain narrow text.

#include <functional>
#include <string>

class RWStringID {
 public:
  RWStringID() = default;
  RWStringID(const char* name) : name_(name ? name : "") {}
  RWStringID(std::string name) : name_(std::move(name)) {}

  const std::string& str() const { return name_; }
  const char* data() const { return name_.c_str(); }

  friend auto operator<=>(const RWStringID&, const RWStringID&) = default;

 private:
  std::string name_;
};

template <>
struct std::hash<RWStringID> {
  std::size_t operator()(const RWStringID& id) const { return std::hash<std::string>()(id.str()); }
};
