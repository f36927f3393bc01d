#pragma once
// Numbers of nullable integer cells and summary properties: a value and a null flag.
//
//   NullableShort        unsigned 16-bit (i2 columns read as unsigned)
//   NullableSignedShort  signed 16-bit (i2 columns: sequence numbers, attributes)
//   NullableLong         signed 32-bit (i4 columns, summary integers)
//   NullableQuad         unsigned 64-bit (summary times as FILETIME: 100 ns since 1601 UTC)
//
// A default-constructed number is null. Get() (and the conversion to the plain type) of a null
// gives the type's null value: for the signed types the smallest value, which is the value the
// installer reserves as its null marker (-32768 and 0x80000000); 0 for the unsigned types.
// Two nulls compare equal; a null sorts before every value.

#include <compare>
#include <concepts>
#include <cstdint>
#include <limits>
#include <utility>

template <typename T>
class Nullable {
 public:
  using value_type = T;
  static constexpr T NullValue = std::numeric_limits<T>::min();

  constexpr Nullable() = default;
  constexpr Nullable(T value) : value_(value), null_(false) {}

  constexpr bool IsNull() const { return null_; }
  constexpr T Get() const { return null_ ? NullValue : value_; }
  constexpr operator T() const { return Get(); }
  constexpr void Set(T value) {
    value_ = value;
    null_ = false;
  }
  constexpr void SetNull() {
    value_ = T{};
    null_ = true;
  }

  friend constexpr bool operator==(const Nullable& a, const Nullable& b) {
    return a.null_ == b.null_ && (a.null_ || a.value_ == b.value_);
  }
  friend constexpr std::strong_ordering operator<=>(const Nullable& a, const Nullable& b) {
    if (a.null_ || b.null_)
      return b.null_ <=> a.null_;
    return a.value_ <=> b.value_;
  }
  // Against a plain number (of any integer type, compared by value): a null is never equal
  // and sorts first.
  template <std::integral U>
  friend constexpr bool operator==(const Nullable& a, U b) {
    return !a.null_ && std::cmp_equal(a.value_, b);
  }
  template <std::integral U>
  friend constexpr std::strong_ordering operator<=>(const Nullable& a, U b) {
    if (a.null_ || std::cmp_less(a.value_, b))
      return std::strong_ordering::less;
    return std::cmp_equal(a.value_, b) ? std::strong_ordering::equal
                                       : std::strong_ordering::greater;
  }

 private:
  T value_{};
  bool null_ = true;
};

class NullableShort : public Nullable<std::uint16_t> {
 public:
  using Nullable::Nullable;
};
class NullableSignedShort : public Nullable<std::int16_t> {
 public:
  using Nullable::Nullable;
};
class NullableLong : public Nullable<std::int32_t> {
 public:
  using Nullable::Nullable;
};
class NullableQuad : public Nullable<std::uint64_t> {
 public:
  using Nullable::Nullable;
};
