#pragma once
// Merge modules for the merge tests, written by msibuild from .idt text: a baseline module
// (a folder, a component with two files, two actions placed after InstallFiles, a property,
// a configurable custom action) that each test changes by replacing or adding tables.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <odlex/database/ODLEXDatabase.h>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/PathText.h"
#include "common/TempDir.h"
#include "msi/engine/Text.h"
#include "package/merge/TableRows.h"

namespace odlex::test {

// The GUID part of the baseline module's keys.
inline const std::string kGuid = "1A2B3C4D_5E6F_4A5B_8C9D_0E1F2A3B4C5D";
inline const std::string kModuleId = "OdlexMod." + kGuid;

// .idt text by file name ("File.idt"); the text uses "G" for kGuid after a '.' and '\n' for
// line ends.
using IdtFiles = std::map<std::string, std::string>;

inline std::string withGuid(std::string text) {
  for (std::size_t at = text.find(".G"); at != std::string::npos; at = text.find(".G", at + 1)) {
    const char next = at + 2 < text.size() ? text[at + 2] : '\n';
    if (next == '\t' || next == '\n' || next == ']')
      text.replace(at + 1, 1, kGuid);
  }
  std::string crlf;
  for (char c : text)
    crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return crlf;
}

inline IdtFiles baselineModule() {
  return {
      {"ModuleSignature.idt",
       "ModuleID\tLanguage\tVersion\ns72\ti2\ts32\nModuleSignature\tModuleID\tLanguage\n"
       "OdlexMod.G\t1033\t1.0.0.0\n"},
      {"ModuleComponents.idt",
       "Component\tModuleID\tLanguage\ns72\ts72\ti2\nModuleComponents\tComponent\tModuleID\t"
       "Language\nModComp.G\tOdlexMod.G\t1033\n"},
      {"Directory.idt",
       "Directory\tDirectory_Parent\tDefaultDir\ns72\tS72\tl255\nDirectory\tDirectory\n"
       "TARGETDIR\t\tSourceDir\nModDir.G\tTARGETDIR\tModFiles\n"},
      {"Component.idt",
       "Component\tComponentId\tDirectory_\tAttributes\tCondition\tKeyPath\n"
       "s72\tS38\ts72\ti2\tS255\tS72\nComponent\tComponent\n"
       "ModComp.G\t{6F1E2D3C-4B5A-4978-8695-A4B3C2D1E0F9}\tModDir.G\t0\t\tModFile1.G\n"},
      {"File.idt",
       "File\tComponent_\tFileName\tFileSize\tVersion\tLanguage\tAttributes\tSequence\n"
       "s72\ts72\tl255\ti4\tS72\tS20\tI2\ti2\nFile\tFile\n"
       "ModFile2.G\tModComp.G\ttwo.txt\t9\t\t\t0\t2\nModFile1.G\tModComp.G\tone."
       "txt\t9\t\t\t0\t1\n"},
      {"CustomAction.idt",
       "Action\tType\tSource\tTarget\ns72\ti2\tS72\tS255\nCustomAction\tAction\n"
       "ModAction.G\t51\tMODPROP.G\t[=Greeting]\nModAction2.G\t51\tMODPROP2.G\tdone\n"},
      {"ModuleInstallExecuteSequence.idt",
       "Action\tSequence\tBaseAction\tAfter\tCondition\ns64\tI2\tS64\tI2\tS255\n"
       "ModuleInstallExecuteSequence\tAction\n"
       "ModAction2.G\t\tModAction.G\t1\t\nModAction.G\t\tInstallFiles\t1\tNOT Installed\n"
       "InstallFiles\t4000\t\t\t\n"},
      {"Property.idt", "Property\tValue\ns72\tl0\nProperty\tProperty\nModProp.G\thello\n"},
      {"ModuleConfiguration.idt",
       "Name\tFormat\tType\tContextData\tDefaultValue\tAttributes\tDisplayName\tDescription\t"
       "HelpLocation\tHelpKeyword\ns72\ti2\tS72\tS0\tS0\tI4\tL0\tL0\tS0\tS0\n"
       "ModuleConfiguration\tName\nGreeting\t0\t\t\tdefault\t0\t\t\t\t\n"},
      {"ModuleSubstitution.idt",
       "Table\tRow\tColumn\tValue\ns72\ts0\ts72\tS0\nModuleSubstitution\tTable\tRow\tColumn\n"
       "CustomAction\tModAction.G\tTarget\t[=Greeting]\n"},
  };
}

// The contents of the baseline module's files, by file name.
inline const std::map<std::string, std::string> kModuleFiles = {{"one.txt", "one file\n"},
                                                                {"two.txt", "two file\n"}};

// Writes `files` into `dir` and has msibuild make the module `dir`/module.msm from them, with
// the baseline's two files in a MergeModule.CABinet stream made by gcab (MSZIP), each stored
// under its File key.
inline std::filesystem::path buildModule(const TempDir& dir, const IdtFiles& files) {
  const std::filesystem::path sources = dir / "module-idt";
  std::filesystem::create_directories(sources);
  std::vector<std::filesystem::path> idts;
  for (const auto& [name, text] : files) {
    writeFileBytes(sources / name, withGuid(text));
    idts.push_back(sources / name);
  }
  const std::filesystem::path module = dir / "module.msm";
  EXPECT_TRUE(msibuildImport(module, idts));
  const std::filesystem::path members = dir / "module-files";
  writeFileBytes(members / ("ModFile1." + kGuid), kModuleFiles.at("one.txt"));
  writeFileBytes(members / ("ModFile2." + kGuid), kModuleFiles.at("two.txt"));
  const std::filesystem::path cabinet = dir / "module.cab";
  EXPECT_TRUE(
      runProcess({"gcab", "-c", "-z", cabinet.string(), "ModFile2." + kGuid, "ModFile1." + kGuid},
                 members)
          .ok());
  EXPECT_TRUE(
      runProcess({"msibuild", module.string(), "-a", "MergeModule.CABinet", cabinet.string()})
          .ok());
  return module;
}

// Every table of the open database, row by row, and its stream names: equal before and after
// an operation that must leave the database as it was.
inline std::string contentsOf(ODLEXDatabase& db) {
  const engine::Database& engine = *db.GetDatabase().engineDatabase();
  std::string text;
  for (std::size_t t = 0; t < engine.tableCount(); ++t) {
    const merge::TableRows rows = merge::readTable(engine, engine.table(t));
    text += engine::toUtf8(rows.name) + "\n";
    for (const merge::Row& row : rows.rows) {
      for (const merge::Value& value : row)
        text += engine::toUtf8(value.display()) + "\t";
      text += "\n";
    }
  }
  for (const std::u16string& stream : engine.streamNames())
    text += engine::toUtf8(stream) + "\n";
  return text;
}

}  // namespace odlex::test
