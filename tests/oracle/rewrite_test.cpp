// `odlex rewrite` decodes a whole package and writes a fresh file, which msiinfo then reads
// exactly as it reads the original: tables, streams and summary information.

#include <gtest/gtest.h>

#include "common/PackageCompare.h"
#include "common/PackageTest.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

class RewriteCommand : public PackageTest {};

// Rewriting the rewrite must change nothing either.
TEST_P(RewriteCommand, FreshFileReadsLikeTheOriginal) {
  TempDir dir;
  const std::string before = readFileBytes(package());
  std::filesystem::path source = package();
  for (const char* name : {"once.msi", "twice.msi"}) {
    SCOPED_TRACE(name);
    const std::filesystem::path out = dir / name;
    ProcessResult odlex = runOdlex({"rewrite", source.string(), "-o", out.string()});
    ASSERT_TRUE(odlex.ok()) << odlex.describe();
    EXPECT_TRUE(sameTables(source, out));
    EXPECT_TRUE(sameStreams(source, out));
    EXPECT_TRUE(sameSummary(source, out));
    source = out;
  }
  EXPECT_TRUE(readFileBytes(package()) == before) << "the original package was changed";
}

ODLEX_FOR_EVERY_PACKAGE(RewriteCommand);

}  // namespace
}  // namespace odlex::test
