#include <odlex/database/ODLEXDatabase.h>
#include <odlex/package/ODLEXPackageFiles.h>

#include <gtest/gtest.h>

#include <map>

#include "common/IdtText.h"
#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/PeModule.h"
#include "common/TempDir.h"
#include "common/VersionResource.h"
#include "package/cabinet/Cabinet.h"

namespace odlex::package {
namespace {

namespace fs = std::filesystem;
using test::readFileBytes;
using test::runProcess;
using test::TempDir;
using test::writeFileBytes;

// Every regular file under `dir` by its path relative to `dir`, with its bytes.
std::map<std::string, std::string> filesUnder(const fs::path& dir) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(dir)) {
    if (entry.is_regular_file())
      files[fs::relative(entry.path(), dir).string()] = readFileBytes(entry.path());
  }
  return files;
}

// Extracts every file of `package` into `dir`; fails the test on any problem.
void extractAll(const fs::path& package, const fs::path& dir) {
  TalError error;
  std::unique_ptr<ODLEXPackageFiles> files =
      ODLEXPackageFiles::Open(TalString::FromUtf8(package.string()), error);
  ASSERT_TRUE(files) << error.GetText().ToUtf8();
  std::vector<TalError> problems;
  EXPECT_TRUE(files->Extract(TalString::FromUtf8(dir.string()), {}, problems));
  for (const TalError& problem : problems)
    ADD_FAILURE() << problem.GetContext().ToUtf8() << ": " << problem.GetText().ToUtf8();
}

// A package imported by msibuild from the tables `idts` (name -> text) written into `dir`, with
// the streams `streams` (name -> file).
fs::path msibuildPackage(const fs::path& dir, const std::map<std::string, std::string>& idts,
                         const std::map<std::string, fs::path>& streams = {}) {
  for (const auto& [name, text] : idts)
    writeFileBytes(dir / "idt" / (name + ".idt"), text);
  const fs::path package = dir / "crafted.msi";
  EXPECT_TRUE(test::msibuildImport(package, test::idtFilesIn(dir / "idt")));
  for (const auto& [name, file] : streams) {
    const test::ProcessResult run =
        runProcess({"msibuild", package.string(), "-a", name, file.string()});
    EXPECT_TRUE(run.ok()) << run.describe();
  }
  return package;
}

const char kDirectoryHeader[] =
    "Directory\tDirectory_Parent\tDefaultDir\r\ns72\tS72\tl255\r\n"
    "Directory\tDirectory\r\nTARGETDIR\t\tSourceDir\r\n";
const char kComponentHeader[] =
    "Component\tComponentId\tDirectory_\tAttributes\tCondition\tKeyPath\r\n"
    "s72\tS38\ts72\ti2\tS255\tS72\r\nComponent\tComponent\r\n";
const char kFileHeader[] =
    "File\tComponent_\tFileName\tFileSize\tVersion\tLanguage\tAttributes\tSequence\r\n"
    "s72\ts72\tl255\ti4\tS72\tS20\tI2\ti4\r\nFile\tFile\r\n";
const char kMediaHeader[] =
    "DiskId\tLastSequence\tDiskPrompt\tCabinet\tVolumeLabel\tSource\r\n"
    "i2\ti4\tL64\tS255\tS32\tS72\r\nMedia\tDiskId\r\n";

std::string summaryIdt(int wordCount) {
  return "PropertyId\tValue\r\ni2\tl255\r\n_SummaryInformation\tPropertyId\r\n"
         "7\tIntel;1033\r\n9\t{9C0B2A3D-1E4F-4A5B-8C6D-7E8F9A0B1C2D}\r\n14\t200\r\n15\t" +
         std::to_string(wordCount) + "\r\n";
}

