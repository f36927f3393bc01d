#pragma once
// What a package's File and MsiFileHash rows record of a file, read from the file's bytes, and
// writing it into those rows.

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "msi/engine/Database.h"
#include "odlex/support/TalError.h"

namespace odlex::package {

struct FileFacts {
  std::int32_t size = 0;
  bool versioned = false;  // a Windows module with a version resource
  std::u16string version;  // when versioned
  std::u16string language;
  std::array<std::int32_t, 4> hash{};  // when not versioned: the MsiFileHash parts
};

// The facts of the host file `file`. False with the error (2 it cannot be read, 1627 it is
// larger than a cabinet member can be) otherwise.
bool readFileFacts(const std::filesystem::path& file, FileFacts& facts, TalError& error);

// Writes `facts` into the File row `key` (FileSize, Version, Language) and makes the MsiFileHash
// row of `key` match: added or changed for an unversioned file (the table made when missing),
// removed for a versioned one. False with the error when the File row is missing or the
// MsiFileHash table cannot be made; nothing is changed then.
bool recordFileFacts(engine::Database& database, std::u16string_view key, const FileFacts& facts,
                     TalError& error);

}  // namespace odlex::package
