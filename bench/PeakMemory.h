#pragma once
// Peak memory of one piece of work, measured in a forked child so that nothing the parent
// process allocated before or after is counted.

#include <cstdint>
#include <functional>

namespace odlex::bench {

// Runs `work` in a child process and returns how far the child's peak resident set grew
// above its size at the start, in bytes. Throws when the child fails.
std::uint64_t peakMemoryGrowth(const std::function<void()>& work);

}  // namespace odlex::bench
