// A walk over every command of the odlex tool, found from the tool's own listing, so that a new
// command is walked without editing this file: its help and example, its usage mistakes, its
// JSON keys against the keys its help documents, and its edits writing nothing on a dry run.
// Then one table of the commands' failures: the status, what stderr names, nothing written.
// What the commands print and change on success is tested elsewhere.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "common/TestCertificates.h"
#include "package/MergeTestSupport.h"

namespace odlex::test {
namespace {

using nlohmann::json;

std::vector<std::string> wordsOf(const std::string& command) {
  std::vector<std::string> words;
  std::istringstream in(command);
  for (std::string word; in >> word;)
    words.push_back(word);
  return words;
}

std::string helpOf(const std::string& command) {
  std::vector<std::string> args = wordsOf(command);
  args.push_back("--help");
  return runOdlex(args).out;
}

// The names a help text lists under "Subcommands:".
std::vector<std::string> subcommandsIn(const std::string& help) {
  std::vector<std::string> names;
  std::istringstream lines(help);
  bool inList = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("Subcommands:"))
      inList = true;
    else if (inList && line.starts_with("  "))
      names.push_back(wordsOf(line).front());
    else
      inList = false;
  }
  return names;
}

// Every command that runs something ("tables", "component list", "hash refresh"): the commands
// the tool lists, and the verbs each lists; a noun that needs a verb is not one itself.
std::vector<std::string> leafCommands() {
  std::vector<std::string> commands;
  for (const std::string& top : subcommandsIn(runOdlex({"--help"}).out)) {
    const std::string help = helpOf(top);
    if (help.find(" SUBCOMMAND\n") == std::string::npos)
      commands.push_back(top);
    for (const std::string& verb : subcommandsIn(help))
      commands.push_back(top + " " + verb);
  }
  return commands;
}

// The description of `option` in a help text.
std::string optionDescription(const std::string& help, const std::string& option) {
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("  " + option + " "))
      return line.substr(line.find_first_not_of(' ', option.size() + 2));
  }
  return "";
}

bool offers(const std::string& help, const std::string& option) {
  return help.find("  " + option + " ") != std::string::npos ||
         help.find("," + option + " ") != std::string::npos;
}

// The keys one JSON document's description names: those of its top-level object (or of the
// objects of a top-level array), and for each of them the keys named inside its value.
struct DocumentedKeys {
  std::set<std::string> top;
  std::map<std::string, std::set<std::string>> below;
};

// A --json description may document one document, or several separated by ';' ("SELECT: {...};
// other statements: {...}").
std::vector<DocumentedKeys> documentedKeys(const std::string& description) {
  std::vector<DocumentedKeys> documents(1);
  int depth = 0;
  int topDepth = 0;  // the depth of the top-level object's keys, once its bracket is seen
  std::string lastKey;
  for (std::size_t i = 0; i < description.size(); ++i) {
    const char c = description[i];
    if (c == '{' || c == '[') {
      ++depth;
      if (topDepth == 0 && c == '{')
        topDepth = depth;
    } else if (c == '}' || c == ']') {
      --depth;
    } else if (c == ';' && depth == 0) {
      documents.emplace_back();
      topDepth = 0;
    } else if (c == '"') {
      const std::size_t end = description.find('"', i + 1);
      const std::string word = description.substr(i + 1, end - i - 1);
      i = end;
      if (depth == topDepth) {
        documents.back().top.insert(word);
        lastKey = word;
      } else if (topDepth != 0 && depth > topDepth) {
        documents.back().below[lastKey].insert(word);
      }
    }
  }
  return documents;
}

std::set<std::string> keysOf(const json& object) {
  std::set<std::string> keys;
  for (const auto& [key, value] : object.items())
    keys.insert(key);
  return keys;
}

