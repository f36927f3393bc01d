#pragma once
// What an installer package records of a file in its File and MsiFileHash rows, read from the
// file's bytes: its size, and either the version resource of a Windows module or, for any other
// file, the MD5 hash by which the installer tells whether an installed copy is the same.

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "signature/PeVersion.h"

namespace odlex::signature {

struct FileFacts {
  std::uint64_t size = 0;
  std::optional<PeVersion> version;    // a Windows module with a version resource
  std::array<std::int32_t, 4> hash{};  // when there is no version: the MsiFileHash parts
};

// The installer's hash parts of an MD5 digest: four bytes each, little-endian, signed.
std::array<std::int32_t, 4> hashParts(const std::array<unsigned char, 16>& digest);

// Reads the facts of the file at `path`. kSuccess, or the status of SystemFile.h that says why
// it cannot be read; kFileTooLarge, before anything is read, when it holds more than `maxSize`
// bytes.
unsigned long readFileFacts(const std::filesystem::path& path, std::uint64_t maxSize,
                            FileFacts& facts);

}  // namespace odlex::signature
