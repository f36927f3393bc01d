#pragma once
// The process's peak resident memory so far, as the system accounts it.

#include <sys/resource.h>

namespace odlex::test {

inline long peakResidentBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss * 1024L;
}

}  // namespace odlex::test
