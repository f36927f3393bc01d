#include "odlex/support/RWWTokenizer.h"

RWWString RWWTokenizer::operator()(const char16_t* delimiters) {
  const std::u16string_view set(delimiters ? delimiters : u" \t\n");
  const std::u16string& text = text_.u16();
  auto isDelimiter = [&set](char16_t c) { return set.find(c) != std::u16string_view::npos; };
  while (position_ < text.size() && isDelimiter(text[position_])) {
    ++position_;
  }
  const std::size_t start = position_;
  while (position_ < text.size() && !isDelimiter(text[position_])) {
    ++position_;
  }
  return text_.subString(start, position_ - start);
}
