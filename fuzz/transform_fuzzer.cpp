// Fuzz target: the input is a transform file, applied to a good package held in memory (a
// Property table and a Binary table with streams, as the seeds in fuzz/transform-corpus expect).
// Reading, decoding, showing and applying must reject damage with an error and never crash,
// hang or over-allocate; a transform that applies leaves a database that saves and opens again.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/transform/Transform.h"
#include "storage/CompoundFile.h"
#include "storage/MemoryFileSystem.h"

namespace {

using odlex::engine::Database;
namespace ct = odlex::engine::column_type;

volatile std::size_t sink;

std::unique_ptr<Database> basePackage(odlex::storage::MemoryFileSystem& fs) {
  odlex::engine::Error error;
  auto db = Database::open(fs, "base.msi", Database::OpenMode::kCreate, error);
  auto* property = db->createTable(
      u"Property", {{u"Property", ct::kText | ct::kKey | 72}, {u"Value", ct::kText}}, error);
  for (auto [name, value] : {std::pair{u"ProductCode", u"{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}"},
                             {u"ProductName", u"Seed"},
                             {u"ProductVersion", u"1.0.0"}})
    property->appendRow(
        std::vector<std::uint32_t>{db->strings().intern(name), db->strings().intern(value)});
  auto* binary = db->createTable(
      u"Binary", {{u"Name", ct::kText | ct::kKey | 72}, {u"Data", ct::kBinary}}, error);
  binary->appendRow(std::vector<std::uint32_t>{db->strings().intern(u"Icon"), 1});
  db->setStream(u"Binary.Icon", std::vector<std::uint8_t>{1, 2, 3});
  db->setCodePage(1252);
  return db;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string reason;
  auto reader = odlex::storage::CompoundFileReader::openBytes(
      std::vector<std::uint8_t>(data, data + size), reason);
  odlex::storage::CompoundNode tree;
  if (!reader || !odlex::storage::readCompoundTree(*reader, 0, tree, reason))
    return 0;
  odlex::storage::MemoryFileSystem fs;
  auto db = basePackage(fs);
  odlex::transform::DecodedTransform decoded;
  odlex::engine::Error error;
  if (!odlex::transform::decodeTransform(tree, *db, decoded, error))
    return 0;
  sink = odlex::transform::transformViewRows(decoded, *db).size();
  std::vector<odlex::transform::Conflict> conflicts;
  if (odlex::transform::applyTransform(*db, decoded, 0xFFFF, conflicts, error) !=
      odlex::engine::kSuccess)
    return 0;
  if (db->commit(error) == odlex::engine::kSuccess) {
    auto reopened = Database::open(fs, "base.msi", Database::OpenMode::kReadOnly, error);
    sink = reopened ? reopened->tableCount() : 0;
  }
  return 0;
}
