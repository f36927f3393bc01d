#pragma once
// Wall-clock timing of repeated runs.

#include <functional>
#include <vector>

namespace odlex::bench {

// Runs `work` once and returns the elapsed wall time in milliseconds.
double millisecondsOf(const std::function<void()>& work);

// The median of `samples` (which it reorders); 0 for none.
double median(std::vector<double>& samples);

}  // namespace odlex::bench
