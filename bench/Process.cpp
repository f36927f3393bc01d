#include "Process.h"

#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace odlex::bench {

int runProgram(const std::vector<std::string>& argv) {
  std::vector<char*> args;
  for (const std::string& arg : argv) {
    args.push_back(const_cast<char*>(arg.c_str()));
  }
  args.push_back(nullptr);

  pid_t pid = 0;
  if (posix_spawnp(&pid, args[0], nullptr, nullptr, args.data(), environ) != 0) {
    return -1;
  }
  int status = 0;
  if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) {
    return -1;
  }
  return WEXITSTATUS(status);
}

}  // namespace odlex::bench
