#include "common/Oracle.h"

#include "common/TempDir.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

extern char** environ;

namespace odlex::test {
namespace {

ProcessResult startFailure(const std::string& why) {
  ProcessResult result;
  result.exitCode = 127;
  result.err = why;
  return result;
}

}  // namespace

std::string ProcessResult::describe() const {
  std::string text = timedOut ? "timed out" : "exit status " + std::to_string(exitCode);
  if (!err.empty())
    text += ", stderr: " + err.substr(0, 2000);
  return text;
}

// The child writes its output to files, read once it has ended, so that neither stream can
// fill up and stall it.
ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::filesystem::path& workingDirectory,
                         std::chrono::seconds timeout) {
  if (argv.empty())
    return startFailure("no program given");
  const TempDir outputs;
  const std::string out = (outputs / "out").string(), err = (outputs / "err").string();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
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

  ProcessResult result;
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  int status = 0;
  pid_t ended = 0;
  while ((ended = waitpid(pid, &status, WNOHANG)) != pid && (ended == 0 || errno == EINTR)) {
    if (!result.timedOut && std::chrono::steady_clock::now() > deadline) {
      result.timedOut = true;
      kill(pid, SIGKILL);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  result.exitCode = ended == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.out = readFileBytes(out);
  result.err = readFileBytes(err);
  return result;
}

ProcessResult msiinfoExport(const std::filesystem::path& package, const std::string& table) {
  static const TempDir scratch;
  return runProcess({"msiinfo", "export", std::filesystem::absolute(package).string(), table},
                    scratch.path());
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

std::string odlexOutput(const std::vector<std::string>& args) {
  const ProcessResult result = runOdlex(args);
  EXPECT_TRUE(result.ok()) << result.describe();
  return result.out;
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
