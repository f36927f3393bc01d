#include "Timing.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace odlex::bench {

double millisecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - start;
  return elapsed.count();
}

double median(std::vector<double>& samples) {
  if (samples.empty()) {
    return 0;
  }
  const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

}  // namespace odlex::bench
