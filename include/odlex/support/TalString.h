#pragma once
// TalString: the wide string in which every name, key, path and value passes. It is an
// RWWString with conversions (UTF-8, numbers) and two message formatters added; every
// RWWString result converts back to a TalString implicitly.

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "odlex/support/RWWString.h"

namespace odlex {

// One argument of TalString::Format: a text or a number.
class FormatArg {
 public:
  FormatArg(const RWWString& text) : value_(std::u16string_view(text.u16())) {}
  FormatArg(const char16_t* text) : value_(std::u16string_view(text ? text : u"")) {}
  FormatArg(const std::u16string& text) : value_(std::u16string_view(text)) {}
  FormatArg(std::u16string_view text) : value_(text) {}
  FormatArg(int n) : value_(static_cast<std::int64_t>(n)) {}
  FormatArg(long n) : value_(static_cast<std::int64_t>(n)) {}
  FormatArg(long long n) : value_(static_cast<std::int64_t>(n)) {}
  FormatArg(unsigned n) : value_(static_cast<std::uint64_t>(n)) {}
  FormatArg(unsigned long n) : value_(static_cast<std::uint64_t>(n)) {}
  FormatArg(unsigned long long n) : value_(static_cast<std::uint64_t>(n)) {}

  const std::variant<std::u16string_view, std::int64_t, std::uint64_t>& value() const {
    return value_;
  }

 private:
  std::variant<std::u16string_view, std::int64_t, std::uint64_t> value_;
};

}  // namespace odlex

class TalString : public RWWString {
 public:
  using RWWString::RWWString;
  TalString() = default;
  TalString(const RWWString& s) : RWWString(s) {}
  TalString(RWWString&& s) : RWWString(std::move(s)) {}

  // UTF-8 to UTF-16; an ill-formed sequence becomes U+FFFD. Never throws.
  static TalString FromUtf8(std::string_view utf8);

  // printf-style formatting with type-safe arguments, for example
  //   TalString::Format(u"SELECT `Value` FROM `Property` WHERE `Property`='%s'", name)
  // Directives: %s (text), %d / %i (signed decimal), %u (unsigned decimal), %x / %X (hex),
  // %c (one code unit from a number), %% (a percent sign). A '0' flag and a field width
  // (up to 99) may come between '%' and the letter, and the length modifiers l, ll, h are
  // accepted and ignored, so format strings written for wide printf work unchanged. An
  // argument of the other kind is written in its natural form (a number for %s, the text for
  // %d); a missing argument writes nothing; an unknown directive is copied as written.
  template <typename... Args>
  static TalString Format(const char16_t* format, const Args&... args) {
    const odlex::FormatArg list[] = {odlex::FormatArg(args)..., odlex::FormatArg(0)};
    return FormatList(format, std::span(list, sizeof...(Args)));
  }
  static TalString FormatList(const char16_t* format, std::span<const odlex::FormatArg> args);

  // Message-table formatting: expands the inserts %1 ... %99 of `message` with
  // `inserts[0]`, ... (an insert may carry a "!printf-format!" suffix, which is skipped: the
  // inserts are texts). Also %n -> "\r\n", %r -> "\r", %t -> tab, %0 -> end of message (no
  // further text), %% %. %! %space -> the character itself. An insert number beyond the list
  // writes nothing.
  static TalString FormatMessageW(const RWWString& message, std::span<const TalString> inserts);
  static TalString FormatMessageW(const RWWString& message,
                                  std::initializer_list<TalString> inserts) {
    return FormatMessageW(message, std::span(inserts.begin(), inserts.size()));
  }

  // The operating system's text for an error number (errno), as UTF-16.
  static TalString SystemMessage(int errorNumber);

  // Decimal text of a number, with a '-' for negative numbers.
  static TalString FromInt(std::int64_t n);
  // The number that the whole text spells: an optional '+' or '-' and decimal digits, nothing
  // else (no spaces). Empty, malformed or out-of-range text gives nullopt.
  std::optional<std::int64_t> ToInt() const;
};

template <>
struct std::hash<TalString> {
  std::size_t operator()(const TalString& s) const { return s.hash(); }
};
