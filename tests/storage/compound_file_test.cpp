// The container written and read back: trees, names (entry order, and the installer's packed
// stream names), and the sibling trees that order them.

#include <gtest/gtest.h>

#include <algorithm>

#include "storage/CompoundFile.h"
#include "storage/CompoundFileFormat.h"
#include "storage/CompoundFileNames.h"
#include "storage/CompoundFileTree.h"
#include "storage/StreamName.h"

namespace odlex::storage {
namespace {

std::vector<std::uint8_t> pattern(std::size_t size, std::uint8_t seed) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<std::uint8_t>(seed + i * 7 + i / 251);
  return bytes;
}

CompoundNode stream(std::u16string name, std::size_t size, std::uint8_t seed = 1) {
  CompoundNode node;
  node.name = std::move(name);
  node.data = pattern(size, seed);
  return node;
}

CompoundNode storage(std::u16string name, std::vector<CompoundNode> children) {
  CompoundNode node;
  node.name = std::move(name);
  node.isStorage = true;
  node.children = std::move(children);
  return node;
}

// Children in name order, so trees compare equal whatever order they were given in.
void sortTree(CompoundNode& node) {
  std::sort(node.children.begin(), node.children.end(), [](const auto& a, const auto& b) {
    return cfb::compareEntryNames(a.name, b.name) < 0;
  });
  for (CompoundNode& child : node.children)
    sortTree(child);
}

void expectSameTree(const CompoundNode& expected, const CompoundNode& actual) {
  EXPECT_EQ(expected.isStorage, actual.isStorage);
  EXPECT_EQ(expected.clsid, actual.clsid);
  EXPECT_EQ(expected.stateBits, actual.stateBits);
  EXPECT_EQ(expected.created, actual.created);
  EXPECT_EQ(expected.modified, actual.modified);
  EXPECT_TRUE(expected.data == actual.data) << "data of a stream of " << expected.data.size();
  ASSERT_EQ(expected.children.size(), actual.children.size());
  for (std::size_t i = 0; i < expected.children.size(); ++i) {
    EXPECT_EQ(expected.children[i].name, actual.children[i].name);
    expectSameTree(expected.children[i], actual.children[i]);
  }
}

// Writes, reads back and compares; the reader lists children in the order of the file's
// sibling trees, so getting them back sorted also shows the trees are ordered correctly.
void roundTrip(CompoundNode tree, std::uint16_t version) {
  std::vector<std::uint8_t> bytes;
  std::string error;
  ASSERT_TRUE(writeCompoundFile(tree, bytes, error, version)) << error;
  auto reader = CompoundFileReader::openBytes(bytes, error);
  ASSERT_TRUE(reader) << error;
  EXPECT_EQ(reader->majorVersion(), version);
  EXPECT_EQ(reader->entries()[0].name, u"Root Entry");
  CompoundNode back;
  ASSERT_TRUE(readCompoundTree(*reader, 0, back, error)) << error;
  sortTree(tree);
  expectSameTree(tree, back);

  std::vector<std::uint8_t> again;
  ASSERT_TRUE(writeCompoundFile(tree, again, error, version)) << error;
  EXPECT_TRUE(again == bytes) << "output depends on more than the tree";
}

CompoundNode mixedTree() {
  CompoundNode inner = storage(u"Inner", {stream(u"deep", 100), storage(u"Empty", {})});
  inner.clsid = Clsid{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  inner.stateBits = 0x1234;
  inner.created = 0x01D0000011112222ull;
  inner.modified = 0x01D0000033334444ull;
  CompoundNode root =
      storage(u"", {stream(u"zero", 0), stream(u"one", 1), stream(u"b63", 63), stream(u"b64", 64),
                    stream(u"b4095", 4095, 3), stream(u"b4096", 4096, 4), stream(u"b4097", 4097, 5),
                    stream(u"big", 100000, 6), inner, stream(std::u16string(31, u'L'), 10),
                    stream(u"\x4840\x3F3F\x4577", 700), stream(u"\x0005Summary", 5)});
  root.clsid = Clsid{0x84, 0x10, 0x0C, 0x00};
  return root;
}

TEST(CompoundFileRoundTrip, MixedTreeAndEmptyRootInEitherVersion) {
  for (const std::uint16_t version : {3, 4}) {
    SCOPED_TRACE(version);
    roundTrip(mixedTree(), version);
    roundTrip(storage(u"", {}), version);
  }
}

TEST(CompoundFileWriter, RefusesBadNames) {
  std::vector<std::uint8_t> bytes;
  std::string error;
  EXPECT_FALSE(
      writeCompoundFile(storage(u"", {stream(std::u16string(32, u'x'), 1)}), bytes, error));
  EXPECT_NE(error.find("1 to 31 units"), std::string::npos) << error;
  EXPECT_FALSE(writeCompoundFile(storage(u"", {stream(u"", 1)}), bytes, error));
  EXPECT_FALSE(
      writeCompoundFile(storage(u"", {stream(u"Name", 1), stream(u"nAME", 2)}), bytes, error));
  EXPECT_NE(error.find("differ only in case"), std::string::npos) << error;
  const std::u16string table = *encodeStreamName(u"Orphan", true);
  EXPECT_FALSE(writeCompoundFile(storage(u"", {stream(table, 1), stream(table, 2)}), bytes, error));
  EXPECT_NE(error.find("table \"Orphan\" and table \"Orphan\""), std::string::npos)
      << "installer names are shown decoded: " << error;
  EXPECT_FALSE(writeCompoundFile(
      storage(u"", {storage(u"S", {stream(u"\x00E4x", 1), stream(u"\x00C4X", 1)})}), bytes, error))
      << "upper-casing covers letters beyond ASCII";
  EXPECT_TRUE(writeCompoundFile(storage(u"", {stream(u"a", 1), storage(u"S", {stream(u"a", 1)})}),
                                bytes, error))
      << "the same name may appear in different storages: " << error;
  EXPECT_TRUE(bytes.empty() == false);
}

TEST(CompoundFileNames, OrderIsLengthThenUpperCasedUnits) {
  EXPECT_LT(cfb::compareEntryNames(u"zz", u"aaa"), 0);
  EXPECT_LT(cfb::compareEntryNames(u"abc", u"ABD"), 0);
  EXPECT_EQ(cfb::compareEntryNames(u"\x00FF\x0101", u"\x0178\x0100"), 0);
  EXPECT_GT(cfb::compareEntryNames(u"_", u"a"), 0) << "'_' sorts after 'A', not after 'a'";
  EXPECT_EQ(cfb::upcaseUnit(0x4840), 0x4840);
  EXPECT_EQ(cfb::upcaseUnit(u'\x03C2'), u'\x03A3');
  EXPECT_EQ(cfb::upcaseUnit(u'\x0450'), u'\x0400');
}

// Walks one arranged tree, checking order, colours and equal black heights.
int checkSubtree(const std::vector<cfb::SiblingNode>& nodes, std::uint32_t at, std::uint32_t low,
                 std::uint32_t high, bool parentRed, std::uint32_t& visited) {
  if (at == cfb::kNoStream)
    return 1;
  EXPECT_TRUE(at >= low && at < high) << "position " << at << " out of order";
  const bool red = nodes[at].color == cfb::kRed;
  EXPECT_FALSE(red && parentRed) << "red node " << at << " has a red parent";
  ++visited;
  const int left = checkSubtree(nodes, nodes[at].left, low, at, red, visited);
  const int right = checkSubtree(nodes, nodes[at].right, at + 1, high, red, visited);
  EXPECT_EQ(left, right) << "unequal black heights under " << at;
  return left + (red ? 0 : 1);
}

TEST(CompoundFileTree, EverySizeGivesAValidRedBlackTree) {
  std::vector<cfb::SiblingNode> nodes;
  for (std::uint32_t count = 0; count <= 300; ++count) {
    const std::uint32_t root = cfb::arrangeSiblings(count, nodes);
    if (count == 0) {
      EXPECT_EQ(root, cfb::kNoStream);
      continue;
    }
    EXPECT_EQ(nodes[root].color, cfb::kBlack);
    std::uint32_t visited = 0;
    checkSubtree(nodes, root, 0, count, false, visited);
    EXPECT_EQ(visited, count);
  }
}

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
