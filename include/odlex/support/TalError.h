#pragma once
// TalError: one error kept by the lower layer instead of being thrown: the installer result
// code, a text saying what went wrong, and where it happened (a short context such as the
// operation or the table name).

#include "odlex/support/TalString.h"

class TalError {
 public:
  TalError() = default;
  TalError(unsigned code, TalString text, TalString context = {})
      : code_(code), text_(std::move(text)), context_(std::move(context)) {}

  unsigned GetCode() const { return code_; }
  const TalString& GetText() const { return text_; }
  const TalString& GetContext() const { return context_; }

  friend bool operator==(const TalError&, const TalError&) = default;

 private:
  unsigned code_ = 0;
  TalString text_;
  TalString context_;
};
