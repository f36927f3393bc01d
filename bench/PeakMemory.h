#pragma once
// Peak memory of one piece of work, measured in a forked child so that nothing the parent
// process allocated before or after is counted.

#include <cstdint>
#include <functional>

namespace odlex::bench {

// Runs `warmUp` and then `work` in a child process and returns how far the child's peak
// resident set grew during `work`, in bytes. The warm-up (the same work on an empty package)
// faults in the code and the converter tables first, so that what is measured is the memory
// the data takes, not fixed start-up costs. Throws when the child fails.
std::uint64_t peakMemoryGrowth(const std::function<void()>& warmUp,
                               const std::function<void()>& work);

}  // namespace odlex::bench
