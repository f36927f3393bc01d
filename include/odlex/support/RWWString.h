#pragma once
// RWWString: the wide (UTF-16) string that the collection and text classes are written
// against. Holds char16_t code units in a std::u16string. Positions and lengths count code
// units. No operation throws for a position out of range: reads past the end give an empty
// result or U+0000, edits past the end are clamped to the end.

#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "odlex/support/RWDefs.h"

class RWWString {
 public:
  enum caseCompare { exact, ignoreCase };
  enum stripType { leading = 0x1, trailing = 0x2, both = 0x3 };

  RWWString() = default;
  RWWString(const char16_t* text);  // null counts as empty
  RWWString(std::u16string text) : text_(std::move(text)) {}
  RWWString(std::u16string_view text) : text_(text) {}
  explicit RWWString(char16_t c) : text_(1, c) {}

  // Size and access.
  std::size_t length() const { return text_.size(); }
  bool isNull() const { return text_.empty(); }
  const char16_t* data() const { return text_.c_str(); }
  char16_t operator[](std::size_t i) const { return i < text_.size() ? text_[i] : u'\0'; }
  const std::u16string& u16() const { return text_; }
  std::u16string& u16() { return text_; }

  // Comparison: exact compares code units; ignoreCase compares simple case foldings.
  // Returns a negative number, 0 or a positive number.
  int compareTo(const RWWString& other, caseCompare cmp = exact) const;
  unsigned hash(caseCompare cmp = exact) const;

  // Searching: the position of the first occurrence at or after `start`, or RW_NPOS.
  std::size_t index(const RWWString& pattern, std::size_t start = 0, caseCompare cmp = exact) const;
  bool contains(const RWWString& pattern, caseCompare cmp = exact) const;
  std::size_t first(char16_t c) const;  // first position of c, or RW_NPOS
  std::size_t last(char16_t c) const;   // last position of c, or RW_NPOS

  // Copies of parts. `len` is clamped to what is there.
  RWWString subString(std::size_t start, std::size_t len = RW_NPOS) const;
  RWWString operator()(std::size_t start, std::size_t len) const { return subString(start, len); }
  // Removes runs of `c` at the leading end, the trailing end or both.
  RWWString strip(stripType where = trailing, char16_t c = u' ') const;

  // Editing in place; each returns *this.
  RWWString& append(const RWWString& text);
  RWWString& append(char16_t c, std::size_t count = 1);
  RWWString& prepend(const RWWString& text);
  RWWString& insert(std::size_t pos, const RWWString& text);
  RWWString& remove(std::size_t pos, std::size_t len = RW_NPOS);
  RWWString& replace(std::size_t pos, std::size_t len, const RWWString& text);
  RWWString& operator+=(const RWWString& text) { return append(text); }
  RWWString& operator+=(char16_t c) { return append(c); }
  void toUpper();
  void toLower();

  // UTF-8 form of the text; a lone surrogate becomes U+FFFD.
  std::string ToUtf8() const;

  friend bool operator==(const RWWString& a, const RWWString& b) { return a.text_ == b.text_; }
  friend bool operator==(const RWWString& a, const char16_t* b);
  friend std::strong_ordering operator<=>(const RWWString& a, const RWWString& b) {
    return a.text_ <=> b.text_;
  }
  friend std::strong_ordering operator<=>(const RWWString& a, const char16_t* b);

 private:
  std::u16string text_;
};

RWWString operator+(const RWWString& a, const RWWString& b);
// Copies converted with the simple case mapping.
RWWString toUpper(const RWWString& s);
RWWString toLower(const RWWString& s);

template <>
struct std::hash<RWWString> {
  std::size_t operator()(const RWWString& s) const { return s.hash(); }
};
