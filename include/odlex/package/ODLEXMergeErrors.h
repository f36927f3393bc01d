#pragma once
// The errors of the last merge of a merge module into a package: one record per problem the
// merge reported, a kind (GetType) and a text naming the tables, rows and modules concerned.
// ODLEXDatabase::GetMergeErrors gives the list of the last merge (null until a merge has run).
//
// Some problems end the merge (the package stays as it was and MergeModule throws); the others
// are recorded and the merge goes on: a row the package already holds with other values (the
// package's row stays), a module the merged one depends on that the package lacks.

#include <cstddef>
#include <utility>
#include <vector>

#include "odlex/support/TalString.h"

class ODLEXMergeError {
 public:
  // The kinds, numbered as the installer's merge tool numbers its error kinds; a missing
  // dependency, which that tool lists apart from its errors, has a number of its own.
  enum eType : int {
    eExclusion = 3,             // the module excludes, or is excluded by, a merged module
    eTableMerge = 4,            // a row conflicts with the package's, or cannot be copied
    eResequenceMerge = 5,       // a module action cannot be placed in a sequence table
    eFileCreate = 6,            // the module's files cannot be read or put into the package
    eDirCreate = 7,             // the target directory is missing or its paths conflict
    eFeatureRequired = 8,       // the feature the components go to is missing
    eBadNullSubstitution = 9,   // a configurable item has no value and may not be empty
    eBadSubstitutionType = 10,  // a configured value does not fit the item's format or column
    eMissingConfigItem = 11,    // a value was given for an item the module does not have
    eModuleUnreadable = 20,     // the module cannot be opened or has no usable signature
    ePackageUnwritable = 21,    // the package cannot take the merge (read-only, not open)
    eMissingDependency = 100,   // a module this one needs is not merged into the package
  };

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

// What a successful merge added: rows per table (in the order the tables were first written),
// the module's files and the Media row that took them (0 when the module has no files).
struct ODLEXMergeSummary {
  std::vector<std::pair<TalString, std::size_t>> rowsPerTable;
  std::size_t files = 0;
  int mediaDiskId = 0;
};
