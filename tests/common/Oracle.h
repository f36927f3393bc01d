#pragma once
// Running the independent msitools readers and writers (msiinfo, msidump, msibuild, wixl)
// and our own `odlex` tool as child processes, and comparing their text output line by line.

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace odlex::test {

struct ProcessResult {
  int exitCode = -1;      // the program's exit status; -1 when it did not exit normally
  bool timedOut = false;  // killed because it ran past its time limit
  std::string out;        // everything written to stdout (bytes, unchanged)
  std::string err;        // everything written to stderr

  bool ok() const { return exitCode == 0 && !timedOut; }
  // One line for assertion messages: the status and the start of stderr.
  std::string describe() const;
};

// Starts argv[0] (looked up on PATH when it has no slash) with the given arguments, stdin
// from /dev/null, in `workingDirectory` when one is given, and waits for it, collecting both
// output streams. A program still running after `timeout` is killed. Starting failures are
// reported as exit code 127.
ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::filesystem::path& workingDirectory = {},
                         std::chrono::seconds timeout = std::chrono::seconds(300));

// msiinfo export also writes the data of binary cells, into "<Table>/<stream>" under the
// folder it runs in: a scratch folder of the test program.
ProcessResult msiinfoExport(const std::filesystem::path& package, const std::string& table);
// The data lines of `table` as msiinfo exports them (without the three header lines), in
// msiinfo's order; a failing export fails the test.
std::vector<std::string> msiinfoRows(const std::filesystem::path& package,
                                     const std::string& table);
ProcessResult msiinfoTables(const std::filesystem::path& package);
ProcessResult msiinfoStreams(const std::filesystem::path& package);
ProcessResult msiinfoSuminfo(const std::filesystem::path& package);
ProcessResult msiinfoExtract(const std::filesystem::path& package, const std::string& stream);

// Runs the built odlex tool (exit code 127 when the build has none).
ProcessResult runOdlex(const std::vector<std::string>& args);
// The standard output of a run of the odlex tool that must succeed; a failed run fails the test.
std::string odlexOutput(const std::vector<std::string>& args);

// Lines of `text`, split on CRLF or LF; a final line break does not add an empty line.
std::vector<std::string> splitLines(std::string_view text);
std::vector<std::string> sortedLines(std::string_view text);

// Success when both line lists are equal; otherwise names the first differing line, showing
// both versions, or the extra lines when one list is a prefix of the other.
::testing::AssertionResult linesEqual(const std::vector<std::string>& expected,
                                      const std::vector<std::string>& actual,
                                      std::string_view what);

// The bytes of a file (empty when it cannot be read).
std::string readFileBytes(const std::filesystem::path& path);
// Writes `bytes` to `path`, creating its folder when missing.
void writeFileBytes(const std::filesystem::path& path, std::string_view bytes);

}  // namespace odlex::test
