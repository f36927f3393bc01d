// The component and directory commands on the wixl package: what they print as JSON, what the
// written package holds (read back with msitools), and the unknown key that must leave the
// package untouched. The rules of the cascade are the library's and are tested there.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

using nlohmann::json;

class OdlexComponents : public ::testing::Test {
 protected:
  void SetUp() override {
    const BuiltPackage& built = testPackage(PackageKind::kWixl);
    ASSERT_FALSE(built.file.empty()) << built.error;
    std::filesystem::copy_file(built.file, package_);
  }

  json run(const std::vector<std::string>& args) {
    return json::parse(odlexOutput(args), nullptr, false);
  }

  TempDir dir_;
  std::filesystem::path package_ = dir_ / "product.msi";
  std::filesystem::path out_ = dir_ / "out.msi";
};

TEST_F(OdlexComponents, DeleteWritesTheSmallerPackageAndListsWhatWent) {
  const json removed = run({"component", "delete", package_.string(), "MainExecutable", "-o",
                            out_.string(), "--json"})["removed"];
  EXPECT_EQ(removed["Component"], json({"MainExecutable"}));
  EXPECT_EQ(removed["File"], json({"MainExe"}));
  EXPECT_EQ(removed["Registry"].size(), 3u);
  EXPECT_EQ(removed["Shortcut"], json({"StartMenuShortcut"}));
  EXPECT_EQ(msiinfoRows(out_, "Component").size(), 4u);

  const json listed = run({"component", "list", out_.string(), "--json"})["components"];
  EXPECT_EQ(listed.size(), 4u);
  EXPECT_EQ(listed[0]["component"], "DataFiles");
  EXPECT_EQ(listed[0]["directory"], "DataDir");
}

TEST_F(OdlexComponents, ShowGivesTheRecordFeaturesAndRows) {
  const json shown = run({"component", "show", package_.string(), "ReadmeDoc", "--json"});
  EXPECT_EQ(shown["info"]["keyPath"], "Readme");
  EXPECT_EQ(shown["info"]["registryKeyPath"], false);
  EXPECT_EQ(shown["features"], json({"Complete", "Documentation"}));
  EXPECT_EQ(shown["rows"]["File"], json({"Readme"}));
  EXPECT_EQ(shown["rows"]["FeatureComponents"], json({"Documentation/ReadmeDoc"}));
}

TEST_F(OdlexComponents, AddMakesDistinctComponentsInTheFolder) {
  const json added = run({"component", "add", package_.string(), "DataDir", "--count", "3", "-o",
                          out_.string(), "--json"})["components"];
  ASSERT_EQ(added.size(), 3u);
  EXPECT_NE(added[0]["guid"], added[1]["guid"]);
  EXPECT_EQ(msiinfoRows(out_, "Component").size(), 8u);
}

TEST_F(OdlexComponents, AnUnknownKeyOrFolderChangesNothing) {
  const std::vector<std::vector<std::string>> commands = {
      {"component", "delete", package_.string(), "ReadmeDoc", "NoSuchComponent"},
      {"component", "add", package_.string(), "NoSuchFolder"},
      {"component", "show", package_.string(), "NoSuchComponent"},
  };
  for (const std::vector<std::string>& args : commands) {
    const ProcessResult result = runOdlex(args);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("NoSuch"), std::string::npos) << result.err;
  }
  EXPECT_EQ(msiinfoRows(package_, "Component").size(), 5u);
}

TEST_F(OdlexComponents, DirectoryAddMakesTheFoldersOfAPath) {
  const json added =
      run({"directory", "add", package_.string(), "[INSTALLDIR]Plug Ins\\", "--json"});
  EXPECT_EQ(added["target"], "[ProgramFilesFolder]Odlex Test\\Plug Ins\\");
  const json folders = run({"directory", "list", package_.string(), "--json"});
  bool listed = false;
  for (const json& folder : folders["directories"])
    listed = listed || folder["directory"] == added["directory"];
  EXPECT_TRUE(listed);
}

}  // namespace
}  // namespace odlex::test