// The objects a level of a document holds: the object itself, or the objects of an array.
std::vector<json> objectsOf(const json& value) {
  if (value.is_object())
    return {value};
  std::vector<json> objects;
  if (value.is_array()) {
    for (const json& element : value)
      if (element.is_object())
        objects.push_back(element);
  }
  return objects;
}

// Empty when `document` has exactly the documented top-level keys and only documented keys
// one level below; otherwise what differs.
std::string keyMismatch(const json& document, const DocumentedKeys& documented) {
  std::string mismatch;
  if (objectsOf(document).empty() && !documented.top.empty())
    mismatch += " no object to check;";
  for (const json& object : objectsOf(document)) {
    const std::set<std::string> keys = keysOf(object);
    for (const std::string& key : keys) {
      if (!documented.top.contains(key))
        mismatch += " undocumented key " + key + ";";
      else if (documented.below.contains(key)) {
        for (const json& inner : objectsOf(object[key]))
          for (const std::string& innerKey : keysOf(inner))
            if (!documented.below.at(key).contains(innerKey))
              mismatch += " undocumented key " + key + "." + innerKey + ";";
      }
    }
    for (const std::string& key : documented.top)
      if (!keys.contains(key))
        mismatch += " missing key " + key + ";";
  }
  return mismatch;
}

// The files the commands are run on, made once per test program.
struct Fixture {
  TempDir dir;
  std::map<std::string, std::string> paths;

  Fixture() {
    const BuiltPackage& built = testPackage(PackageKind::kWixl);
    EXPECT_FALSE(built.file.empty()) << built.error;
    const std::string package = (dir / "product.msi").string();
    std::filesystem::copy_file(built.file, package);
    // A change log with an entry, a package that differs from it, and the transform between
    // them.
    EXPECT_TRUE(runOdlex({"keyword", "set", package, "ChangeLog", "ENABLED"}).ok());
    EXPECT_TRUE(runOdlex({"replace", package, "Zürich", "Zurich", "--table", "Property"}).ok());
    const std::string edited = (dir / "edited.msi").string();
    EXPECT_TRUE(runOdlex({"query", package,
                          "UPDATE `Property` SET `Value` = 'x' WHERE `Property` = 'ALLUSERS'", "-o",
                          edited})
                    .ok());
    const std::string transform = (dir / "edit.mst").string();
    EXPECT_TRUE(runOdlex({"transform", "generate", package, edited, "-o", transform}).ok());
    writeFileBytes(dir / "file.txt", "MZ some bytes");
    writeFileBytes(dir / "empty.msi", "");
    writeFileBytes(dir / "Property.idt", "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\n");
    writeFileBytes(dir / "Broken.idt",
                   "Key\tValue\r\ns16\ti2\r\nBroken\tKey\r\na\tnot-a-number\r\n");
    paths = {{"PACKAGE", package},
             {"EDITED", edited},
             {"TRANSFORM", transform},
             {"MODULE", buildModule(dir, baselineModule()).string()},
             {"CERT", makeCertificate(dir.path(), "signer", "/CN=Walk").der.string()},
             {"FILE", (dir / "file.txt").string()},
             {"EMPTY", (dir / "empty.msi").string()},
             {"IDT", (dir / "Property.idt").string()},
             {"BROKEN", (dir / "Broken.idt").string()},
             {"MISSING", (dir / "missing").string()},
             {"DIR", dir.path().string()}};
  }

  // `args` with the placeholders replaced; NEWDIR by a folder not made yet, and PACKAGE, OUT and
  // LINK by `package`, `out` and `link` when given.
  std::vector<std::string> resolve(const std::vector<std::string>& args,
                                   const std::map<std::string, std::string>& own = {}) {
    std::vector<std::string> resolved;
    for (const std::string& arg : args) {
      if (arg == "NEWDIR")
        resolved.push_back((dir / ("new" + std::to_string(++made))).string());
      else if (own.contains(arg))
        resolved.push_back(own.at(arg));
      else
        resolved.push_back(paths.contains(arg) ? paths.at(arg) : arg);
    }
    return resolved;
  }
  int made = 0;
};

