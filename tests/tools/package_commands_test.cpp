// The commands' own output on a copy of the wixl-built package: the action, sequence, info,
// files, extract, file, diff, transform, hash and signature commands print what they did,
// named and ordered their own way, and write where they say. Failures and dry runs (merge's
// among them) are the command walk's; the rules behind the values are the library's and are
// tested there.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

#include "common/PackageTest.h"

namespace odlex::test {
namespace {

using nlohmann::json;

class OdlexPackageCommands : public PackageCopyTest {
 protected:
  void SetUp() override { copyPackage(PackageKind::kWixl); }

  // A file that add-product takes as its DLL.
  std::filesystem::path dll() {
    writeFileBytes(dir_ / "zrca.dll", "MZ product actions");
    return dir_ / "zrca.dll";
  }
};

// The type fields by name, as action list prints them; where add-product places the actions and
// what rows it makes is the library's (sequence_tables_test).
TEST_F(OdlexPackageCommands, AddProductTextFilesListsTheTypeFieldsByName) {
  const std::filesystem::path out = dir_ / "out.msi";
  odlexOutput({"action", "add-product", package_.string(), "--dll", dll().string(), "--text-files",
               "-o", out.string()});
  const json listed = json::parse(odlexOutput({"action", "list", out.string(), "--json"}));
  const json expected = {{"action", "ZrTextFileInstallChanges"},
                         {"type", 1025},
                         {"executable", "dll"},
                         {"sourceType", "binary"},
                         {"returnProcessing", "wait"},
                         {"scheduling", "deferred"},
                         {"impersonation", "impersonate"},
                         {"source", "zrca.dll"},
                         {"target", "TextFileInstallChanges"}};
  EXPECT_NE(std::find(listed["actions"].begin(), listed["actions"].end(), expected),
            listed["actions"].end())
      << listed.dump(1);
}

// A merge module's actions placed by base action are listed where they run.
TEST_F(OdlexPackageCommands, SequenceListPlacesModuleActionsByTheirBaseAction) {
  const std::filesystem::path idts = dir_ / "idt";
  writeFileBytes(idts / "ModuleInstallExecuteSequence.idt",
                 "Action\tSequence\tBaseAction\tAfter\tCondition\r\n"
                 "s72\tI2\tS72\tI2\tS255\r\nModuleInstallExecuteSequence\tAction\r\n"
                 "CostFinalize\t1000\t\t\t\r\nInstallInitialize\t1400\t\t\tNOT Installed\r\n");
  const std::filesystem::path module = dir_ / "module.msm";
  ASSERT_TRUE(msibuildImport(module, idtFilesIn(idts)));
  odlexOutput({"action", "add-product", module.string(), "--dll", dll().string(), "--report"});
  // A noun alone means its list.
  EXPECT_EQ(odlexOutput({"sequence", module.string(), "ModuleInstallExecuteSequence"}),
            "CostFinalize\t1000\t\t\t\n"
            "InstallInitialize\t1400\t\t\tNOT Installed\n"
            "ZrInstallInitialize\t\tInstallInitialize\tafter\t\n"
            // their base action is not in the module: last, in key order
            "ZrReportInstallFailure\t\tInstallFinalize\tbefore\t\n"
            "ZrReportInstallSuccess\t\tInstallFinalize\tbefore\t\n");
}

// Each field info set writes is shown by info under its name and, but for PackageCode (kept in
// the summary information) and an empty value (no property), is the property of that name; the
// package written to -o is a new file, the package itself is left as it was.
TEST_F(OdlexPackageCommands, InfoSetFieldsAreReadBack) {
  const std::vector<std::string> assignments = {
      "ProductName=Renamed",
      "ARPCONTACT=Contact",
      "PRODUCTVERSION=3.1",
      "ProductCode={11111111-2222-3333-4444-555555555555}",
      "PackageCode={66666666-7777-8888-9999-AAAAAAAAAAAA}",
      "ProductID=PID",
      "ARPSIZE=42",
      "ARPPRODUCTICON=Icon",
      "Manufacturer=Maker",
      "ARPURLINFOABOUT=about",
      "ARPHELPLINK=",
      "ARPHELPTELEPHONE=555",
      "ARPREADME=readme",
      "ARPURLUPDATEINFO=update",
      "ARPCOMMENTS=comments",
      "ALLUSERS=2",
      "ARPSYSTEMCOMPONENT=1",
      "ARPNOREMOVE=1",
      "ARPNOMODIFY=1",
      "ARPNOREPAIR=1",
      "NOUSERNAME=1",
      "NOCOMPANYNAME=1",
      "USERNAME=user",
      "COMPANYNAME=company",
      "UpgradeCode={ABCDEFAB-CDEF-ABCD-EFAB-CDEFABCDEFAB}"};
  const std::string original = readFileBytes(package_);
  const std::filesystem::path out = dir_ / "out.msi";
  std::vector<std::string> args = {"info", "set", package_.string(), "-o", out.string()};
  args.insert(args.end(), assignments.begin(), assignments.end());
  odlexOutput(args);
  EXPECT_EQ(readFileBytes(package_), original);
  const std::vector<std::string> shown = splitLines(odlexOutput({"info", out.string()}));
  EXPECT_EQ(shown.size(), 30u);
  EXPECT_TRUE(std::ranges::find(shown, "Kind\tpackage") != shown.end());
  const std::vector<std::string> rows = splitLines(odlexOutput({"rows", out.string(), "Property"}));
  for (std::string line : assignments) {
    line[line.find('=')] = '\t';
    EXPECT_TRUE(std::ranges::find(shown, line) != shown.end()) << line;
    if (!line.starts_with("PackageCode\t") && !line.ends_with('\t')) {
      EXPECT_TRUE(std::ranges::find(rows, line) != rows.end()) << line;
    }
  }
}

TEST_F(OdlexPackageCommands, FilesListGivesEightFieldsPerFile) {
  const std::vector<std::string> lines = splitLines(odlexOutput({"files", package_.string()}));
  ASSERT_EQ(lines.size(), 5u);
  for (const std::string& line : lines)
    EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 7) << line;
}

// A file extract cannot write is reported, in --json among the problems, and fails the run.
TEST_F(OdlexPackageCommands, FilesExtractReportsEachFileItCannotWriteAndFails) {
  const std::string out = (dir_ / "out").string();
  EXPECT_TRUE(runOdlex({"extract", package_.string(), out, "--file", "Readme"}).ok());
  // Again: the file is there now and is not overwritten.
  const ProcessResult again =
      runOdlex({"extract", package_.string(), out, "--file", "Readme", "--json"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_TRUE(again.err.starts_with("odlex: Readme: ")) << again.err;
  EXPECT_NE(again.err.find("(error 183)\n"), std::string::npos) << again.err;
  const json problems = json::parse(again.out).at("problems");
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].at("file"), "Readme");
  EXPECT_EQ(problems[0].at("code"), 183);
}

// file replace prints the new row; --json gives its size.
TEST_F(OdlexPackageCommands, FileReplacePrintsTheNewRow) {
  writeFileBytes(dir_ / "new.txt", "new");
  const std::string replacement = (dir_ / "new.txt").string();
  const std::string out = (dir_ / "out.msi").string();
  const json replaced = json::parse(odlexOutput(
      {"file", "replace", package_.string(), "Readme", replacement, "-o", out, "--json"}));
  EXPECT_EQ(replaced.at("size"), 3);
  EXPECT_EQ(splitLines(odlexOutput({"file", "replace", out, "Readme", replacement})),
            std::vector<std::string>{"file\tReadme\t3\t\t"});
}

// diff lists exactly the edits, a line each; each transform command's exit status and whether it
// writes its -o file; the transform made and applied gives the edited package (no difference).
TEST_F(OdlexPackageCommands, DiffAndTransformsWriteTheirOutputOnlyOnSuccess) {
  const std::string base = package_.string();
  // Three edits of the Property table: a value changed, a row deleted, a row added.
  const std::string edited = (dir_ / "edited.msi").string();
  std::filesystem::copy_file(package_, edited);
  for (const char* statement :
       {"UPDATE `Property` SET `Value` = 'Hallo' WHERE `Property` = 'GREETING'",
        "DELETE FROM `Property` WHERE `Property` = 'ARPHELPLINK'",
        "INSERT INTO `Property` (`Property`, `Value`) VALUES ('NEWPROP', 'new')"})
    odlexOutput({"query", edited, statement});
  EXPECT_TRUE(linesEqual(sortedLines("cell\tProperty\tGREETING\tValue\tGrüße aus Zürich\tHallo\n"
                                     "row\tProperty\tNEWPROP\tadded\n"
                                     "cell\tProperty\tNEWPROP\tValue\t\tnew\n"
                                     "row\tProperty\tARPHELPLINK\tdeleted\n"),
                         sortedLines(odlexOutput({"diff", base, edited})), "odlex diff"));
  // In --json, the cell an added row did not have before is null, not an empty text.
  const json added = {
      {"key", json::array({"NEWPROP"})},
      {"change", "added"},
      {"cells", json::array({{{"column", "Value"}, {"before", nullptr}, {"after", "new"}}})}};
  const json rows = json::parse(odlexOutput({"diff", base, edited, "--json"}))["tables"][0]["rows"];
  EXPECT_NE(std::find(rows.begin(), rows.end(), added), rows.end()) << rows.dump();
  const auto at = [&](const char* name) { return (dir_ / name).string(); };
  const struct {
    std::vector<std::string> args;
    int exitCode;
    bool written;  // the -o file, the last argument
  } cases[] = {
      {{"transform", "generate", base, edited, "--suppress", "add-existing-row,update-missing-row",
        "--validate", "product", "-o", at("edit.mst")},
       0,
       true},
      {{"transform", "generate", base, base, "-o", at("same.mst")}, 0, false},
      {{"transform", "apply", base, at("edit.mst"), "-o", at("out.msi")}, 0, true},
      // Applied again, the deleted row is missing: nothing is written.
      {{"transform", "apply", at("out.msi"), at("edit.mst"), "-o", at("again.msi")}, 1, false},
      {{"transform", "embed", base, at("edit.mst"), "edit", "-o", at("embedded.msi")}, 0, true},
      {{"transform", "apply", at("embedded.msi"), ":edit", "-o", at("from-embedded.msi")}, 0, true},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.args[1] + " " + test.args.back());
    const ProcessResult run = runOdlex(test.args);
    EXPECT_EQ(run.exitCode, test.exitCode) << run.describe();
    EXPECT_EQ(std::filesystem::exists(test.args.back()), test.written);
  }
  EXPECT_EQ(odlexOutput({"diff", edited, at("out.msi")}), "");
}

