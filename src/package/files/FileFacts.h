#pragma once
// What a package's File and MsiFileHash rows record of a file (signature/FileFacts.h), read for
// a file that goes into a cabinet, and writing it into those rows.

#include <filesystem>
#include <string>

#include "msi/engine/Database.h"
#include "odlex/support/TalError.h"
#include "signature/FileFacts.h"

namespace odlex::package {

using signature::FileFacts;

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
