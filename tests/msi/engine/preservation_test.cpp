// A rewrite without edits writes the file it read byte for byte, including what the engine does
// not interpret: signature streams, embedded storages and stray table streams. A table created
// over a stray table stream replaces the stream.

#include <gtest/gtest.h>

#include "common/Container.h"
#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/engine/EngineTest.h"
#include "storage/CompoundFile.h"
#include "storage/StreamName.h"

namespace odlex::engine {
namespace {

using namespace column_type;
using OpenMode = Database::OpenMode;

storage::CompoundNode stream(std::u16string name, std::vector<std::uint8_t> data) {
  storage::CompoundNode node;
  node.name = std::move(name);
  node.data = std::move(data);
  return node;
}

void addUninterpretedEntries(storage::CompoundNode& root) {
  root.children.push_back(stream(u"\u0005DigitalSignature", std::vector<std::uint8_t>(5000, 0xAB)));
  root.children.push_back(stream(u"\u0005MsiDigitalSignatureEx", {1, 2, 3}));
  root.children.push_back(stream(*storage::encodeStreamName(u"Orphan", true), {9, 9}));
  root.children.push_back(stream(*storage::encodeStreamName(u"Binary.Logo", false), {7}));
  root.children.push_back(stream(u"Binary.Logo", {8}));  // the same name, not packed
  storage::CompoundNode transform;
  transform.name = *storage::encodeStreamName(u"Patch1", false);
  transform.isStorage = true;
  transform.clsid = {0x82, 0x10, 0x0C};
  transform.stateBits = 3;
  transform.children.push_back(stream(u"Inner", {4, 5, 6}));
  root.children.push_back(transform);
}

TEST(DatabasePreservation, ARewriteWithoutEditsIsTheSameFile) {
  test::TempDir dir;
  auto db = openOrFail(dir / "plain.msi", OpenMode::kCreate);
  Error error;
  Table* table = db->createTable(
      u"Property", {Column{u"Property", kText | kKey | 72}, Column{u"Value", kInteger16}}, error);
  ASSERT_TRUE(table) << error.text;
  // Keys whose strings are met out of key order, so string ids and key order differ.
  for (int i = 0; i < 100; ++i) {
    const std::u16string key =
        u"k" + std::u16string(1, u'0' + i % 10) + std::u16string(i / 10 + 1, u'x');
    table->appendRow(
        std::vector<std::uint32_t>{db->strings().intern(key), static_cast<std::uint32_t>(i)});
  }
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;
  std::string reason;
  ASSERT_TRUE(
      test::editContainer(dir / "plain.msi", dir / "rich.msi", addUninterpretedEntries, reason))
      << reason;

  auto rich = openOrFail(dir / "rich.msi", OpenMode::kUpdate);
  EXPECT_EQ(rich->storageNames(), std::vector<std::u16string>{u"Patch1"});
  EXPECT_TRUE(rich->hasStream(u"Binary.Logo"));
  ASSERT_EQ(rich->saveAs(dir / "copy.msi", error), kSuccess) << error.text;
  EXPECT_EQ(test::readFileBytes(dir / "copy.msi"), test::readFileBytes(dir / "rich.msi"));

  Table* orphan = rich->createTable(
      u"Orphan", {Column{u"Key", kText | kKey | 72}, Column{u"N", kInteger16}}, error);
  ASSERT_TRUE(orphan) << error.text;
  orphan->appendRow(std::vector<std::uint32_t>{rich->strings().intern(u"k"), 5});
  ASSERT_EQ(rich->commit(error), kSuccess) << error.text;
  EXPECT_EQ(test::msiinfoRows(dir / "rich.msi", "Orphan"), std::vector<std::string>{"k\t5"});
}

}  // namespace
}  // namespace odlex::engine
