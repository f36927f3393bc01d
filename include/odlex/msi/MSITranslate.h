#pragma once
// MSITranslate: a table of variables (property names and their values) that turns formatted
// text into plain text and back.
//
// Translate replaces every reference "[NAME]" whose NAME is a variable by its value; the result
// is translated again, so values may refer to other variables, up to kMaxPasses times (a cycle
// of references therefore ends, leaving the references of the last pass in place). References
// to names that are not variables stay as written, and "[\c]" gives the character c itself (the
// installer's escape for brackets).
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
  static constexpr int kMaxPasses = 16;

  void Clear() { variables_.clear(); }
  void SetVariable(const TalString& name, const TalString& value);
  void RemoveVariable(const TalString& name);
  // False, leaving `value` alone, when `name` is not a variable.
  bool GetVariable(const TalString& name, TalString& value) const;
  std::size_t GetCount() const { return variables_.size(); }

  TalString Translate(const TalString& text) const;
  TalString UnFormat(const TalString& text) const;

  // Translate with the variables given by `lookup` (true and the value for a known name), for
  // callers that keep their variables elsewhere.
  using Lookup = std::function<bool(const std::u16string& name, std::u16string& value)>;
  static TalString Translate(const TalString& text, const Lookup& lookup);

 private:
  std::map<std::u16string, std::u16string> variables_;
};
