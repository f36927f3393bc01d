// What the File and Font tables record of a file, read from the file itself: the version
// resource of Windows modules (file version and languages) and the full name of TrueType and
// OpenType fonts (which record is chosen, collections); damaged files are refused.

#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <vector>

#include "common/FontFile.h"
#include "common/PeModule.h"
#include "common/VersionResource.h"
#include "signature/FontName.h"
#include "signature/PeVersion.h"
#include "storage/MemoryFileSystem.h"

namespace odlex::test {
namespace {

TEST(PeVersion, VersionAndLanguagesOrRefusal) {
  const std::string good = versionResource(0x00020001, 0x00040003, {0x04B00409, 0x04E40407});
  std::string badSignature = good;
  badSignature[40] = 'X';
  std::string longerThanResource = good;
  longerThanResource[1] = '\x10';
  const struct {
    std::string module;
    bool read;
    std::string version;
    std::string language;
  } cases[] = {
      {peModuleWith(16, good), true, "2.1.4.3", "1033,1031"},
      {peModuleWith(16, versionResource(0xFFFFFFFF, 0, {0x04B00409, 0x04E40409})), true,
       "65535.65535.0.0", "1033"},
      {peModuleWith(16, versionResource(0x00010000, 0, {})), true, "1.0.0.0", ""},
      {peModuleWith(16, badSignature), false, "", ""},
      {peModuleWith(16, longerThanResource), false, "", ""},
      {peModuleWith(16, versionBlock("VS_VERSION_INFO", std::string(20, '\0'))), false, "", ""},
      {peModuleWith(16, good.substr(0, 30)), false, "", ""},
      {peModuleWith(11, good), false, "", ""},
      {"MZ", false, "", ""},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    std::string why;
    const auto bytes = std::as_bytes(std::span(cases[i].module));
    const auto version = signature::peVersion(
        {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, why);
    ASSERT_EQ(version.has_value(), cases[i].read) << why;
    EXPECT_EQ(why.empty(), cases[i].read);
    if (version) {
      EXPECT_EQ(version->version, cases[i].version);
      EXPECT_EQ(version->language, cases[i].language);
    }
  }
}

std::optional<std::u16string> nameOf(const std::string& font, std::string& why) {
  storage::MemoryReadableFile file(
      std::make_shared<const std::vector<std::uint8_t>>(font.begin(), font.end()));
  return signature::fontName(file, why);
}

NameRecord windows(std::uint16_t language, const std::u16string& text, std::uint16_t nameID = 4) {
  return {3, 1, language, nameID, utf16be(text)};
}

NameRecord macRoman(const std::string& text) {
  return {1, 0, 0, 4, text};
}

TEST(FontName, ChosenRecordOrRefusal) {
  const std::vector<NameRecord> usual = {macRoman("Mac Name"), windows(0x407, u"Deutsch"),
                                         windows(0x409, std::u16string(u"Sans Bold\0", 10)),
                                         windows(0x409, u"Sans", 1)};
  std::string nameOutside = trueTypeFont(usual);
  nameOutside.resize(nameOutside.size() - 3);
  std::string stringOutside = trueTypeFont({macRoman("Kept"), windows(0x409, u"Lost")});
  // The second record's text offset (low byte), past the table (which follows the directory).
  stringOutside[12 + 16 + 6 + 12 + 11] = '\x7F';
  const struct {
    std::string font;
    std::optional<std::u16string> name;
  } cases[] = {
      {trueTypeFont(usual), u"Sans Bold"},
      {trueTypeFont({macRoman("Mac Name"), windows(0x407, u"Deutsch")}), u"Deutsch"},
      {trueTypeFont({windows(0x409, u""), {3, 2, 0x411, 4, "\x82\xA0"}, macRoman("Caf\x8E")}),
       u"Caf\u00E9"},
      {trueTypeFont({{3, 1, 0x409, 4, std::string("\0A\0", 3)}, macRoman("Odd")}), u"Odd"},
      {stringOutside, u"Kept"},
      {sfnt(0x4F54544F, {{"head", std::string(54, '\0')}, {"name", nameTable(usual)}}),
       u"Sans Bold"},
      {fontCollection({{windows(0x409, u"First")}, {windows(0x409, u"Second")}}), u"First"},
      {trueTypeFont({windows(0x409, u"Family", 1)}), std::nullopt},
      {sfnt(kTrueTypeVersion, {{"head", std::string(54, '\0')}}), std::nullopt},
      {nameOutside, std::nullopt},
      {sfnt(kTrueTypeVersion, {{"name", std::string(2, '\0')}}), std::nullopt},
      {"ttcf" + bigEndian(0x10000, 4) + bigEndian(0, 4) + bigEndian(12, 4), std::nullopt},
      {"ttcf" + bigEndian(0x10000, 4) + bigEndian(1, 4) + bigEndian(0, 4), std::nullopt},
      {"ttcf" + bigEndian(0x10000, 4) + bigEndian(1, 4) + bigEndian(0xFFFFFFF0, 4), std::nullopt},
      {"Hello, this is a text file.", std::nullopt},
      {"", std::nullopt},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    std::string why;
    EXPECT_EQ(nameOf(cases[i].font, why), cases[i].name) << why;
    EXPECT_EQ(why.empty(), cases[i].name.has_value());
  }
}

}  // namespace
}  // namespace odlex::test
