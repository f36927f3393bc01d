// The plumbing of files list, extract and file replace: output shapes, exit statuses, the
// problem report, and nothing written by a failed run.
// What the files are and where they go is checked by the library's tests.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

std::string wixlPackage() {
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  EXPECT_FALSE(built.file.empty()) << built.error;
  return built.file.string();
}

TEST(OdlexFiles, ListGivesEightFieldsPerFile) {
  const std::vector<std::string> lines = splitLines(odlexOutput({"files", wixlPackage()}));
  ASSERT_EQ(lines.size(), 5u);
  for (const std::string& line : lines)
    EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 7) << line;
}

TEST(OdlexFiles, ExtractReportsEachFileItCannotWriteAndFails) {
  TempDir dir;
  const std::string out = (dir / "out").string();
  EXPECT_TRUE(runOdlex({"extract", wixlPackage(), out, "--file", "Readme"}).ok());
  // Again: the file is there now and is not overwritten.
  const ProcessResult again =
      runOdlex({"extract", wixlPackage(), out, "--file", "Readme", "--json"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_TRUE(again.err.starts_with("odlex: Readme: ")) << again.err;
  EXPECT_NE(again.err.find("(error 183)\n"), std::string::npos) << again.err;
  const nlohmann::json document = nlohmann::json::parse(again.out);
  ASSERT_EQ(document.at("problems").size(), 1u);
  EXPECT_EQ(document["problems"][0].at("file"), "Readme");
  EXPECT_EQ(document["problems"][0].at("code"), 183);
  EXPECT_EQ(runOdlex({"extract", wixlPackage()}).exitCode, 2);
}

TEST(OdlexFiles, ReplaceWritesOnlyOnSuccessAndPrintsTheNewRow) {
  TempDir dir;
  writeFileBytes(dir / "new.txt", "new");
  const std::string out = (dir / "out.msi").string();
  const std::string replacement = (dir / "new.txt").string();
  const struct {
    std::vector<std::string> args;
    int exitCode;
    bool written;
  } cases[] = {
      {{"file", "replace", wixlPackage(), "Nothing", replacement, "-o", out}, 1, false},
      {{"file", "replace", wixlPackage(), "Readme", "-o", out}, 2, false},
      {{"file", "replace", wixlPackage(), "Readme", replacement, "-o", out, "--json"}, 0, true},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.args[3]);
    const ProcessResult run = runOdlex(test.args);
    EXPECT_EQ(run.exitCode, test.exitCode) << run.describe();
    EXPECT_EQ(std::filesystem::exists(out), test.written);
    if (test.exitCode == 1) {
      EXPECT_NE(run.err.find("(error 87)\n"), std::string::npos) << run.err;
    }
  }
  const nlohmann::json document = nlohmann::json::parse(
      odlexOutput({"file", "replace", out, "Readme", replacement, "--json", "--dry-run"}));
  EXPECT_EQ(document.at("size"), 3);
  EXPECT_EQ(splitLines(odlexOutput({"file", "replace", out, "Readme", replacement})),
            std::vector<std::string>{"file\tReadme\t3\t\t"});
}

}  // namespace
}  // namespace odlex::test