const char kExternalCabinetWxs[] = R"(<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="8E3B6C5A-3D1F-4C2B-9A11-6F0E2D4B7C20" Name="External" Language="1033"
           Version="1.0.0" Manufacturer="Odlex" UpgradeCode="4A7F2C91-0B3E-4D6A-8C55-1E9F3A2B6D50">
    <Package InstallerVersion="200" Compressed="yes" />
    <Media Id="1" Cabinet="outside.cab" EmbedCab="no" />
    <Directory Id="TARGETDIR" Name="SourceDir">
      <Directory Id="Top" Name="A Long Folder Name">
        <Component Id="C1" Guid="1F0C8C2E-7B64-4C2D-8E5A-2B9D3F4A6C21">
          <File Id="F1" Name="A Long File Name.txt" Source="F1" />
        </Component>
        <Directory Id="Sub" Name="sub">
          <Component Id="C2" Guid="1F0C8C2E-7B64-4C2D-8E5A-2B9D3F4A6C22">
            <File Id="F2" Name="two.bin" Source="F2" />
          </Component>
        </Directory>
      </Directory>
    </Directory>
    <Feature Id="F" Level="1"><ComponentRef Id="C1" /><ComponentRef Id="C2" /></Feature>
  </Product>
</Wix>
)";

// wixl refers to the external cabinet without writing it; gcab makes it from the files, which
// are named after their keys as a package's cabinet names its members.
fs::path wixlExternalCabinet(const fs::path& dir) {
  writeFileBytes(dir / "F1", "one\r\n");
  writeFileBytes(dir / "F2", std::string(70000, '\x02'));
  writeFileBytes(dir / "external.wxs", kExternalCabinetWxs);
  for (const std::vector<std::string>& argv :
       {std::vector<std::string>{"wixl", "-o", "external.msi", "external.wxs"},
        {"gcab", "-c", "-z", "-n", "outside.cab", "F1", "F2"}}) {
    const test::ProcessResult run = runProcess(argv, dir);
    EXPECT_TRUE(run.ok()) << run.describe();
  }
  return dir / "external.msi";
}

// Uncompressed: the files lie beside the package in the source layout (long names).
fs::path msibuildUncompressed(const fs::path& dir) {
  writeFileBytes(dir / "Long Dir" / "inner" / "Long Name.txt", "uncompressed one");
  writeFileBytes(dir / "Long Dir" / "two.txt", "uncompressed two");
  return msibuildPackage(
      dir,
      {{"Directory", std::string(kDirectoryHeader) + "Top\tTARGETDIR\tLONGDI~1|Long Dir\r\n"
                                                     "Inner\tTop\tinner\r\n"},
       {"Component", std::string(kComponentHeader) + "C1\t\tInner\t0\t\t\r\n"
                                                     "C2\t\tTop\t0\t\t\r\n"},
       {"File", std::string(kFileHeader) + "F1\tC1\tLONGNA~1.TXT|Long Name.txt\t16\t\t\t0\t1\r\n"
                                           "F2\tC2\ttwo.txt\t16\t\t\t0\t2\r\n"},
       {"Media", std::string(kMediaHeader) + "1\t2\t\t\t\t\r\n"},
       {"_SummaryInformation", summaryIdt(0)}});
}

// The files msiextract takes out of `package` (from its cabinets).
std::map<std::string, std::string> msiextractFiles(const fs::path& package, const fs::path& dir) {
  const test::ProcessResult run = runProcess({"msiextract", "-C", dir.string(), package.string()});
  EXPECT_TRUE(run.ok()) << run.describe();
  return filesUnder(dir);
}

// An administrative image of the wixl package, made by odlex.
fs::path wixlAdministrativeImage(const fs::path& dir) {
  const fs::path original = test::testPackage(test::PackageKind::kWixl).file;
  EXPECT_TRUE(ODLEXDatabase::MakeAdministrativeImage(
      TalString::FromUtf8(original.string()), TalString::FromUtf8((dir / "image").string())));
  return dir / "image" / original.filename();
}

