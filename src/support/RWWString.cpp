#include "odlex/support/RWWString.h"

#include <algorithm>
#include <cstdint>

#include "odlex/support/CaseMapping.h"
#include "odlex/support/Utf8.h"

namespace {

char16_t Fold(char16_t c, RWWString::caseCompare cmp) {
  return cmp == RWWString::ignoreCase ? odlex::FoldCaseChar(c) : c;
}

int Compare(std::u16string_view a, std::u16string_view b, RWWString::caseCompare cmp) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const char16_t x = Fold(a[i], cmp);
    const char16_t y = Fold(b[i], cmp);
    if (x != y) {
      return x < y ? -1 : 1;
    }
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

std::size_t Clamp(std::size_t pos, std::size_t size) {
  return std::min(pos, size);
}

}  // namespace

RWWString::RWWString(const char16_t* text) {
  if (text != nullptr) {
    text_ = text;
  }
}

int RWWString::compareTo(const RWWString& other, caseCompare cmp) const {
  return Compare(text_, other.text_, cmp);
}

unsigned RWWString::hash(caseCompare cmp) const {
  // FNV-1a over the (folded) code units.
  std::uint32_t h = 2166136261u;
  for (char16_t c : text_) {
    const char16_t unit = Fold(c, cmp);
    h = (h ^ (unit & 0xFF)) * 16777619u;
    h = (h ^ (unit >> 8)) * 16777619u;
  }
  return h;
}

std::size_t RWWString::index(const RWWString& pattern, std::size_t start, caseCompare cmp) const {
  const std::size_t n = pattern.length();
  if (start > text_.size() || n > text_.size() - start) {
    return RW_NPOS;
  }
  if (cmp == exact) {
    const std::size_t found = text_.find(pattern.text_, start);
    return found == std::u16string::npos ? RW_NPOS : found;
  }
  const std::u16string_view view(text_);
  for (std::size_t i = start; i + n <= text_.size(); ++i) {
    if (Compare(view.substr(i, n), pattern.text_, cmp) == 0) {
      return i;
    }
  }
  return RW_NPOS;
}

bool RWWString::contains(const RWWString& pattern, caseCompare cmp) const {
  return index(pattern, 0, cmp) != RW_NPOS;
}

std::size_t RWWString::first(char16_t c) const {
  const std::size_t found = text_.find(c);
  return found == std::u16string::npos ? RW_NPOS : found;
}

std::size_t RWWString::last(char16_t c) const {
  const std::size_t found = text_.rfind(c);
  return found == std::u16string::npos ? RW_NPOS : found;
}

RWWString RWWString::subString(std::size_t start, std::size_t len) const {
  if (start >= text_.size()) {
    return RWWString();
  }
  return RWWString(text_.substr(start, len));
}

RWWString RWWString::strip(stripType where, char16_t c) const {
  std::size_t begin = 0;
  std::size_t end = text_.size();
  if (where & leading) {
    while (begin < end && text_[begin] == c) {
      ++begin;
    }
  }
  if (where & trailing) {
    while (end > begin && text_[end - 1] == c) {
      --end;
    }
  }
  return RWWString(text_.substr(begin, end - begin));
}

RWWString& RWWString::append(const RWWString& text) {
  text_ += text.text_;
  return *this;
}

RWWString& RWWString::append(char16_t c, std::size_t count) {
  text_.append(count, c);
  return *this;
}

RWWString& RWWString::prepend(const RWWString& text) {
  return insert(0, text);
}

RWWString& RWWString::insert(std::size_t pos, const RWWString& text) {
  text_.insert(Clamp(pos, text_.size()), text.text_);
  return *this;
}

RWWString& RWWString::remove(std::size_t pos, std::size_t len) {
  text_.erase(Clamp(pos, text_.size()), len);
  return *this;
}

RWWString& RWWString::replace(std::size_t pos, std::size_t len, const RWWString& text) {
  text_.replace(Clamp(pos, text_.size()), len, text.text_);
  return *this;
}

void RWWString::toUpper() {
  std::transform(text_.begin(), text_.end(), text_.begin(), odlex::ToUpperChar);
}

void RWWString::toLower() {
  std::transform(text_.begin(), text_.end(), text_.begin(), odlex::ToLowerChar);
}

std::string RWWString::ToUtf8() const {
  return odlex::Utf16ToUtf8(text_);
}

bool operator==(const RWWString& a, const char16_t* b) {
  return a.text_ == std::u16string_view(b ? b : u"");
}

std::strong_ordering operator<=>(const RWWString& a, const char16_t* b) {
  return std::u16string_view(a.text_) <=> std::u16string_view(b ? b : u"");
}

RWWString operator+(const RWWString& a, const RWWString& b) {
  RWWString result(a);
  result.append(b);
  return result;
}

RWWString toUpper(const RWWString& s) {
  RWWString result(s);
  result.toUpper();
  return result;
}

RWWString toLower(const RWWString& s) {
  RWWString result(s);
  result.toLower();
  return result;
}
