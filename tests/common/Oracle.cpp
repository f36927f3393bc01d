#include "common/Oracle.h"

#include "common/TempDir.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

extern char** environ;

namespace odlex::test {
namespace {

// Both ends of a pipe, closed when the object goes away.
class Pipe {
 public:
  Pipe() {
    if (pipe2(fds_, O_CLOEXEC) != 0)
      fds_[0] = fds_[1] = -1;
  }
  ~Pipe() {
    closeRead();
    closeWrite();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  bool valid() const { return fds_[0] >= 0; }
  int readEnd() const { return fds_[0]; }
  int writeEnd() const { return fds_[1]; }
  void closeRead() { closeFd(fds_[0]); }
  void closeWrite() { closeFd(fds_[1]); }

 private:
  static void closeFd(int& fd) {
    if (fd >= 0)
      close(fd);
    fd = -1;
  }
  int fds_[2] = {-1, -1};
};

ProcessResult startFailure(const std::string& why) {
  ProcessResult result;
  result.exitCode = 127;
  result.err = why;
  return result;
}

// Reads what is available on the pipes into the matching strings until both are closed or
// the deadline passes. Returns false on timeout.
bool drain(Pipe& out, Pipe& err, std::string& outText, std::string& errText,
           std::chrono::steady_clock::time_point deadline) {
  std::array<Pipe*, 2> pipes{&out, &err};
  std::array<std::string*, 2> texts{&outText, &errText};
  char buffer[65536];
  while (out.readEnd() >= 0 || err.readEnd() >= 0) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0)
      return false;
    std::array<pollfd, 2> polls{};
    for (std::size_t i = 0; i < 2; ++i)
      polls[i] = {pipes[i]->readEnd(), POLLIN, 0};
    int ready = poll(polls.data(), polls.size(), static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR)
      return false;
    for (std::size_t i = 0; i < 2; ++i) {
      if (polls[i].fd < 0 || polls[i].revents == 0)
        continue;
      ssize_t n = read(polls[i].fd, buffer, sizeof buffer);
      if (n > 0) {
        texts[i]->append(buffer, static_cast<std::size_t>(n));
      } else if (n == 0 || errno != EINTR) {
        pipes[i]->closeRead();
      }
    }
  }
  return true;
}

bool onPath(const std::string& program) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path ? path : "");
  std::string folder;
  while (std::getline(folders, folder, ':')) {
    if (!folder.empty() && access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0)
      return true;
  }
  return false;
}

}  // namespace

std::string ProcessResult::describe() const {
  std::string text = timedOut ? "timed out" : "exit status " + std::to_string(exitCode);
  if (!err.empty())
    text += ", stderr: " + err.substr(0, 2000);
  return text;
}

ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::filesystem::path& workingDirectory,
                         std::chrono::seconds timeout) {
  if (argv.empty())
    return startFailure("no program given");
  Pipe out, err;
  if (!out.valid() || !err.valid())
    return startFailure("cannot create pipes");

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out.writeEnd(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.writeEnd(), STDERR_FILENO);
  if (!workingDirectory.empty())
    posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());

  std::vector<char*> args;
  for (const std::string& arg : argv)
    args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);

  pid_t pid = 0;
  int spawned = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0)
    return startFailure("cannot start " + argv[0] + ": " + std::strerror(spawned));
  out.closeWrite();
  err.closeWrite();

  ProcessResult result;
  auto deadline = std::chrono::steady_clock::now() + timeout;
  if (!drain(out, err, result.out, result.err, deadline)) {
    result.timedOut = true;
    kill(pid, SIGKILL);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

bool haveMsitools() {
  return onPath("msiinfo") && onPath("msidump") && onPath("msibuild");
}
bool haveWixl() {
  return onPath("wixl");
}

ProcessResult msiinfoExport(const std::filesystem::path& package, const std::string& table,
                            const std::filesystem::path& workingDirectory) {
  static const TempDir scratch;
  return runProcess({"msiinfo", "export", std::filesystem::absolute(package).string(), table},
                    workingDirectory.empty() ? scratch.path() : workingDirectory);
}

std::vector<std::string> msiinfoRows(const std::filesystem::path& package,
                                     const std::string& table) {
  const ProcessResult exported = msiinfoExport(package, table);
  EXPECT_TRUE(exported.ok()) << table << ": " << exported.describe();
  std::vector<std::string> lines = splitLines(exported.out);
  lines.erase(lines.begin(), lines.begin() + std::min<std::size_t>(3, lines.size()));
  return lines;
}

ProcessResult msiinfoTables(const std::filesystem::path& package) {
  return runProcess({"msiinfo", "tables", package.string()});
}

ProcessResult msiinfoStreams(const std::filesystem::path& package) {
  return runProcess({"msiinfo", "streams", package.string()});
}

ProcessResult msiinfoSuminfo(const std::filesystem::path& package) {
  return runProcess({"msiinfo", "suminfo", package.string()});
}

ProcessResult msiinfoExtract(const std::filesystem::path& package, const std::string& stream) {
  return runProcess({"msiinfo", "extract", package.string(), stream});
}

ProcessResult runOdlex(const std::vector<std::string>& args) {
  const std::filesystem::path tool = ODLEX_TOOL_PATH;
  if (tool.empty())
    return startFailure("the build has no odlex tool");
  std::vector<std::string> argv{tool.string()};
  argv.insert(argv.end(), args.begin(), args.end());
  return runProcess(argv);
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r')
      line.remove_suffix(1);
    lines.emplace_back(line);
    if (end == std::string_view::npos)
      break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::vector<std::string> sortedLines(std::string_view text) {
  std::vector<std::string> lines = splitLines(text);
  std::sort(lines.begin(), lines.end());
  return lines;
}

::testing::AssertionResult linesEqual(const std::vector<std::string>& expected,
                                      const std::vector<std::string>& actual,
                                      std::string_view what) {
  std::size_t common = std::min(expected.size(), actual.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (expected[i] != actual[i]) {
      return ::testing::AssertionFailure()
             << what << ": line " << i + 1 << " differs\n  expected: \"" << expected[i]
             << "\"\n  actual:   \"" << actual[i] << "\"";
    }
  }
  if (expected.size() == actual.size())
    return ::testing::AssertionSuccess();
  bool actualLonger = actual.size() > expected.size();
  const std::string& first = actualLonger ? actual[common] : expected[common];
  return ::testing::AssertionFailure()
         << what << ": " << expected.size() << " lines expected, " << actual.size()
         << " found; first " << (actualLonger ? "extra" : "missing") << " line " << common + 1
         << ": \"" << first << "\"";
}

std::string readFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  std::string bytes(in ? static_cast<std::size_t>(in.tellg()) : 0, '\0');
  in.seekg(0);
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

void writeFileBytes(const std::filesystem::path& path, std::string_view bytes) {
  if (path.has_parent_path())
    std::filesystem::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace odlex::test
