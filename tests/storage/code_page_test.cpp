#include "storage/CodePage.h"

#include <gtest/gtest.h>

namespace odlex::storage {
namespace {

const std::uint32_t kSupported[] = {0,    874,  932,  936,  949,  950,  1250, 1251,
                                    1252, 1253, 1254, 1255, 1256, 1257, 1258, 65001};

std::u16string decoded(std::uint32_t codePage, std::string_view bytes) {
  std::u16string text;
  std::string error;
  EXPECT_TRUE(decodeCodePage(codePage, bytes, text, error)) << codePage << ": " << error;
  return text;
}

std::string encoded(std::uint32_t codePage, std::u16string_view text) {
  std::string bytes, error;
  EXPECT_TRUE(encodeCodePage(codePage, text, bytes, error)) << codePage << ": " << error;
  return bytes;
}

// The error of a conversion that must fail.
std::string decodeError(std::uint32_t codePage, std::string_view bytes) {
  std::u16string text;
  std::string error;
  EXPECT_FALSE(decodeCodePage(codePage, bytes, text, error)) << codePage;
  return error;
}
std::string encodeError(std::uint32_t codePage, std::u16string_view text) {
  std::string bytes, error;
  EXPECT_FALSE(encodeCodePage(codePage, text, bytes, error)) << codePage;
  return error;
}

TEST(CodePage, AsciiIsTheSameInEveryPage) {
  std::string ascii;
  for (int c = 0; c < 0x80; ++c)
    ascii.push_back(static_cast<char>(c));
  const std::u16string wide(ascii.begin(), ascii.end());
  for (const std::uint32_t codePage : kSupported) {
    EXPECT_TRUE(isSupportedCodePage(codePage));
    EXPECT_EQ(decoded(codePage, ascii), wide) << codePage;
    EXPECT_EQ(encoded(codePage, wide), ascii) << codePage;
  }
}

TEST(CodePage, ConvertsEachPageWithItsWindowsTable) {
  struct Sample {
    std::uint32_t codePage;
    std::string bytes;
    std::u16string text;
  };
  const Sample samples[] = {
      {1252, "Caf\xE9 \x80", u"Café €"},
      {0, "Caf\xE9 \x80", u"Café €"},  // neutral is stored as 1252, as msitools does
      {1252, "\x81\x9D", u"\u0081\u009D"},
      {1250, "\x8A\xB9", u"Šą"},
      {1251, "\xCF\xF0\xE8", u"При"},
      {1253, "\xC5\xEB", u"Ελ"},
      {1255, "\xF9\xEC", u"של"},
      {874, "\xE4\xB7\xC2\x80", u"ไทย€"},
      {932, "\x93\xFA\x96\x7B\x8C\xEA\x5C\x81\x60", u"日本語\\～"},
      {936, "\xD6\xD0\xCE\xC4\x80", u"中文€"},
      {949, "\xC7\xD1\xB1\xB9\xBE\xEE", u"한국어"},
      {950, "\xA4\xA4\xA4\xE5\xA3\xE1", u"中文€"},
      {65001, "\xC3\xA9\xF0\x9F\x98\x80", u"é\U0001F600"},
  };
  for (const Sample& sample : samples) {
    EXPECT_EQ(decoded(sample.codePage, sample.bytes), sample.text) << sample.codePage;
    EXPECT_EQ(encoded(sample.codePage, sample.text), sample.bytes) << sample.codePage;
    EXPECT_TRUE(canEncode(sample.codePage, sample.text)) << sample.codePage;
  }
}

TEST(CodePage, ErrorsNameTheOffendingByteAndOffset) {
  const std::string undefined = decodeError(1251, "ab\x98");
  EXPECT_NE(undefined.find("0x98"), std::string::npos) << undefined;
  EXPECT_NE(undefined.find("offset 2"), std::string::npos) << undefined;
  EXPECT_NE(decodeError(932, "x\xA0").find("offset 1"), std::string::npos);
  EXPECT_FALSE(decodeError(932, "\x93").empty());            // lead byte without its trail
  EXPECT_FALSE(decodeError(65001, "\xC0\x80").empty());      // overlong NUL
  EXPECT_FALSE(decodeError(65001, "\xED\xA0\x80").empty());  // encoded surrogate
  EXPECT_FALSE(decodeError(65001, "\xF4\x90\x80\x80").empty());
  // A failed multi-byte conversion leaves no state behind for the next one.
  EXPECT_EQ(decoded(932, "\x93\xFA"), u"日");
}

TEST(CodePage, ErrorsNameTheOffendingCharacterAndPosition) {
  const std::string outside = encodeError(1252, u"ab日");
  EXPECT_NE(outside.find("U+65E5"), std::string::npos) << outside;
  EXPECT_NE(outside.find("position 2"), std::string::npos) << outside;
  EXPECT_NE(encodeError(932, u"x\U0001F600").find("U+1F600"), std::string::npos);
  EXPECT_NE(encodeError(65001, u"a\xD800").find("position 1"), std::string::npos);
  EXPECT_NE(encodeError(1252, u"\xDC00").find("U+DC00"), std::string::npos);
}

TEST(CodePage, CanEncodeRequiresAnExactRoundTrip) {
  // The C library writes these as look-alikes in 932 that read back as other characters.
  EXPECT_FALSE(canEncode(932, u"¥"));
  EXPECT_FALSE(canEncode(932, u"−"));
  EXPECT_NE(encodeError(932, u"ab¥").find("position 2"), std::string::npos);
  EXPECT_TRUE(canEncode(932, u"－"));
  EXPECT_FALSE(canEncode(1252, u"Ω"));
  EXPECT_TRUE(canEncode(1253, u"Ω"));
  EXPECT_TRUE(canEncode(65001, u"\U0001F600"));
  EXPECT_FALSE(canEncode(65001, u"\xDE00"));
  EXPECT_FALSE(canEncode(437, u"abc"));
}

TEST(CodePage, UnsupportedPagesAreRefusedByNumber) {
  for (const std::uint32_t codePage : {437u, 1200u, 20127u, 54936u}) {
    EXPECT_FALSE(isSupportedCodePage(codePage));
    EXPECT_NE(decodeError(codePage, "abc").find(std::to_string(codePage)), std::string::npos);
    EXPECT_NE(encodeError(codePage, u"abc").find("not supported"), std::string::npos);
  }
}

}  // namespace
}  // namespace odlex::storage
