#pragma once
// Progress sinks a host hands to the library (ODLEXDatabase::SetSingleProgress and
// SetDualProgress): a single bar, or an overall bar with a bar for the current step. The library
// owns them from then on: it keeps them, hands them to whoever asks (GetSingleProgress,
// GetDualProgress) and deletes them; it draws nothing through them itself.

#include "odlex/support/TalString.h"

class SingleProgress {
 public:
  virtual ~SingleProgress() = default;
  // Starts a run of `total` steps described by `text`.
  virtual void Start(const TalString& text, unsigned long total) = 0;
  // `done` of the total steps are finished.
  virtual void Step(unsigned long done) = 0;
  virtual void Finish() = 0;
};

class DualProgress {
 public:
  virtual ~DualProgress() = default;
  virtual SingleProgress& Overall() = 0;
  virtual SingleProgress& Current() = 0;
};
