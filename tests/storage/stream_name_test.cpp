#include "storage/StreamName.h"

#include <gtest/gtest.h>

namespace odlex::storage {
namespace {

struct RealName {
  std::u16string encoded;
  std::u16string name;
  bool isTable;
};

// Stream names as msibuild stores them in a package.
const RealName kRealNames[] = {
    {u"\x4840\x3F3F\x4577\x446C\x3B6A\x45E4\x4824", u"_StringData", true},
    {u"\x4840\x3F3F\x4577\x446C\x3E6A\x44B2\x482F", u"_StringPool", true},
    {u"\x4840\x3F7F\x4164\x422F\x4836", u"_Tables", true},
    {u"\x4840\x3B3F\x43F2\x4438\x45B1", u"_Columns", true},
    {u"\x4840\x4559\x44F2\x4568\x4737", u"Property", true},
    {u"\x4840\x4452\x45F6\x43E4\x3BAF\x423B\x4626\x4237\x421C\x4634\x4468\x4226",
     u"InstallExecuteSequence", true},
    {u"\x430B\x4131\x4735\x3CBE\x44A6\x4831", u"Binary.Icon", false},
};

TEST(StreamName, MatchesNamesInARealPackage) {
  for (const RealName& real : kRealNames) {
    const DecodedStreamName decoded = decodeStreamName(real.encoded);
    EXPECT_EQ(decoded.name, real.name);
    EXPECT_EQ(decoded.isTable, real.isTable);
    EXPECT_EQ(encodeStreamName(real.name, real.isTable), real.encoded);
  }
}

TEST(StreamName, KeepsCharactersOutsideThePackedAlphabet) {
  // A character that cannot be packed ends a pair early: 'a' becomes a single.
  EXPECT_EQ(encodeStreamName(u"a-bc", false), std::u16string(u"\x4824-\x41A5"));
  const std::u16string summary = u"\005SummaryInformation";
  EXPECT_EQ(decodeStreamName(summary).name, summary);
  EXPECT_FALSE(decodeStreamName(summary).isTable);
  // The table mark only counts as the first unit.
  const DecodedStreamName inner = decodeStreamName(u"\x4824\x4840");
  EXPECT_EQ(inner.name, u"a\x4840");
  EXPECT_FALSE(inner.isTable);
}

TEST(StreamName, RoundTripsEveryPackedCharacterInBothPositions) {
  const std::u16string alphabet =
      u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._";
  for (std::size_t i = 0; i < alphabet.size(); i += 30) {
    const std::u16string chunk = alphabet.substr(i, 30);
    const std::u16string reversed(chunk.rbegin(), chunk.rend());
    for (const std::u16string& name : {chunk, reversed, chunk.substr(1)}) {
      const auto encoded = encodeStreamName(name, true);
      ASSERT_TRUE(encoded);
      const DecodedStreamName decoded = decodeStreamName(*encoded);
      EXPECT_EQ(decoded.name, name);
      EXPECT_TRUE(decoded.isTable);
    }
  }
}

TEST(StreamName, RefusesNamesBeyondThirtyOneUnits) {
  const std::u16string packed62(62, u'A');
  EXPECT_EQ(encodeStreamName(packed62, false)->size(), 31u);
  EXPECT_FALSE(encodeStreamName(packed62, true));  // the mark makes 32
  EXPECT_TRUE(encodeStreamName(packed62.substr(2), true));
  EXPECT_TRUE(encodeStreamName(std::u16string(31, u'-'), false));
  EXPECT_FALSE(encodeStreamName(std::u16string(32, u'-'), false));
  EXPECT_FALSE(encodeStreamName(std::u16string(100000, u'-'), false));
}

}  // namespace
}  // namespace odlex::storage
