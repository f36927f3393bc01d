// The version resource of Windows modules: the file version and languages a File row records,
// and damaged resources refused.

#include <gtest/gtest.h>

#include <span>

#include "common/PeModule.h"
#include "common/VersionResource.h"
#include "signature/PeVersion.h"

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

}  // namespace
}  // namespace odlex::test
