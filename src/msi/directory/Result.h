#pragma once
// The outcome of a directory operation: a value, or the reason there is none. Directory data
// comes from packages and hosts that may be hostile, so the operations report bad input as an
// error text instead of throwing or guessing.

#include <string>
#include <utility>
#include <variant>

namespace odlex::directory {

struct Error {
  std::u16string message;
};

template <typename T>
class Result {
 public:
  Result(T value) : state_(std::move(value)) {}
  Result(Error error) : state_(std::move(error)) {}

  bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }

  // Only valid when ok().
  const T& value() const { return std::get<0>(state_); }
  T& value() { return std::get<0>(state_); }
  const T& operator*() const { return value(); }
  const T* operator->() const { return &value(); }
  T& operator*() { return value(); }
  T* operator->() { return &value(); }

  // Only valid when !ok().
  const std::u16string& error() const { return std::get<1>(state_).message; }

 private:
  std::variant<T, Error> state_;
};

}  // namespace odlex::directory
