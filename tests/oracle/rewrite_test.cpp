// `odlex rewrite` decodes a whole package and writes a fresh file, which msiinfo then reads
// exactly as it reads the original: tables, streams and summary information.

#include <gtest/gtest.h>

#include "common/PackageCompare.h"
#include "common/PackageTest.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

class RewriteCommand : public PackageTest {};

TEST_P(RewriteCommand, FreshFileReadsLikeTheOriginal) {
  TempDir dir;
  std::string before = readFileBytes(package());
  auto out = dir / "rewritten.msi";
  ProcessResult odlex = runOdlex({"rewrite", package().string(), "-o", out.string()});
  ASSERT_TRUE(odlex.ok()) << odlex.describe();

  EXPECT_TRUE(sameTables(package(), out));
  EXPECT_TRUE(sameStreams(package(), out));
  EXPECT_TRUE(sameSummary(package(), out));
  EXPECT_TRUE(readFileBytes(package()) == before) << "the original package was changed";
}

TEST_P(RewriteCommand, RewritingTheRewriteChangesNothing) {
  TempDir dir;
  auto once = dir / "once.msi";
  auto twice = dir / "twice.msi";
  ASSERT_TRUE(runOdlex({"rewrite", package().string(), "-o", once.string()}).ok());
  ProcessResult odlex = runOdlex({"rewrite", once.string(), "-o", twice.string()});
  ASSERT_TRUE(odlex.ok()) << odlex.describe();
  EXPECT_TRUE(sameTables(once, twice));
  EXPECT_TRUE(sameStreams(once, twice));
  EXPECT_TRUE(sameSummary(once, twice));
}

ODLEX_FOR_EVERY_PACKAGE(RewriteCommand);

}  // namespace
}  // namespace odlex::test
