// The search checkers and the replacement of substrings.

#include "odlex/tables/ODLEXCheckers.h"

ODLEXBaseChecker::~ODLEXBaseChecker() = default;

bool ODLEXBaseChecker::operator()(const MSISchemaColumn&, const MSIRecordColumn&) const {
  return false;
}

bool ODLEXBaseChecker::IsSearchable(const MSISchemaColumn& column) {
  return column.Type() == MSISchemaColumn::typeString && !column.IsKey() && !column.IsForeignKey();
}

ODLEXStringChecker::ODLEXStringChecker(const TalString& text, int mode, RWWString::caseCompare rule)
    : rule_(rule), text_(text), mode_(mode) {}

ODLEXStringChecker::ODLEXStringChecker(const ODLEXStringChecker& other)
    : ODLEXBaseChecker(other), rule_(other.rule_), text_(other.text_), mode_(other.mode_) {}

bool ODLEXStringChecker::operator()(const MSISchemaColumn& column,
                                    const MSIRecordColumn& value) const {
  if (!IsSearchable(column))
    return false;
  const int order = text_.compareTo(value.GetString(), rule_);
  switch (mode_) {
    case 0:
      return order == 0;
    case 1:
      return order > 0;
    default:
      return order < 0;
  }
}

ODLEXRegExpChecker::ODLEXRegExpChecker(const RWWRegexp& expression) : expression_(expression) {}

ODLEXRegExpChecker::ODLEXRegExpChecker(const ODLEXRegExpChecker& other)
    : ODLEXBaseChecker(other), expression_(other.expression_) {}

bool ODLEXRegExpChecker::operator()(const MSISchemaColumn& column,
                                    const MSIRecordColumn& value) const {
  return IsSearchable(column) && expression_.index(value.GetString(), nullptr, 0) != RW_NPOS;
}

unsigned SubStringReplace(TalString& text, const TalString& find, const TalString& replace,
                          RWWString::caseCompare rule) {
  if (find.isNull())
    return 0;
  unsigned count = 0;
  std::size_t start = 0;
  for (std::size_t at = text.index(find, start, rule); at != RW_NPOS;
       at = text.index(find, start, rule)) {
    text.replace(at, find.length(), replace);
    start = at + replace.length();
    ++count;
  }
  return count;
}
