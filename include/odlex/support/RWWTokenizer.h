#pragma once
// RWWTokenizer: splits a text into tokens. Each call returns the next token, skipping any run
// of delimiters before it, so "a;;b" split on ";" yields "a", "b" and then an empty token,
// which says that there are no more.

#include <cstddef>

#include "odlex/support/RWWString.h"

class RWWTokenizer {
 public:
  // Keeps its own copy of `text`.
  explicit RWWTokenizer(const RWWString& text) : text_(text) {}

  // The next token delimited by any of the code units in `delimiters` (a null-terminated
  // list; null means space, tab and newline).
  RWWString operator()(const char16_t* delimiters);
  RWWString operator()() { return (*this)(nullptr); }

 private:
  RWWString text_;
  std::size_t position_ = 0;
};
