#pragma once
// MSITranslate: a table of variables (property names and their values) that turns formatted
// text into plain text and back.
//
// Translate formats text as the installer formats it: every reference "[NAME]" whose NAME is
// a variable is replaced by its value, and the value is never formatted again (a value holding
// "[OTHER]" keeps it as it is). References nest and are replaced from the inside out, so
// "[[PD]]" is the value of the variable that PD names. "[\c]" in the text gives the character c
// itself (the installer's escape for brackets); escapes inside values stay as they are. A
// reference to a name that is not a variable, and a "[" never closed, stay as written. Nesting
// deeper than kMaxNesting is read as plain text.
//
// UnFormat is the way back, for showing a path in the form a package holds it: wherever the
// value of a variable occurs in the text (exact case), it is replaced by "[NAME]", longer values
// first, so "C:\Program Files\Vendor\" becomes "[INSTALLDIR]" rather than
// "[ProgramFilesFolder]Vendor\" when both variables are known. Empty values are never replaced.

#include <functional>
#include <map>
#include <string>

#include "odlex/support/TalString.h"

class MSITranslate {
 public:
  static constexpr std::size_t kMaxNesting = 32;

  void Clear() { variables_.clear(); }
  void SetVariable(const TalString& name, const TalString& value);
  void RemoveVariable(const TalString& name);
  // False, leaving `value` alone, when `name` is not a variable.
  bool GetVariable(const TalString& name, TalString& value) const;
  std::size_t GetCount() const { return variables_.size(); }

  TalString Translate(const TalString& text) const;
  TalString UnFormat(const TalString& text) const;

  // Translate with the variables given by `lookup` (true and the value for a known name), for
  // callers that keep their variables elsewhere. The lookup is given everything between the
  // brackets, so it also sees the installer's other forms ("#File", "$Component", "!File",
  // "%ENVIRONMENT", "~") and decides which of them it can answer.
  using Lookup = std::function<bool(const std::u16string& name, std::u16string& value)>;
  static TalString Translate(const TalString& text, const Lookup& lookup);

 private:
  std::map<std::u16string, std::u16string> variables_;
};