// Writes a source file for every file of `package` under `sourceDir`, except `skipped`;
// returns FileID -> source path of those written.
std::map<std::string, std::string> writeSourceImage(const std::filesystem::path& package,
                                                    const std::filesystem::path& sourceDir,
                                                    const std::string& skipped) {
  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(TalString::FromUtf8(package.string()));
  db.SetSourceRoot(TalString::FromUtf8(sourceDir.string()));
  std::map<std::string, std::string> sources;
  for (RWCollectable* item : db.GetFile().GetEntries()) {
    const auto& file = static_cast<const MSIEFile&>(*item);
    const std::string id = file.GetFileID().ToUtf8();
    const std::string path = db.GetMsiFileHash().GetSourceFile(file).ToUtf8();
    if (id == skipped || !file.GetVersion().isNull())
      continue;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << "source of " << id;
    sources[id] = path;
  }
  ODLEXDatabase::KillDatabaseList();
  return sources;
}

// wixl stores a hash for every file; refresh replaces those of the files with a source file by
// what `hash` prints for that file and keeps the others; a second refresh changes nothing and
// leaves the package as it was.
TEST_F(OdlexPackageCommands, HashRefreshStoresWhatHashPrints) {
  const std::filesystem::path image = dir_ / "image";
  const std::map<std::string, std::string> sources = writeSourceImage(package_, image, "Readme");
  ASSERT_GE(sources.size(), 3u);
  const std::string out = (dir_ / "out.msi").string();
  const json first = json::parse(odlexOutput(
      {"hash", "refresh", package_.string(), "--source-dir", image.string(), "-o", out, "--json"}));
  EXPECT_EQ(first,
            (json{{"added", 0}, {"changed", sources.size()}, {"unchanged", 0}, {"missing", 1}}));
  std::set<std::string> expected;
  for (const std::string& row :
       splitLines(odlexOutput({"rows", package_.string(), "MsiFileHash"}))) {
    if (!sources.contains(row.substr(0, row.find('\t'))))
      expected.insert(row);
  }
  for (const auto& [id, path] : sources) {
    const std::string line = splitLines(odlexOutput({"hash", path})).at(0);
    expected.insert(id + "\t0" + line.substr(line.find('\t')));
  }
  const std::vector<std::string> rows = splitLines(odlexOutput({"rows", out, "MsiFileHash"}));
  EXPECT_EQ(std::set<std::string>(rows.begin(), rows.end()), expected);

  const std::string before = readFileBytes(out);
  EXPECT_EQ(
      odlexOutput({"hash", "refresh", out, "--source-dir", image.string()}),
      "added\t0\nchanged\t0\nunchanged\t" + std::to_string(sources.size()) + "\nmissing\t1\n");
  EXPECT_EQ(readFileBytes(out), before);
}

// signature prints a name and a value a line; what it finds in signed packages is the library's
// (FileSignature), its --json keys the command walk's.
TEST_F(OdlexPackageCommands, SignaturePrintsANameAndAValueALine) {
  EXPECT_EQ(odlexOutput({"signature", package_.string()}),
            "signed\tno\nsubject\t\nissuer\t\nhash\tinvalid\nstatus\t0x800B0100\n");
}

}  // namespace
}  // namespace odlex::test