Fixture& fixture() {
  static Fixture* made = new Fixture;  // lives as long as the program; its folder is left
  return *made;
}

// The tool finds the message catalog it ships with: the replace the fixture made on a package
// whose ChangeLog keyword is ENABLED is in the package's change log.
TEST(OdlexWalk, TheToolLogsItsEditsWhenThePackageAsks) {
  EXPECT_NE(odlexOutput({"changelog", fixture().paths.at("PACKAGE")})
                .find("\tProperty\tTable Property was changed.\n"),
            std::string::npos);
}

TEST(OdlexWalk, EveryCommandExplainsItselfAndRefusesMistakesWithStatusTwo) {
  const std::vector<std::string> commands = leafCommands();
  EXPECT_GE(commands.size(), 40u);
  for (const std::string& command : commands) {
    SCOPED_TRACE(command);
    const std::string example = "Example:\n  odlex " + command + " ";
    std::vector<std::string> asked = wordsOf(command);
    asked.push_back("--help");
    std::vector<std::string> helpAsked{"help"};
    for (const std::string& word : wordsOf(command))
      helpAsked.push_back(word);
    for (const std::vector<std::string>& args : {asked, helpAsked}) {
      const ProcessResult help = runOdlex(args);
      EXPECT_EQ(help.exitCode, 0) << help.describe();
      EXPECT_NE(help.out.find(example), std::string::npos) << help.out;
    }
    std::vector<std::string> mistake = wordsOf(command);
    mistake.push_back("--no-such-option");
    const ProcessResult refused = runOdlex(mistake);
    EXPECT_EQ(refused.exitCode, 2) << refused.describe();
    EXPECT_NE(refused.err.find("Usage: " + wordsOf(command).back() + " "), std::string::npos)
        << refused.err;
    EXPECT_NE(refused.err.find(example), std::string::npos) << "the command's own usage";
  }
  for (const std::vector<std::string>& mistake :
       {std::vector<std::string>{}, {"frobnicate"}, {"tables"}, {"rewrite", "a.msi"}}) {
    EXPECT_EQ(runOdlex(mistake).exitCode, 2);
  }
  const ProcessResult version = runOdlex({"--version"});
  EXPECT_TRUE(version.ok() && version.out.starts_with("odlex ")) << version.describe();
}

// What is walked of a run: its --json output against its help, its edit done as a dry run
// (with -o), or both (the --json run a dry run too).
enum Walked { kJson = 1, kDryRun = 2, kBoth = 3 };

struct WalkedRun {
  std::string command;
  std::vector<std::string> args;  // after the command's words, with the fixture's placeholders
  Walked walked = kJson;
  std::string dryRunPrints = {};  // a part of the dry run's output, where its layout is checked
};