// Every layout a package's files may have: Extract gives the files an installer would install,
// and Compress puts them all into one embedded cabinet, from which msiextract takes the same
// files.
TEST(PackageFiles, ExtractAndCompressGiveTheFilesOfEveryLayout) {
  const auto wixl = [](const fs::path&) {
    return test::testPackage(test::PackageKind::kWixl).file;
  };
  struct Case {
    const char* name;
    std::function<fs::path(const fs::path&)> build;
    // What extraction must give; when not given, the files msiextract takes out of `like` (the
    // package itself when not given). msiextract skips uncompressed files, so those are checked
    // against the sources beside the package, or against the package they were laid out from.
    std::map<std::string, std::string> expected;
    std::function<fs::path(const fs::path&)> like;
  };
  const Case cases[] = {
      {"wixl, embedded cabinet", wixl, {}, nullptr},
      {"wixl, external cabinet", wixlExternalCabinet, {}, nullptr},
      {"msibuild, uncompressed",
       msibuildUncompressed,
       {{"Long Dir/inner/Long Name.txt", "uncompressed one"},
        {"Long Dir/two.txt", "uncompressed two"}},
       nullptr},
      {"administrative image", wixlAdministrativeImage, {}, wixl},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    TempDir dir;
    const fs::path package = test.build(dir.path());
    ASSERT_FALSE(package.empty());
    std::map<std::string, std::string> expected = test.expected;
    if (expected.empty())
      expected = msiextractFiles(test.like ? test.like(dir.path()) : package, dir / "theirs");
    EXPECT_FALSE(expected.empty());
    extractAll(package, dir / "ours");
    EXPECT_EQ(filesUnder(dir / "ours"), expected);

    const fs::path out = dir / "compressed" / "out.msi";
    fs::create_directories(out.parent_path());
    TalError error;
    auto editor = ODLEXPackageFileEditor::Open(TalString::FromUtf8(package.string()),
                                               TalString::FromUtf8(out.string()), error);
    ASSERT_TRUE(editor) << error.GetText().ToUtf8();
    ASSERT_TRUE(editor->Compress(error)) << error.GetText().ToUtf8();
    ASSERT_TRUE(editor->Save(error)) << error.GetText().ToUtf8();
    EXPECT_EQ(msiextractFiles(out, dir / "after"), expected);
    EXPECT_EQ(
        test::msiinfoRows(out, "Media"),
        std::vector<std::string>{"1\t" + std::to_string(expected.size()) + "\t\t#files1.cab\t\t"});
    const std::vector<std::string> summary = test::splitLines(test::msiinfoSuminfo(out).out);
    EXPECT_NE(std::find(summary.begin(), summary.end(), "Source: 2 (2)"), summary.end());
  }
}

