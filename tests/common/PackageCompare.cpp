#include "common/PackageCompare.h"

#include <algorithm>
#include <vector>

#include "common/IdtText.h"
#include "common/Oracle.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

::testing::AssertionResult exported(const ProcessResult& run, const std::string& what) {
  if (run.ok())
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << what << ": " << run.describe();
}

}  // namespace

std::uint32_t packageCodePage(const fs::path& package) {
  return forcedCodePage(msiinfoExport(package, "_ForceCodepage").out);
}

::testing::AssertionResult sameTables(const fs::path& expected, const fs::path& actual) {
  std::vector<std::string> tables = splitLines(msiinfoTables(expected).out);
  auto listed = linesEqual(tables, splitLines(msiinfoTables(actual).out), "msiinfo tables");
  if (!listed)
    return listed;
  std::uint32_t codePage = packageCodePage(expected);
  for (const std::string& table : tables) {
    ProcessResult want = msiinfoExport(expected, table);
    ProcessResult got = msiinfoExport(actual, table);
    if (auto ok = exported(want, "msiinfo export " + table); !ok)
      return ok;
    if (auto ok = exported(got, "msiinfo export " + table + " (second package)"); !ok)
      return ok;
    if (auto same = sameIdt(want.out, got.out, codePage, table); !same)
      return same;
  }
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult sameStreams(const fs::path& expected, const fs::path& actual) {
  std::vector<std::string> streams = sortedLines(msiinfoStreams(expected).out);
  auto listed = linesEqual(streams, sortedLines(msiinfoStreams(actual).out), "msiinfo streams");
  if (!listed)
    return listed;
  for (const std::string& stream : streams) {
    ProcessResult want = msiinfoExtract(expected, stream);
    ProcessResult got = msiinfoExtract(actual, stream);
    if (auto ok = exported(want, "msiinfo extract " + stream); !ok)
      return ok;
    if (want.out != got.out) {
      return ::testing::AssertionFailure()
             << "stream " << stream << ": " << want.out.size() << " bytes expected, "
             << got.out.size() << " found"
             << (want.out.size() == got.out.size() ? ", differing" : "");
    }
  }
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult sameSummary(const fs::path& expected, const fs::path& actual) {
  return linesEqual(splitLines(msiinfoSuminfo(expected).out),
                    splitLines(msiinfoSuminfo(actual).out), "msiinfo suminfo");
}

}  // namespace odlex::test