// One run of each command that offers --json or edits the package it takes -o for.
const std::vector<WalkedRun> kRuns = {
    {"tables", {"PACKAGE"}},
    {"query", {"PACKAGE", "SELECT `Property`, `Value` FROM `Property`"}},
    {"query", {"PACKAGE", "DELETE FROM `Property` WHERE `Property` = 'ALLUSERS'"}, kBoth},
    {"import", {"PACKAGE", "IDT"}, kDryRun},
    {"rewrite", {"PACKAGE"}, kDryRun},
    {"rows", {"PACKAGE", "Property"}},
    {"sequence list", {"PACKAGE", "InstallExecuteSequence"}},
    {"sequence free", {"PACKAGE", "InstallExecuteSequence", "--before", "InstallFinalize"}},
    {"action list", {"PACKAGE"}},
    {"action add-product", {"PACKAGE", "--dll", "FILE", "--text-files"}, kBoth},
    {"component list", {"PACKAGE"}},
    {"component show", {"PACKAGE", "MainExecutable"}},
    {"component add", {"PACKAGE", "INSTALLDIR"}, kBoth},
    {"component delete", {"PACKAGE", "MainExecutable"}, kBoth},
    {"directory list", {"PACKAGE"}},
    {"directory add", {"PACKAGE", "[INSTALLDIR]Plug-ins\\"}, kBoth},
    {"module-id combine", {"Mod", "{A1B2C3D4-E5F6-A7B8-C9D0-E1F2A3B4C5D6}"}},
    {"module-id split", {"Mod.A1B2C3D4_E5F6_A7B8_C9D0_E1F2A3B4C5D6"}},
    {"info", {"PACKAGE"}},
    {"info set", {"PACKAGE", "ProductName=Walk"}, kBoth},
    {"guid check", {"{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}"}},
    {"guid new", {"--count", "2"}},
    {"admin-install", {"PACKAGE", "--installer", "true"}},
    {"hash", {"FILE"}},
    {"hash refresh", {"PACKAGE", "--source-dir", "DIR"}, kBoth},
    {"cert", {"CERT"}},
    {"signature", {"FILE"}},
    {"summary show", {"PACKAGE"}},
    {"summary set", {"PACKAGE", "Title=Walk"}, kBoth},
    {"gui remove", {"PACKAGE"}, kBoth},
    {"gui import", {"PACKAGE", "EDITED"}, kBoth},
    {"keyword set", {"PACKAGE", "Walk", "2"}, kBoth},
    {"keyword delete", {"PACKAGE", "ChangeLog"}, kBoth},
    {"search", {"PACKAGE", "--regex", "Odlex"}},
    {"replace", {"PACKAGE", "Odlex", "Walk"}, kBoth},
    {"changelog", {"PACKAGE"}},
    {"keyword list", {"PACKAGE"}},
    {"files list", {"PACKAGE"}},
    {"extract", {"PACKAGE", "NEWDIR"}},
    {"admin-image", {"PACKAGE", "NEWDIR"}},
    {"file replace", {"PACKAGE", "Readme", "FILE"}, kBoth},
    {"file add", {"PACKAGE", "ReadmeDoc", "FILE"}, kBoth},
    {"compress", {"PACKAGE"}, kBoth},
    {"merge",
     {"PACKAGE", "MODULE", "--feature", "Complete", "--directory", "INSTALLDIR"},
     kBoth,
     "table\tComponent\t1\n"},
    {"module show", {"MODULE"}},
    {"transform show", {"TRANSFORM", "--base", "PACKAGE"}},
    {"transform apply", {"PACKAGE", "TRANSFORM"}, kDryRun},
    {"transform embed", {"PACKAGE", "TRANSFORM", "walk"}, kDryRun},
    {"diff", {"PACKAGE", "EDITED"}},
};

TEST(OdlexWalk, JsonOutputHasTheKeysItsHelpDocuments) {
  std::set<std::string> covered;
  for (const WalkedRun& run : kRuns) {
    if (!(run.walked & kJson))
      continue;
    SCOPED_TRACE(run.command);
    covered.insert(run.command);
    const std::string description = optionDescription(helpOf(run.command), "--json");
    ASSERT_FALSE(description.empty()) << "no --json";
    std::vector<std::string> args = wordsOf(run.command);
    for (const std::string& arg : fixture().resolve(run.args))
      args.push_back(arg);
    if (run.walked & kDryRun)
      args.push_back("--dry-run");
    args.push_back("--json");
    const ProcessResult result = runOdlex(args);
    ASSERT_TRUE(result.ok()) << result.describe();
    const json document = json::parse(result.out, nullptr, false);
    ASSERT_FALSE(document.is_discarded()) << result.out;
    std::string mismatches;
    bool matched = false;
    for (const DocumentedKeys& documented : documentedKeys(description)) {
      const std::string mismatch = keyMismatch(document, documented);
      matched = matched || mismatch.empty();
      mismatches += mismatch;
    }
    EXPECT_TRUE(matched) << mismatches << "\n" << description << "\n" << result.out;
  }
  for (const std::string& command : leafCommands()) {
    if (offers(helpOf(command), "--json")) {
      EXPECT_TRUE(covered.contains(command)) << command << " offers --json but is not walked";
    }
  }
}

