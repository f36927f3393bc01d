#pragma once
// Runs a helper program with an argument vector (no shell) and waits for it.

#include <string>
#include <vector>

namespace odlex::bench {

// Runs argv[0] (looked up on PATH) and returns its exit status; -1 when it could not start
// or did not exit normally.
int runProgram(const std::vector<std::string>& argv);

}  // namespace odlex::bench
