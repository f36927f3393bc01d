#pragma once
// A merge module written by the engine alone, for tests that need one but no outside tools: its
// signature and one Binary row "Data" whose bytes are a file (read a piece at a time, never held
// whole). And the feature Complete and the folder TARGETDIR that a package needs to take a merge.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "msi/engine/Database.h"
#include "storage/CompoundFile.h"

namespace odlex::test {

// Makes table `name` of `db` with `columns` and `rows` (cells as the engine holds them).
inline void addTable(engine::Database& db, const std::u16string& name,
                     const std::vector<engine::Column>& columns,
                     const std::vector<std::vector<std::uint32_t>>& rows) {
  engine::Error error;
  ASSERT_TRUE(db.createTable(name, columns, error)) << error.text;
  for (const std::vector<std::uint32_t>& row : rows)
    db.findTable(name)->appendRow(row);
}

// The module `path`, its Binary row "Data" holding the bytes of the file `data`.
inline void writeSmallModule(const std::filesystem::path& path, const std::filesystem::path& data) {
  using namespace engine::column_type;
  storage::FileSystem& fs = storage::FileSystem::real();
  engine::Error error;
  auto db = engine::Database::open(fs, path, engine::Database::OpenMode::kCreate, error);
  ASSERT_TRUE(db) << error.text;
  engine::StringPool& strings = db->strings();
  addTable(*db, u"ModuleSignature",
           {{u"ModuleID", kText | kKey | 72},
            {u"Language", kInteger16 | kKey},
            {u"Version", kText | 32}},
           {{strings.intern(u"SmallMod.1A2B3C4D_5E6F_4A5B_8C9D_0E1F2A3B4C5D"), 1033,
             strings.intern(u"1.0.0.0")}});
  addTable(*db, u"Binary", {{u"Name", kText | kKey | 72}, {u"Data", kBinary}},
           {{strings.intern(u"Data"), 1}});
  std::string reason;
  auto source = storage::fileSource(fs, data, reason);
  ASSERT_TRUE(source) << reason;
  db->setStreamSource(u"Binary.Data", std::move(source));
  ASSERT_EQ(db->commit(error), engine::kSuccess) << error.text;
}

// Adds feature Complete and folder TARGETDIR to the package `path`.
inline void addMergePlace(const std::filesystem::path& path) {
  using namespace engine::column_type;
  engine::Error error;
  auto db = engine::Database::open(storage::FileSystem::real(), path,
                                   engine::Database::OpenMode::kUpdate, error);
  ASSERT_TRUE(db) << error.text;
  engine::StringPool& strings = db->strings();
  const std::uint32_t targetDir = strings.intern(u"TARGETDIR");
  addTable(*db, u"Directory",
           {{u"Directory", kText | kKey | 72},
            {u"Directory_Parent", kText | kNullable | 72},
            {u"DefaultDir", kText | kLocalizable | 255}},
           {{targetDir, 0, strings.intern(u"SourceDir")}});
  const auto null = static_cast<std::uint32_t>(engine::kNullInteger);
  addTable(*db, u"Feature",
           {{u"Feature", kText | kKey | 38},
            {u"Feature_Parent", kText | kNullable | 38},
            {u"Title", kText | kNullable | kLocalizable | 64},
            {u"Description", kText | kNullable | kLocalizable | 255},
            {u"Display", kInteger16 | kNullable},
            {u"Level", kInteger16},
            {u"Directory_", kText | kNullable | 72},
            {u"Attributes", kInteger16}},
           {{strings.intern(u"Complete"), 0, 0, 0, null, 1, targetDir, 0}});
  ASSERT_EQ(db->commit(error), engine::kSuccess) << error.text;
}

}  // namespace odlex::test
