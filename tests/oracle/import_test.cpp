// `odlex import` builds new packages that msiinfo reads back as the imported files say.
// The fixtures are UTF-8 (msibuild reads nothing else); odlex is given them the way the
// installer's own tool writes .idt files, in the package's code page with the code page on the
// table line.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/PackageCompare.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kFixtureCodePage = 1252;

class ImportCommand : public ::testing::Test {
 protected:
  // Copies the .idt files of `sources` (and their binary data folders) into the temporary
  // folder, in the fixture code page; returns them in import order.
  std::vector<fs::path> stageIdtFiles(const fs::path& sources) {
    std::vector<fs::path> staged;
    for (const fs::path& idt : idtFilesIn(sources)) {
      fs::path copy = dir_ / idt.filename();
      writeFileBytes(copy, inCodePage(readFileBytes(idt), kFixtureCodePage));
      fs::path dataFolder = sources / idt.stem();
      if (fs::is_directory(dataFolder))
        fs::copy(dataFolder, dir_ / idt.stem(), fs::copy_options::recursive);
      staged.push_back(copy);
    }
    return staged;
  }

  ProcessResult importInto(const fs::path& package, const std::vector<fs::path>& idts) {
    std::vector<std::string> args{"import", package.string()};
    for (const fs::path& idt : idts)
      args.push_back(idt.string());
    return runOdlex(args);
  }

  // Every table of `sources` exports from `package` as the (UTF-8) fixture file.
  void expectTablesAsFixtures(const fs::path& package, const fs::path& sources) {
    for (const fs::path& idt : idtFilesIn(sources)) {
      std::string table = idt.stem().string();
      ProcessResult exported = msiinfoExport(package, table);
      ASSERT_TRUE(exported.ok()) << table << ": " << exported.describe();
      EXPECT_TRUE(sameIdt(readFileBytes(idt), exported.out, kFixtureCodePage, table));
    }
  }

  TempDir dir_;
};

// The idt fixtures and the sample's sources, each against the package msibuild builds from them.
TEST_F(ImportCommand, NewPackageReadsLikeTheFixturesAndTheOneMsibuildBuilds) {
  for (const auto& [sources, kind] : {std::pair{fixturePath("idt"), PackageKind::kIdt},
                                      {sampleSourceDir(), PackageKind::kSample}}) {
    SCOPED_TRACE(sources.string());
    const fs::path package = dir_ / (packageKindName(kind) + ".msi");
    ProcessResult odlex = importInto(package, stageIdtFiles(sources));
    ASSERT_TRUE(odlex.ok()) << odlex.describe();
    expectTablesAsFixtures(package, sources);
    EXPECT_EQ(packageCodePage(package), kFixtureCodePage);
    const BuiltPackage& reference = testPackage(kind);
    ASSERT_FALSE(reference.file.empty()) << reference.error;
    EXPECT_TRUE(linesEqual(splitLines(msiinfoTables(reference.file).out),
                           splitLines(msiinfoTables(package).out), "msiinfo tables"));
    for (const std::string& stream : splitLines(msiinfoStreams(reference.file).out)) {
      if (!stream.ends_with("SummaryInformation")) {
        EXPECT_EQ(msiinfoExtract(package, stream).out, msiinfoExtract(reference.file, stream).out);
      }
    }
  }
}

}  // namespace
}  // namespace odlex::test