// Commands whose -o names the file they make rather than the edited package.
const std::set<std::string> kOutputIsNotThePackage = {"export", "transform generate"};

// Runs `args` (placeholders resolved) on a copy of the fixture's package, OUT and LINK (another
// name of the copy) in a folder of its own; fails the test when the copy changed or OUT was
// made.
ProcessResult runOnACopy(const std::vector<std::string>& args) {
  TempDir dir;
  const std::filesystem::path package = dir / "product.msi";
  std::filesystem::copy_file(fixture().paths.at("PACKAGE"), package);
  std::filesystem::create_hard_link(package, dir / "link.msi");
  const std::string before = readFileBytes(package);
  const ProcessResult result =
      runOdlex(fixture().resolve(args, {{"PACKAGE", package.string()},
                                        {"OUT", (dir / "out.msi").string()},
                                        {"LINK", (dir / "link.msi").string()}}));
  EXPECT_EQ(readFileBytes(package), before);
  EXPECT_FALSE(std::filesystem::exists(dir / "out.msi"));
  return result;
}

TEST(OdlexWalk, EditsWriteNothingOnADryRun) {
  std::set<std::string> covered;
  for (const WalkedRun& run : kRuns) {
    if (!(run.walked & kDryRun))
      continue;
    SCOPED_TRACE(run.command);
    covered.insert(run.command);
    EXPECT_TRUE(offers(helpOf(run.command), "--dry-run"));
    std::vector<std::string> args = wordsOf(run.command);
    args.insert(args.end(), run.args.begin(), run.args.end());
    args.insert(args.end(), {"-o", "OUT", "--dry-run"});
    const ProcessResult result = runOnACopy(args);
    EXPECT_EQ(result.exitCode, 0) << result.describe();
    EXPECT_NE(result.out, "") << "a dry run prints what would change";
    EXPECT_NE(result.out.find(run.dryRunPrints), std::string::npos) << result.out;
  }
  for (const std::string& command : leafCommands()) {
    if (offers(helpOf(command), "-o,--output")) {
      EXPECT_TRUE(covered.contains(command) || kOutputIsNotThePackage.contains(command))
          << command << " takes -o but its edits are not walked";
    }
  }
}

struct FailingRun {
  std::vector<std::string> args;  // with the fixture's placeholders, OUT and LINK
  int exitCode;
  std::string says;      // a part of stderr
  std::string out = {};  // a part of stdout
};

