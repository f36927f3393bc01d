// odlex query with statements that change the package: where it writes, what --dry-run and
// --json print, and that a failing statement writes nothing. What the statements do to the
// rows is the library's, tested there and against msibuild.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

struct WriteCase {
  const char* name;
  std::vector<std::string> args;  // after "query PACKAGE"; OUT stands for the output file
  int exitCode;
  std::string out;  // stdout, or for --json the document; OUT and PACKAGE replaced
  std::string err;  // a part of stderr
  bool packageChanged;
  bool outputWritten;
};

// Test output names a case by its name, not by its bytes.
void PrintTo(const WriteCase& c, std::ostream* out) {
  *out << c.name;
}

class QueryCommandWrites : public ::testing::TestWithParam<WriteCase> {};

std::string replaced(std::string text, const std::string& package, const std::string& out) {
  for (const auto& [from, to] : {std::pair{std::string("OUT"), out}, {"PACKAGE", package}}) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at))
      text.replace(at, from.size(), to);
  }
  return text;
}

TEST_P(QueryCommandWrites, WritesOnlyWhereAndWhenAsked) {
  const WriteCase& c = GetParam();
  const BuiltPackage& built = testPackage(PackageKind::kIdt);
  ASSERT_FALSE(built.file.empty()) << built.error;
  TempDir dir;
  const std::string package = (dir / "product.msi").string();
  const std::string out = (dir / "out.msi").string();
  std::filesystem::copy_file(built.file, package);
  std::vector<std::string> args{"query", package};
  for (const std::string& arg : c.args)
    args.push_back(replaced(arg, package, out));

  const ProcessResult result = runOdlex(args);
  EXPECT_EQ(result.exitCode, c.exitCode) << result.describe();
  const std::string expectedOut = replaced(c.out, package, out);
  if (expectedOut.starts_with("{"))
    EXPECT_EQ(nlohmann::json::parse(result.out), nlohmann::json::parse(expectedOut));
  else
    EXPECT_EQ(result.out, expectedOut);
  EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
  EXPECT_EQ(readFileBytes(package) != readFileBytes(built.file), c.packageChanged);
  EXPECT_EQ(std::filesystem::exists(out), c.outputWritten);
}

const char* const kUpdate = "UPDATE Property SET Value = 'x' WHERE Property = 'ProductName'";

const WriteCase kCases[] = {
    {"InPlace", {"DELETE FROM Property WHERE Property = 'ALLUSERS'"}, 0, "", "", true, false},
    {"Json",
     {kUpdate, "-o", "OUT", "--json"},
     0,
     R"({"written": true, "package": "OUT"})",
     "",
     false,
     true},
    {"JsonDryRun",
     {kUpdate, "--json", "--dry-run"},
     0,
     R"({"written": false, "package": "PACKAGE"})",
     "",
     false,
     false},
    {"FailingStatement",
     {"INSERT INTO Property (Property, Value) VALUES ('ProductName', 'twice')", "-o", "OUT"},
     1,
     "",
     "(error 1627)",
     false,
     false},
};

INSTANTIATE_TEST_SUITE_P(Cases, QueryCommandWrites, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<WriteCase>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace odlex::test
