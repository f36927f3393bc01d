#pragma once
// Opening engine databases in the engine's tests: the test fails with the engine's code and text
// when a database does not open.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "msi/engine/Database.h"

namespace odlex::engine {

inline std::unique_ptr<Database> openOrFail(const std::filesystem::path& path,
                                            Database::OpenMode mode) {
  Error error;
  auto db = Database::open(storage::FileSystem::real(), path, mode, error);
  EXPECT_TRUE(db) << error.code << " " << error.text;
  return db;
}

}  // namespace odlex::engine
