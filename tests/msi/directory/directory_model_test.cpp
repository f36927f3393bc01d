// The directory model: adding folder paths and reading the paths back (the rows an installer
// author expects, reuse of existing rows, long/short and source/target paths, refusal of hostile
// paths and broken tables without crashing or hanging), and folder names: DefaultDir values
// (parsing keeps every form the installer writes exactly, the accessors pick the right side and
// name, malformed values are refused) and the short (8.3) names made for long folder names.

#include <gtest/gtest.h>

#include "odlex/support/TalString.h"

#include <set>

#include "msi/directory/AddPath.h"
#include "msi/directory/DefaultDir.h"
#include "msi/directory/DirectoryPath.h"
#include "msi/directory/ShortName.h"

namespace odlex::directory {
namespace {

std::string utf8(const std::u16string& text) {
  return TalString(text).ToUtf8();
}

template <typename T>
T valueOf(const Result<T>& result) {
  EXPECT_TRUE(result) << (result ? "" : utf8(result.error()));
  return result ? result.value() : T{};
}

std::u16string display(const DirectoryModel& model, const std::u16string& key, bool shortNames) {
  return valueOf(targetPath(model, key, true, false, shortNames));
}

TEST(DirectoryPathTest, AddsTheChainAnInstallerAuthorExpects) {
  MemoryDirectoryModel model;
  const auto leaf =
      valueOf(addTargetPath(model, u"[ProgramFilesFolder]Vendor Name\\Application/bin"));
  EXPECT_EQ(leaf, u"bin");
  EXPECT_EQ(model.find(u"TARGETDIR"), (DirectoryRow{u"TARGETDIR", u"", u"SourceDir"}));
  EXPECT_EQ(model.find(u"ProgramFilesFolder"),
            (DirectoryRow{u"ProgramFilesFolder", u"TARGETDIR", u"."}));
  EXPECT_EQ(model.find(u"Vendor_Name"),
            (DirectoryRow{u"Vendor_Name", u"ProgramFilesFolder", u"VENDOR~1|Vendor Name"}));
  EXPECT_EQ(model.find(u"Application"),
            (DirectoryRow{u"Application", u"Vendor_Name", u"APPLIC~1|Application"}));
  EXPECT_EQ(model.find(u"bin"), (DirectoryRow{u"bin", u"Application", u"bin"}));
  EXPECT_EQ(model.size(), 5u);

  EXPECT_EQ(valueOf(addTargetPath(model, u"[ProgramFilesFolder]vendor name\\APPLICATION\\bin\\")),
            leaf);
  EXPECT_EQ(model.size(), 5u);

  EXPECT_EQ(display(model, leaf, false), u"[ProgramFilesFolder]Vendor Name\\Application\\bin\\");
  EXPECT_EQ(display(model, leaf, true), u"[ProgramFilesFolder]VENDOR~1\\APPLIC~1\\bin\\");
  EXPECT_EQ(valueOf(targetPath(model, leaf, true, true, false)),
            u"[TARGETDIR]Vendor Name\\Application\\bin\\");
  EXPECT_EQ(valueOf(targetPath(model, leaf, false, false, false)),
            u"[ProgramFilesFolder]vendor name\\application\\bin\\");
  EXPECT_EQ(valueOf(sourcePath(model, leaf, true, false, false)),
            u"[SourceDir]Vendor Name\\Application\\bin\\");
  EXPECT_EQ(display(model, u"ProgramFilesFolder", false), u"[ProgramFilesFolder]");
  EXPECT_EQ(display(model, u"TARGETDIR", false), u"[TARGETDIR]");
}

TEST(DirectoryPathTest, SiblingsGetDistinctKeysAndShortNames) {
  MemoryDirectoryModel model;
  const auto first = valueOf(addTargetPath(model, u"Vendor Name\\Vendor Name"));
  const auto second = valueOf(addTargetPath(model, u"Vendor Name\\Vendor Names"));
  EXPECT_EQ(first, u"Vendor_Name1");
  EXPECT_EQ(second, u"Vendor_Names");
  EXPECT_EQ(display(model, first, true), u"[TARGETDIR]VENDOR~1\\VENDOR~1\\");
  EXPECT_EQ(display(model, second, true), u"[TARGETDIR]VENDOR~1\\VENDOR~2\\");
  EXPECT_EQ(display(model, second, false), u"[TARGETDIR]Vendor Name\\Vendor Names\\");
}

TEST(DirectoryPathTest, KeysAreIdentifiersNeverFolderProperties) {
  MemoryDirectoryModel model;
  EXPECT_EQ(valueOf(addTargetPath(model, u"TempFolder")), u"TempFolder1");
  EXPECT_EQ(valueOf(addTargetPath(model, u"2024 release")), u"_2024_release");
  EXPECT_EQ(valueOf(addTargetPath(model, std::u16string(200, u'x'))), std::u16string(72, u'x'));
  EXPECT_EQ(valueOf(addTargetPath(model, std::u16string(201, u'x'))),
            std::u16string(71, u'x') + u"1");
}

TEST(DirectoryPathTest, SourceAndTargetNamesPairUp) {
  MemoryDirectoryModel model;
  const auto leaf = valueOf(
      addSourceTargetPath(model, u"[SourceDir]Src Files\\x86", u"[ProgramFilesFolder]App\\bin"));
  EXPECT_EQ(model.find(leaf)->defaultDir, u"bin:x86");
  EXPECT_EQ(model.find(model.find(leaf)->parent)->defaultDir, u"App:SRCFIL~1|Src Files");
  EXPECT_EQ(valueOf(sourcePath(model, leaf, true, false, false)), u"[SourceDir]Src Files\\x86\\");
  EXPECT_EQ(valueOf(sourcePath(model, leaf, true, false, true)), u"[SourceDir]SRCFIL~1\\x86\\");
  EXPECT_EQ(display(model, leaf, false), u"[ProgramFilesFolder]App\\bin\\");

  EXPECT_EQ(valueOf(addSourceTargetPath(model, u"Src Files\\x86", u"[ProgramFilesFolder]App\\bin")),
            leaf);
  // The same target with another source is another row; a shorter source leaves "." behind.
  const auto other = valueOf(addSourceTargetPath(model, u"Src", u"[ProgramFilesFolder]App\\bin"));
  EXPECT_NE(other, leaf);
  EXPECT_EQ(model.find(other)->defaultDir, u"bin:.");
  EXPECT_EQ(valueOf(sourcePath(model, other, true, false, false)), u"[SourceDir]Src\\");
  EXPECT_FALSE(addSourceTargetPath(model, u"[WindowsFolder]x", u"[ProgramFilesFolder]App"));
}

TEST(DirectoryPathTest, RefusesHostilePathsAndLeavesTheModelAlone) {
  MemoryDirectoryModel model;
  std::u16string deep;
  for (int i = 0; i < 300; ++i) {
    deep += u"d\\";
  }
  for (const std::u16string& path :
       {std::u16string(u"[ProgramFilesFolder"), std::u16string(u"[]x"), std::u16string(u"a\\..\\b"),
        std::u16string(u"C:\\Program Files"), std::u16string(u"a\\b*c"), std::u16string(256, u'n'),
        deep}) {
    EXPECT_FALSE(addTargetPath(model, path)) << utf8(path);
  }
  EXPECT_FALSE(addTargetPath(model, u"[ProgramFilesFolder]" + deep.substr(0, 2 * 255)));
  EXPECT_EQ(model.size(), 0u);
  // Empty and "." steps are no folders.
  EXPECT_EQ(valueOf(addTargetPath(model, u"[TARGETDIR]\\\\a\\.\\\\b\\")), u"b");
  EXPECT_EQ(display(model, u"b", false), u"[TARGETDIR]a\\b\\");
}

TEST(DirectoryPathTest, BrokenParentLinksAreErrors) {
  MemoryDirectoryModel model;
  model.add({u"TARGETDIR", u"", u"SourceDir"});
  model.add({u"A", u"B", u"a"});
  model.add({u"B", u"C", u"b"});
  model.add({u"C", u"A", u"c"});
  model.add({u"Orphan", u"Gone", u"o"});
  model.add({u"Bad", u"TARGETDIR", u"x|y|z"});
  for (std::u16string_view key : {u"A", u"Orphan", u"Bad", u"Missing"}) {
    EXPECT_FALSE(targetPath(model, key, true, false, false)) << utf8(std::u16string(key));
    EXPECT_FALSE(sourcePath(model, key, true, false, false)) << utf8(std::u16string(key));
  }
  EXPECT_FALSE(addTargetPath(model, u"[A]sub"));

  MemoryDirectoryModel deep;
  deep.add({u"TARGETDIR", u"", u"SourceDir"});
  std::u16string parent = u"TARGETDIR";
  for (int i = 0; i < 300; ++i) {
    const std::u16string key = u"D" + TalString::FromInt(i).u16();
    deep.add({key, parent, u"d"});
    parent = key;
  }
  EXPECT_TRUE(targetPath(deep, u"D200", true, false, false));
  EXPECT_FALSE(targetPath(deep, parent, true, false, false));
  EXPECT_FALSE(addTargetPath(deep,
                             u"[D200]a\\b\\c\\d\\e\\f\\g\\h\\i\\j\\k\\l\\m\\n\\o\\p\\q\\r\\s\\"
                             u"t\\u\\v\\w\\x\\y\\z\\a\\b\\c\\d\\e\\f\\g\\h\\i\\j\\k\\l\\m\\n\\"
                             u"o\\p\\q\\r\\s\\t\\u\\v\\w\\x\\y\\z\\a\\b\\c\\d"));
}

TEST(DefaultDirTest, FormatsBackExactlyWhatWasParsed) {
  for (std::u16string_view text :
       {u"Vendor|Vendor Name", u".", u"SourceDir", u"a|b:c|d", u"bin", u"a:b", u".:Src", u"A|A"}) {
    auto parsed = DefaultDir::parse(text);
    ASSERT_TRUE(parsed) << utf8(std::u16string(text));
    EXPECT_EQ(parsed->format(), text);
  }
}

TEST(DefaultDirTest, SidesAndNames) {
  auto both = DefaultDir::parse(u"a|b:c|d");
  ASSERT_TRUE(both);
  EXPECT_EQ(both->target().shortName(), u"a");
  EXPECT_EQ(both->target().longName(), u"b");
  EXPECT_EQ(both->source().shortName(), u"c");
  EXPECT_EQ(both->source().longName(), u"d");

  auto single = DefaultDir::parse(u"Vendor|Vendor Name");
  ASSERT_TRUE(single);
  EXPECT_FALSE(single->hasSource());
  EXPECT_EQ(single->source().longName(), u"Vendor Name");
  EXPECT_EQ(single->source().shortName(), u"Vendor");
  // An edited source side is written beside the target from then on.
  single->source().setShortName(u"SRC");
  EXPECT_EQ(single->format(), u"Vendor|Vendor Name:SRC|Vendor Name");

  auto dot = DefaultDir::parse(u".");
  ASSERT_TRUE(dot);
  EXPECT_TRUE(dot->target().isParent());
  EXPECT_EQ(dot->target().shortName(), u".");
}

TEST(DefaultDirTest, RefusesMalformedValues) {
  for (std::u16string_view text : {u"", u"a|", u"|b", u"a|b|c", u"a:", u":b", u"a:b:c", u"a:b|"}) {
    EXPECT_FALSE(DefaultDir::parse(text)) << utf8(std::u16string(text));
  }
}

std::u16string shortFor(std::u16string_view longName, const std::set<std::u16string>& taken = {}) {
  auto made = makeShortName(
      longName, [&](std::u16string_view c) { return taken.contains(std::u16string(c)); });
  EXPECT_TRUE(made);
  return made ? made.value() : u"";
}

TEST(ShortNameTest, RecognisesValidShortNames) {
  for (std::u16string_view name : {u"bin", u"BIN", u"status.txt", u"ABCDEFGH.XYZ", u"A~1", u"_"}) {
    EXPECT_TRUE(isValidShortName(name)) << utf8(std::u16string(name));
  }
  for (std::u16string_view name : {u"", u"ABCDEFGHI", u"a.b.c", u"name.text", u".cfg", u"a.",
                                   u"My App", u"a+b", u"x[1]", u"caf\u00e9"}) {
    EXPECT_FALSE(isValidShortName(name)) << utf8(std::u16string(name));
  }
}

// Names that already are short stay as written.
TEST(ShortNameTest, MakesWindowsStyleNames) {
  const std::pair<std::u16string_view, std::u16string_view> cases[] = {
      {u"bin", u"bin"},
      {u"Data.v2", u"Data.v2"},
      {u"Vendor Name", u"VENDOR~1"},
      {u"Application", u"APPLIC~1"},
      {u"my app", u"MYAPP~1"},
      {u"Release.Notes.text", u"RELEAS~1.TEX"},
      {u".config", u"CONFIG~1"},
      {u"a+b,c;d=e[f]", u"A_B_C_~1"},
      {u"caf\u00e9 cr\u00e8me", u"CAF_CR~1"},
      {u"...", u"_~1"},
  };
  for (const auto& [longName, expected] : cases)
    EXPECT_EQ(shortFor(longName), expected) << utf8(std::u16string(longName));
}

TEST(ShortNameTest, CountsUpPastTakenNamesAndGivesUpWhenEveryNumberIsTaken) {
  EXPECT_EQ(shortFor(u"Vendor Name", {u"VENDOR~1"}), u"VENDOR~2");
  std::set<std::u16string> taken;
  for (int n = 1; n <= 9; ++n) {
    taken.insert(u"VENDOR~" + std::u16string(1, static_cast<char16_t>(u'0' + n)));
  }
  EXPECT_EQ(shortFor(u"Vendor Name", taken), u"VENDO~10");
  EXPECT_FALSE(makeShortName(u"Vendor Name", [](std::u16string_view) { return true; }));
}

}  // namespace
}  // namespace odlex::directory
