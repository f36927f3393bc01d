#pragma once
// RWWRegexp: a compiled regular expression over UTF-16 text (Perl-compatible syntax, through
// PCRE2's 16-bit library). A pattern that does not compile leaves the object in a failed
// status; nothing throws. Copies share the compiled form, which is never changed.
// Matching is bounded (match and depth limits), so a pathological pattern fails to match
// instead of running away.

#include <cstddef>
#include <memory>

#include "odlex/support/RWWString.h"

class RWWRegexp {
 public:
  enum statVal { OK = 0, ILLEGAL, NOMEMORY, TOOLONG };

  explicit RWWRegexp(const RWWString& pattern);

  statVal status() const { return status_; }
  // Why the pattern did not compile, with the position; empty when status() is OK.
  const RWWString& errorMessage() const { return error_; }

  // Position of the first match at or after `start` in `text`, or RW_NPOS (also when the
  // pattern is bad or `start` is past the end). The length of the match is stored through
  // `matchLength` when it is not null (0 when there is no match).
  std::size_t index(const RWWString& text, std::size_t* matchLength = nullptr,
                    std::size_t start = 0) const;

 private:
  struct Compiled;
  std::shared_ptr<const Compiled> compiled_;
  statVal status_ = OK;
  RWWString error_;
};
