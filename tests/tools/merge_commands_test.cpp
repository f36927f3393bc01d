// The merge command's plumbing: exit status, the lines for people, and a package left byte for
// byte untouched by a merge that stops or is asked to write into the package itself. What a merge
// adds is the library's and is tested there.

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "package/MergeTestSupport.h"

namespace odlex::test {
namespace {

struct MergeRun {
  const char* name;
  std::vector<std::string> options;  // after "merge PACKAGE MODULE"
  int exitCode;
  bool writesOutput;  // out.msi written
  const char* stdoutHas;
  const char* stderrHas;
};

const MergeRun kRuns[] = {
    {"Merges",
     {"--feature", "Complete", "--directory", "INSTALLDIR", "-o", "OUT"},
     0,
     true,
     "table\tComponent\t1\n",
     ""},
    {"StoppedMergeWritesNothing",
     {"--feature", "Nope", "--directory", "INSTALLDIR", "-o", "OUT"},
     1,
     false,
     "error\t8\tthe package has no feature Nope\n",
     "(error 53)"},
    {"OutputThatIsThePackageIsRefused",
     {"--feature", "Complete", "--directory", "INSTALLDIR", "-o", "LINK"},
     1,
     false,
     "",
     "(error 3)"},
    {"MissingFeatureOptionIsAUsageMistake",
     {"--directory", "INSTALLDIR"},
     2,
     false,
     "",
     "--feature"},
};

TEST(OdlexMerge, ExitStatusOutputAndFilesWritten) {
  TempDir dir;
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  const std::filesystem::path package = dir / "product.msi";
  std::filesystem::copy_file(built.file, package);
  const std::string original = readFileBytes(package);
  const std::filesystem::path module = buildModule(dir, baselineModule());
  // LINK: another name of the package itself.
  std::filesystem::create_hard_link(package, dir / "link.msi");
  for (const MergeRun& run : kRuns) {
    SCOPED_TRACE(run.name);
    std::filesystem::remove(dir / "out.msi");
    std::vector<std::string> args{"merge", package.string(), module.string()};
    for (const std::string& option : run.options) {
      if (option == "OUT" || option == "LINK")
        args.push_back((dir / (option == "OUT" ? "out.msi" : "link.msi")).string());
      else
        args.push_back(option);
    }
    const ProcessResult result = runOdlex(args);
    EXPECT_EQ(result.exitCode, run.exitCode) << result.describe();
    EXPECT_NE(result.out.find(run.stdoutHas), std::string::npos) << result.out;
    EXPECT_NE(result.err.find(run.stderrHas), std::string::npos) << result.err;
    EXPECT_EQ(std::filesystem::exists(dir / "out.msi"), run.writesOutput);
    EXPECT_EQ(readFileBytes(package), original);
  }
}

}  // namespace
}  // namespace odlex::test