TEST(PackageFiles, HostileOrBrokenFilesAreReportedAndNothingLeavesTheFolder) {
  TempDir dir;
  // File key -> what extracting it gives: 0 written, else the problem's code.
  const std::map<std::string, unsigned> expected = {
      {"Good", 0},    {"Good2", 183},    {"UpDir", 161},    {"Backslash", 161}, {"Device", 161},
      {"Drive", 161}, {"Absolute", 161}, {"WrongSize", 13}, {"NotInCab", 2},    {"Empty", 161},
  };
  std::string files = kFileHeader;
  auto addFile = [&](const std::string& key, const std::string& component, const std::string& name,
                     int size, int sequence) {
    files += key + "\t" + component + "\t" + name + "\t" + std::to_string(size) + "\t\t\t0\t" +
             std::to_string(sequence) + "\r\n";
  };
  addFile("Good", "App", "good.txt", 4, 1);
  addFile("Good2", "App", "GOOD.TXT", 4, 2);
  addFile("UpDir", "Up", "evil.txt", 4, 3);
  addFile("Backslash", "App", "x\\..\\..\\evil.txt", 4, 4);
  addFile("Device", "App", "CON.txt", 4, 5);
  addFile("Drive", "Drive", "evil.txt", 4, 6);
  addFile("Absolute", "Root", "evil.txt", 4, 7);
  addFile("WrongSize", "App", "size.txt", 5, 8);
  addFile("NotInCab", "App", "missing.txt", 4, 9);
  addFile("Empty", "Blank", "evil.txt", 4, 10);
  CabinetWriter cabinet;
  writeFileBytes(dir / "payload", "data");
  for (const auto& [key, code] : expected) {
    if (key != "NotInCab")
      cabinet.add(key, dir / "payload");
  }
  std::string error;
  ASSERT_TRUE(cabinet.write(dir / "hostile.cab", error)) << error;
  const fs::path package = msibuildPackage(
      dir.path(),
      {{"Directory", std::string(kDirectoryHeader) + "AppDir\tTARGETDIR\tapp\r\n"
                                                     "UpDir\tTARGETDIR\t..\r\n"
                                                     "DriveDir\tTARGETDIR\tC:\r\n"
                                                     "RootDir\tAppDir\t/\r\n"
                                                     "BlankDir\tAppDir\t|\r\n"},
       {"Component", std::string(kComponentHeader) + "App\t\tAppDir\t0\t\t\r\n"
                                                     "Up\t\tUpDir\t0\t\t\r\n"
                                                     "Drive\t\tDriveDir\t0\t\t\r\n"
                                                     "Root\t\tRootDir\t0\t\t\r\n"
                                                     "Blank\t\tBlankDir\t0\t\t\r\n"},
       {"File", files},
       {"Media", std::string(kMediaHeader) + "1\t10\t\t#hostile.cab\t\t\r\n"},
       {"_SummaryInformation", summaryIdt(2)}},
      {{"hostile.cab", dir / "hostile.cab"}});
  const auto before = filesUnder(dir.path());
  TalError openError;
  std::unique_ptr<ODLEXPackageFiles> opened =
      ODLEXPackageFiles::Open(TalString::FromUtf8(package.string()), openError);
  ASSERT_TRUE(opened) << openError.GetText().ToUtf8();
  std::vector<TalError> problems;
  EXPECT_FALSE(opened->Extract(TalString::FromUtf8((dir / "out" / "in").string()), {}, problems));
  std::map<std::string, unsigned> outcome;
  for (const auto& [key, code] : expected)
    outcome[key] = 0;
  for (const TalError& problem : problems)
    outcome[problem.GetContext().ToUtf8()] = problem.GetCode();
  EXPECT_EQ(outcome, expected);
  std::map<std::string, std::string> after = filesUnder(dir.path());
  EXPECT_EQ(after.erase("out/in/app/good.txt"), 1u);
  EXPECT_EQ(after, before);
}

// What makes the image's copy of the package one that installs from files beside it.
TEST(PackageFiles, AdministrativeImageNamesNoCabinet) {
  TempDir dir;
  const fs::path image = wixlAdministrativeImage(dir.path());
  const std::vector<std::string> summary = test::splitLines(test::msiinfoSuminfo(image).out);
  EXPECT_NE(std::find(summary.begin(), summary.end(), "Source: 4 (4)"), summary.end());
  EXPECT_EQ(test::msiinfoRows(image, "Media"), std::vector<std::string>{"1\t5\t\t\t\t"});
  EXPECT_EQ(test::msiinfoStreams(image).out.find("product.cab"), std::string::npos);
}

// The row of `key` in `table` as msiinfo exports it; empty when there is none (or no table).
std::string rowOf(const fs::path& package, const std::string& table, const std::string& key) {
  if (test::msiinfoTables(package).out.find(table + "\n") == std::string::npos)
    return {};
  for (const std::string& row : test::msiinfoRows(package, table)) {
    if (row.starts_with(key + "\t"))
      return row;
  }
  return {};
}

