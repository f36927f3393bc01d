#pragma once
// Reading files for the certificate and hash code, with failures reported as the status codes
// the Windows file calls give (ERROR_FILE_NOT_FOUND, ...), which hosts compare with.

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace odlex::signature {

// Status codes of the file calls.
inline constexpr unsigned long kSuccess = 0;
inline constexpr unsigned long kFileNotFound = 2;      // no such file
inline constexpr unsigned long kPathNotFound = 3;      // a folder of the path is missing
inline constexpr unsigned long kAccessDenied = 5;      // not readable, or a folder
inline constexpr unsigned long kInvalidData = 13;      // read, but not what was expected
inline constexpr unsigned long kReadFault = 30;        // any other failure to read
inline constexpr unsigned long kHandleEndOfFile = 38;  // the file is empty
inline constexpr unsigned long kFileTooLarge = 223;    // larger than the caller accepts

// A short text saying what a status of these calls means ("no such file", ...).
const char* fileStatusText(unsigned long status);

// Reads the whole file at `path` into `bytes` (emptied on failure); a file larger than
// `maxSize` bytes is refused (kFileTooLarge) before anything is allocated.
unsigned long readWholeFile(const std::filesystem::path& path, std::uint64_t maxSize,
                            std::vector<unsigned char>& bytes);

// Reads the first bytes of the file at `path` into `start` (as many as it holds, up to the
// size of `start`) and gives the file's size; kHandleEndOfFile for an empty file.
unsigned long readFileStart(const std::filesystem::path& path, std::span<unsigned char> start,
                            std::uint64_t& size);

// The MD5 digest of the bytes of the file at `path`, read in blocks.
unsigned long md5OfFile(const std::filesystem::path& path, std::array<unsigned char, 16>& digest);

}  // namespace odlex::signature
