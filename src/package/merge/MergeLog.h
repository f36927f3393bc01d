#pragma once
// Where the steps of a merge report their problems: each goes to the merge's error list, and a
// problem that ends the merge is thrown as the error record of the step it ended.

#include <string>

#include "odlex/package/ODLEXMergeErrors.h"
#include "odlex/tables/ODLEXDatabaseError.h"

namespace odlex::merge {

class MergeLog {
 public:
  explicit MergeLog(ODLEXMergeErrors& errors) : errors_(errors) {}

  // A problem the merge goes on after.
  void record(ODLEXMergeError::eType type, const std::u16string& text) {
    errors_.Add(ODLEXMergeError(type, TalString(text)));
  }
  // A problem that ends the merge in step `step`.
  [[noreturn]] void stop(ODLEXDatabaseError::eCodeMeaning step, ODLEXMergeError::eType type,
                         const std::u16string& text) {
    record(type, text);
    throw ODLEXDatabaseError(step);
  }

 private:
  ODLEXMergeErrors& errors_;
};

}  // namespace odlex::merge