// The MsiFileHash row of `key` for the file `file`, from md5sum's digest: four little-endian
// signed 32-bit parts.
std::string expectedHashRow(const std::string& key, const fs::path& file) {
  const test::ProcessResult run = runProcess({"md5sum", file.string()});
  EXPECT_TRUE(run.ok()) << run.describe();
  std::string row = key + "\t0";
  for (std::size_t part = 0; part < 4; ++part) {
    std::uint32_t word = 0;
    for (std::size_t byte = 0; byte < 4; ++byte)
      word |= static_cast<std::uint32_t>(
                  std::stoul(run.out.substr(8 * part + 2 * byte, 2), nullptr, 16))
              << (8 * byte);
    row += "\t" + std::to_string(static_cast<std::int32_t>(word));
  }
  return row;
}

// Edits of the wixl package, each saved to a copy: msiextract takes out of the copy the
// package's files with the new bytes, and the new files have their File rows and, when they
// have no version, the MsiFileHash row of their bytes.
TEST(PackageFileEditor, ReplacedAndAddedFilesHaveTheirBytesAndRows) {
  std::string random(200000, '\0');
  std::uint32_t state = 12345;
  for (char& c : random)
    c = static_cast<char>((state = state * 1103515245 + 12345) >> 24);
  const std::string exe =
      test::peModuleWith(16, test::versionResource(0x00020001, 0x00040003, {0x04B00409}));
  const std::string dll =
      test::peModuleWith(16, test::versionResource(0x00030000, 7, {0x04B00407}));
  const struct {
    const char* replaced;  // the key of the file replaced; none: the files are added to ReadmeDoc
    // Each file's path below the product's folder and its new bytes; File rows in the same order.
    std::vector<std::pair<std::string, std::string>> files;
    std::vector<std::string> rows;
  } cases[] = {
      {"Readme",
       {{"readme.txt", "a new readme\r\n"}},
       {"Readme\tReadmeDoc\treadme.txt\t14\t\t\t512\t2"}},
      {"DataDb", {{"data/data.db", random}}, {"DataDb\tDataFiles\tdata.db\t200000\t\t\t512\t5"}},
      {"MainExe",
       {{"app.exe", exe}},
       {"MainExe\tMainExecutable\tapp.exe\t" + std::to_string(exe.size()) +
        "\t2.1.4.3\t1033\t512\t1"}},
      {nullptr,
       {{"A Long Name.txt", "added text"}, {"lib.dll", dll}},
       {"A_Long_Name.txt\tReadmeDoc\tALONGN~1.TXT|A Long Name.txt\t10\t\t\t0\t6",
        "lib.dll\tReadmeDoc\tlib.dll\t" + std::to_string(dll.size()) + "\t3.0.0.7\t1031\t0\t7"}},
  };
  const fs::path original = test::testPackage(test::PackageKind::kWixl).file;
  ASSERT_FALSE(original.empty());
  TempDir dir;
  const std::map<std::string, std::string> before = msiextractFiles(original, dir / "before");
  for (std::size_t edit = 0; edit < std::size(cases); ++edit) {
    const auto& test = cases[edit];
    SCOPED_TRACE(test.rows.front());
    const fs::path folder = dir / std::to_string(edit);
    std::map<std::string, std::string> expected = before;
    std::vector<TalString> sources;
    for (const auto& [path, bytes] : test.files) {
      writeFileBytes(folder / "new" / path, bytes);
      sources.push_back(TalString::FromUtf8((folder / "new" / path).string()));
      expected["Program Files/Odlex Test/" + path] = bytes;
    }
    const fs::path out = folder / "out.msi";
    TalError error;
    auto editor = ODLEXPackageFileEditor::Open(TalString::FromUtf8(original.string()),
                                               TalString::FromUtf8(out.string()), error);
    ASSERT_TRUE(editor) << error.GetText().ToUtf8();
    if (test.replaced) {
      std::map<std::string, std::string> paths;  // key -> target path, as the editor lists them
      for (const ODLEXPackageFile& file : editor->GetFiles())
        paths[file.key.ToUtf8()] = file.targetPath.ToUtf8();
      EXPECT_EQ(paths[test.replaced], "Program Files/Odlex Test/" + test.files.front().first);
    }
    std::vector<TalString> keys;
    const bool edited = test.replaced ? editor->ReplaceFile(TalString::FromUtf8(test.replaced),
                                                            sources.front(), error)
                                      : editor->AddFiles(u"ReadmeDoc", sources, keys, error);
    ASSERT_TRUE(edited && editor->Save(error)) << error.GetText().ToUtf8();
    EXPECT_EQ(msiextractFiles(out, folder / "after"), expected);
    std::vector<TalString> rowKeys;
    for (std::size_t i = 0; i < test.rows.size(); ++i) {
      const std::vector<std::string> cells = test::splitCells(test.rows[i]);
      rowKeys.push_back(TalString::FromUtf8(cells[0]));
      EXPECT_EQ(rowOf(out, "File", cells[0]), test.rows[i]);
      EXPECT_EQ(
          rowOf(out, "MsiFileHash", cells[0]),
          cells[4].empty() ? expectedHashRow(cells[0], folder / "new" / test.files[i].first) : "");
    }
    if (!test.replaced) {
      EXPECT_EQ(keys, rowKeys);
      EXPECT_EQ(test::msiinfoRows(out, "Media"),
                (std::vector<std::string>{"1\t5\t\t#product.cab\t\t", "2\t7\t\t#added2.cab\t\t"}));
    }
  }
}