// Refusals by the library (status 1, naming the installer result code or what was asked for)
// and by the commands' own checks of their arguments (status 2).
const std::vector<FailingRun> kFailingRuns = {
    // A package that is missing, or is no package: every command opens it the same way. import
    // makes a missing package, but must not take an empty file for one.
    {{"tables", "MISSING"}, 1, "(error 110)"},
    {{"rows", "FILE", "Property"}, 1, "(error 1620)"},
    {{"rewrite", "FILE", "-o", "OUT"}, 1, "(error 1620)"},
    {{"import", "EMPTY", "IDT"}, 1, "(error 1620)"},
    {{"query", "PACKAGE", "SELECT * FORM Property"}, 1, "(error 1615)"},
    {{"query", "PACKAGE", "DELETE FROM `Nope`", "-o", "OUT"}, 1, "(error 1628)"},
    {{"rows", "PACKAGE", "property"}, 1, "(error 1628)"},
    {{"import", "PACKAGE", "IDT", "BROKEN"}, 1, "Broken.idt"},
    {{"component", "show", "PACKAGE", "NoSuchComponent"}, 1, "NoSuchComponent"},
    {{"component", "add", "PACKAGE", "NoSuchFolder"}, 1, "NoSuchFolder"},
    {{"component", "delete", "PACKAGE", "NoSuchComponent", "-o", "OUT"}, 1, "NoSuchComponent"},
    {{"keyword", "delete", "PACKAGE", "NoSuchKeyword", "-o", "OUT"}, 1, "NoSuchKeyword"},
    {{"sequence", "list", "PACKAGE", "Property"}, 1, "Property is not a sequence table"},
    {{"sequence", "free", "PACKAGE", "InstallExecuteSequence", "--after", "NoSuchAction"},
     1,
     "NoSuchAction"},
    {{"action", "add-product", "PACKAGE", "--dll", "MISSING", "--report"}, 1, "the DLL"},
    {{"action", "add-product", "PACKAGE", "--dll", "DIR", "--report", "-o", "OUT"}, 1, "the DLL"},
    {{"file", "replace", "PACKAGE", "Nothing", "FILE", "-o", "OUT"}, 1, "(error 87)\n"},
    {{"info", "set", "PACKAGE", "ProductName=\xE4\xB8\xAD", "ARPCOMMENTS=\xE4\xB8\xAD"},
     1,
     "ARPCOMMENTS, ProductName"},
    {{"info", "set", "PACKAGE", "ALLUSERS=3"}, 1, "ALLUSERS"},
    {{"info", "set", "PACKAGE", "Nothing=1"}, 1, "Nothing=1"},
    {{"merge", "PACKAGE", "MODULE", "--feature", "Nope", "--directory", "INSTALLDIR", "-o", "OUT"},
     1,
     "(error 53)",
     "error\t8\tthe package has no feature Nope\n"},
    {{"merge", "PACKAGE", "MODULE", "--feature", "Complete", "--directory", "INSTALLDIR", "-o",
      "LINK"},
     1,
     "(error 3)"},
    {{"search", "PACKAGE", "--regex", "("}, 1, "odlex: "},
    {{"cert", "MISSING"}, 1, "odlex: MISSING is no readable certificate (error 2)\n"},
    {{"signature", "MISSING"}, 1, "odlex: cannot read MISSING (error 2)\n"},
    {{"hash", "MISSING"}, 1, "odlex: cannot hash MISSING (error 2)\n"},
    {{"merge", "PACKAGE", "MODULE", "--directory", "INSTALLDIR"}, 2, "--feature"},
    {{"file", "replace", "PACKAGE", "Readme", "-o", "OUT"}, 2, "FILE"},
    {{"extract", "PACKAGE"}, 2, "DIR is required"},
    {{"search", "PACKAGE"}, 2, ""},
    {{"summary", "set", "PACKAGE", "NoSuchField=1"}, 2, "NoSuchField"},
    {{"transform", "generate", "PACKAGE", "EDITED", "-o", "OUT", "--suppress", "bogus"},
     2,
     "bogus"},
    {{"transform", "show", "TRANSFORM"}, 2, "--base"},
};

TEST(OdlexWalk, FailuresGiveTheirStatusSayWhyAndWriteNothing) {
  for (const FailingRun& run : kFailingRuns) {
    SCOPED_TRACE(run.args[0] + " " + run.args[1] + " " + run.args.back());
    const ProcessResult result = runOnACopy(run.args);
    EXPECT_EQ(result.exitCode, run.exitCode) << result.describe();
    std::string says = run.says;
    if (const std::size_t at = says.find("MISSING"); at != std::string::npos)
      says.replace(at, 7, fixture().paths.at("MISSING"));
    EXPECT_NE(result.err.find(says), std::string::npos) << result.err;
    EXPECT_NE(result.out.find(run.out), std::string::npos) << result.out;
  }
  EXPECT_EQ(readFileBytes(fixture().paths.at("FILE")), "MZ some bytes");
  EXPECT_EQ(readFileBytes(fixture().paths.at("EMPTY")), "");
}

}  // namespace
}  // namespace odlex::test
