#pragma once
// MSIStringChecker: whether text can be stored in a database, that is whether every character
// has a byte form in the database's code page. A neutral database (code page 0) is written
// as code page 1252, so it takes what 1252 takes. The code page is read at every call, so the
// answer follows an import of _ForceCodepage; a database that is not open counts as neutral.

#include "odlex/support/TalString.h"

class MSIDatabase;

class MSIStringChecker {
 public:
  explicit MSIStringChecker(MSIDatabase& database) : database_(database) {}

  bool IsCharOK(char16_t c) const;
  bool IsStringOK(const TalString& text) const;

 private:
  MSIDatabase& database_;
};
