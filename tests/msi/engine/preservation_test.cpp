// A rewrite without edits keeps everything the package holds, including what the engine
// does not interpret: signature streams, embedded storages and stray table streams.

#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "storage/CompoundFile.h"
#include "storage/StreamName.h"

namespace odlex::engine {
namespace {

using OpenMode = Database::OpenMode;

storage::CompoundNode stream(std::u16string name, std::vector<std::uint8_t> data) {
  storage::CompoundNode node;
  node.name = std::move(name);
  node.data = std::move(data);
  return node;
}

bool readTree(const std::filesystem::path& path, storage::CompoundNode& root) {
  std::string error;
  auto reader =
      storage::CompoundFileReader::open(storage::FileSystem::real().openRead(path, error), error);
  return reader && storage::readCompoundTree(*reader, 0, root, error);
}

// Flattens a tree into path -> contents (storages by their class id and state bits).
void flatten(const storage::CompoundNode& node, const std::u16string& prefix,
             std::map<std::u16string, std::vector<std::uint8_t>>& out) {
  std::u16string path = prefix + u"/" + node.name;
  if (!node.isStorage) {
    out[path] = node.data;
    return;
  }
  std::vector<std::uint8_t> identity(node.clsid.begin(), node.clsid.end());
  identity.push_back(static_cast<std::uint8_t>(node.stateBits));
  out[path] = identity;
  for (const auto& child : node.children)
    flatten(child, path, out);
}

TEST(DatabasePreservation, RewriteKeepsSignaturesStoragesAndStrayStreams) {
  test::TempDir dir;
  Error error;
  auto db =
      Database::open(storage::FileSystem::real(), dir / "plain.msi", OpenMode::kCreate, error);
  ASSERT_TRUE(db->createTable(u"Property",
                              {Column{u"Property", column_type::kText | column_type::kKey | 72},
                               Column{u"Value", column_type::kText}},
                              error));
  ASSERT_EQ(db->commit(error), kSuccess) << error.text;

  storage::CompoundNode root;
  ASSERT_TRUE(readTree(dir / "plain.msi", root));
  root.children.push_back(stream(u"\u0005DigitalSignature", std::vector<std::uint8_t>(5000, 0xAB)));
  root.children.push_back(stream(u"\u0005MsiDigitalSignatureEx", {1, 2, 3}));
  root.children.push_back(stream(*storage::encodeStreamName(u"Orphan", true), {9, 9}));
  root.children.push_back(stream(*storage::encodeStreamName(u"Binary.Logo", false), {7}));
  storage::CompoundNode transform;
  transform.name = *storage::encodeStreamName(u"Patch1", false);
  transform.isStorage = true;
  transform.clsid = {0x82, 0x10, 0x0C};
  transform.stateBits = 3;
  transform.children.push_back(stream(u"Inner", {4, 5, 6}));
  root.children.push_back(transform);
  std::vector<std::uint8_t> image;
  std::string reason;
  ASSERT_TRUE(storage::writeCompoundFile(root, image, reason)) << reason;
  std::ofstream(dir / "rich.msi", std::ios::binary)
      .write(reinterpret_cast<const char*>(image.data()),
             static_cast<std::streamsize>(image.size()));

  auto rich =
      Database::open(storage::FileSystem::real(), dir / "rich.msi", OpenMode::kReadOnly, error);
  ASSERT_TRUE(rich) << error.text;
  EXPECT_EQ(rich->storageNames(), std::vector<std::u16string>{u"Patch1"});
  EXPECT_TRUE(rich->hasStream(u"Binary.Logo"));
  ASSERT_EQ(rich->saveAs(dir / "copy.msi", error), kSuccess) << error.text;

  storage::CompoundNode before, after;
  ASSERT_TRUE(readTree(dir / "rich.msi", before));
  ASSERT_TRUE(readTree(dir / "copy.msi", after));
  std::map<std::u16string, std::vector<std::uint8_t>> expected, actual;
  flatten(before, u"", expected);
  flatten(after, u"", actual);
  EXPECT_EQ(actual, expected);
}

}  // namespace
}  // namespace odlex::engine
