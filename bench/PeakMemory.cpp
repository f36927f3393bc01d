#include "PeakMemory.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace odlex::bench {
namespace {

// ru_maxrss is in kilobytes on Linux.
std::int64_t maxResidentKilobytes(const rusage& usage) {
  return usage.ru_maxrss;
}

std::int64_t ownPeakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return maxResidentKilobytes(usage);
}

[[noreturn]] void runChild(const std::function<void()>& warmUp, const std::function<void()>& work,
                           int reportFd) {
  std::int64_t baseline = 0;
  int status = 0;
  try {
    warmUp();
    baseline = ownPeakKilobytes();
    work();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    status = 1;
  }
  const bool reported = write(reportFd, &baseline, sizeof baseline) == sizeof baseline;
  _exit(reported ? status : 1);
}

}  // namespace

std::uint64_t peakMemoryGrowth(const std::function<void()>& warmUp,
                               const std::function<void()>& work) {
  int fds[2];
  if (pipe(fds) != 0) {
    throw std::runtime_error("pipe failed");
  }
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid < 0) {
    throw std::runtime_error("fork failed");
  }
  if (pid == 0) {
    close(fds[0]);
    runChild(warmUp, work, fds[1]);
  }
  close(fds[1]);
  std::int64_t baseline = 0;
  const bool reported = read(fds[0], &baseline, sizeof baseline) == sizeof baseline;
  close(fds[0]);

  // wait4 gives the usage of exactly this child, unlike RUSAGE_CHILDREN, which keeps the
  // largest of every child ever waited for (msibuild included).
  int status = 0;
  rusage usage{};
  if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0 ||
      !reported) {
    throw std::runtime_error("the measured child failed");
  }
  const std::int64_t growth = maxResidentKilobytes(usage) - baseline;
  return growth > 0 ? static_cast<std::uint64_t>(growth) * 1024 : 0;
}

}  // namespace odlex::bench
