#pragma once
// ODLEXOpenType: how a database is to be opened.
//   kind 0 (ODLEXOpenType(mode))   open the file in place with this persist mode;
//   kind 1 (ODLEXOpenType(output)) work on a separate output file: the named file is copied to
//                                  `output` and the copy opened for update (or, given straight to
//                                  SetDatabasePath, the named file is read and `output` receives
//                                  the changes);
//   kind 2 (ODLEXOpenType())       open nothing: only find a database that is already open.

#include <memory>

#include "odlex/msi/MSIDatabase.h"
#include "odlex/support/TalString.h"

class ODLEXOpenType {
 public:
  ODLEXOpenType();
  ODLEXOpenType(const MSIDatabase::ePersistMode& mode);
  ODLEXOpenType(const char16_t* outputPath);
  ODLEXOpenType(const ODLEXOpenType& other);
  ODLEXOpenType& operator=(const ODLEXOpenType& other);
  ~ODLEXOpenType();

  bool IsEnum() const { return kind_ == kEnum; }
  bool IsFilePath() const { return kind_ == kFilePath; }
  bool IsOnlyLooking() const { return kind_ == kOnlyLooking; }
  // The persist mode of kind 0; read-only (4) for the other kinds.
  operator MSIDatabase::ePersistMode() const;
  // The output path of kind 1; empty for the other kinds.
  operator TalString() const;

 private:
  enum Kind : int { kEnum = 0, kFilePath = 1, kOnlyLooking = 2 };

  int kind_;
  MSIDatabase::ePersistMode mode_ = MSIDatabase::ePersistReadOnly;
  std::unique_ptr<TalString> outputPath_;
};
