#pragma once
// Search criteria: checkers are shown one column of one row, with the column's description,
// and answer whether it matches. ODLEXTObject::Search and ODLEXDatabase::Search walk rows with
// them; ODLEXTObject::SearchAndReplace replaces text in the same columns.
//
// Only text columns that are neither part of the key nor a reference to another table take part
// (IsSearchable): a search never reports a key or a reference, and a replacement never breaks
// one. Every other column never matches.

#include <cstddef>
#include <vector>

#include "odlex/msi/MSIRecord.h"
#include "odlex/msi/MSISchemaColumn.h"
#include "odlex/support/RWWRegexp.h"
#include "odlex/support/TalString.h"

class MSIEntry;

// The bits of SearchAndReplace's flags.
enum ODLEXSearchFlags : unsigned long {
  eSearchIgnoreCase = 1,  // compare under simple case folding instead of exactly
  eSearchWholeValue = 2,  // replace a value only when it equals the search text as a whole
};

// One column of one row that a checker matched.
struct ODLEXSearchMatch {
  MSIEntry* row;
  TalString column;
  TalString value;
};

class ODLEXBaseChecker {
 public:
  ODLEXBaseChecker() = default;
  // A checker holds no data of its own: copying copies nothing.
  ODLEXBaseChecker(const ODLEXBaseChecker&) {}
  ODLEXBaseChecker& operator=(const ODLEXBaseChecker&) { return *this; }
  virtual ~ODLEXBaseChecker();

  // Whether `value` of `column` matches; the base matches nothing.
  virtual bool operator()(const MSISchemaColumn& column, const MSIRecordColumn& value) const;

  // Whether a column takes part in search and replace: a text column, no key, no reference.
  static bool IsSearchable(const MSISchemaColumn& column);
};

// Compares the whole value with a search text (no substrings). compareTo of the search text
// with the value under the case rule gives r; mode 0 matches when r == 0, mode 1 when r > 0
// (the value sorts before the search text), any other mode when r < 0 (it sorts after).
class ODLEXStringChecker : public ODLEXBaseChecker {
 public:
  // REQUIRES: `text` outlives the checker and its copies, which refer to it.
  ODLEXStringChecker(const TalString& text, int mode, RWWString::caseCompare rule);
  ODLEXStringChecker(const ODLEXStringChecker& other);
  ODLEXStringChecker& operator=(const ODLEXStringChecker&) = delete;

  bool operator()(const MSISchemaColumn& column, const MSIRecordColumn& value) const override;

 private:
  RWWString::caseCompare rule_;
  const TalString& text_;
  int mode_;
};

// Matches when the expression matches anywhere in the value; an expression that matches the
// empty string matches every searchable column, empty values included. An expression that did
// not compile matches nothing.
class ODLEXRegExpChecker : public ODLEXBaseChecker {
 public:
  // REQUIRES: `expression` outlives the checker and its copies, which refer to it.
  explicit ODLEXRegExpChecker(const RWWRegexp& expression);
  ODLEXRegExpChecker(const ODLEXRegExpChecker& other);
  ODLEXRegExpChecker& operator=(const ODLEXRegExpChecker&) = delete;

  bool operator()(const MSISchemaColumn& column, const MSIRecordColumn& value) const override;

 private:
  const RWWRegexp& expression_;
};

// Replaces every occurrence of `find` in `text` with `replace`, left to right, searching on
// after each replacement (a replacement is never searched again); returns how many were
// replaced. An empty `find` replaces nothing.
unsigned SubStringReplace(TalString& text, const TalString& find, const TalString& replace,
                          RWWString::caseCompare rule = RWWString::exact);