// A refused replacement or addition gives its code and leaves the editor's file list as it was.
TEST(PackageFileEditor, RefusedEditsGiveTheirCode) {
  TempDir dir;
  writeFileBytes(dir / "new", "new bytes");
  writeFileBytes(dir / "readme.txt", "same name as the package's readme");
  const fs::path wixl = test::testPackage(test::PackageKind::kWixl).file;
  using Edit = std::function<bool(ODLEXPackageFileEditor&, TalError&)>;
  const auto replace = [](const char* key, const fs::path& file) -> Edit {
    return [=](ODLEXPackageFileEditor& editor, TalError& error) {
      return editor.ReplaceFile(TalString::FromUtf8(key), TalString::FromUtf8(file.string()),
                                error);
    };
  };
  const auto add = [](const char* component, const std::vector<fs::path>& paths) -> Edit {
    return [=](ODLEXPackageFileEditor& editor, TalError& error) {
      std::vector<TalString> files;
      for (const fs::path& file : paths)
        files.push_back(TalString::FromUtf8(file.string()));
      std::vector<TalString> keys;
      return editor.AddFiles(TalString::FromUtf8(component), files, keys, error);
    };
  };
  const struct {
    const char* name;
    fs::path package;
    Edit edit;
    unsigned code;
  } cases[] = {
      {"replace: unknown key", wixl, replace("NoSuchFile", dir / "new"), 87},
      {"replace: missing new file", wixl, replace("Readme", dir / "missing"), 2},
      {"replace: uncompressed file", msibuildUncompressed(dir.path()), replace("F1", dir / "new"),
       1627},
      {"add: unknown component", wixl, add("NoSuchComponent", {dir / "new"}), 87},
      {"add: missing file", wixl, add("ReadmeDoc", {dir / "README.TXT"}), 2},
      {"add: name taken", wixl, add("ReadmeDoc", {dir / "readme.txt"}), 87},
      {"add: a file twice", wixl, add("ReadmeDoc", {dir / "new", dir / "new"}), 87},
      {"add: no file", wixl, add("ReadmeDoc", {}), 87},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    TalError error;
    auto editor =
        ODLEXPackageFileEditor::Open(TalString::FromUtf8(test.package.string()),
                                     TalString::FromUtf8((dir / "out.msi").string()), error);
    ASSERT_TRUE(editor) << error.GetText().ToUtf8();
    const std::size_t files = editor->GetFiles().size();
    EXPECT_FALSE(test.edit(*editor, error));
    EXPECT_EQ(error.GetCode(), test.code) << error.GetText().ToUtf8();
    EXPECT_EQ(editor->GetFiles().size(), files);
  }
}

}  // namespace
}  // namespace odlex::package
