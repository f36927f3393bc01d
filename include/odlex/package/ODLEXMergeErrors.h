#pragma once
// The errors of the last merge of a merge module into a package: one record per problem the
// merge reported, a type number and a text. ODLEXDatabase::GetMergeErrors gives the list of the
// last merge (null until a merge has run).

#include <cstddef>
#include <utility>
#include <vector>

#include "odlex/support/TalString.h"

class ODLEXMergeError {
 public:
  ODLEXMergeError(int type, TalString text) : type_(type), text_(std::move(text)) {}

  int GetType() const { return type_; }
  const TalString& GetText() const { return text_; }

 private:
  int type_;
  TalString text_;
};

class ODLEXMergeErrors {
 public:
  void Add(ODLEXMergeError error) { errors_.push_back(std::move(error)); }
  std::size_t GetCount() const { return errors_.size(); }
  // The error at `index` (0-based); callers stay below GetCount().
  const ODLEXMergeError& GetError(std::size_t index) const { return errors_.at(index); }

 private:
  std::vector<ODLEXMergeError> errors_;
};
