#pragma once
// Test helpers that look inside a package's compound-file container with our own storage
// layer, for what no oracle tool shows or writes.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "storage/CompoundFile.h"

namespace odlex::test {

// Reads every storage and stream of `source` into a tree, lets `edit` change it, and writes it
// as a fresh container of the given major version (3 or 4) to `target` (which may be `source`),
// keeping names, class ids, state bits and times.
bool editContainer(const std::filesystem::path& source, const std::filesystem::path& target,
                   const std::function<void(storage::CompoundNode& root)>& edit, std::string& error,
                   std::uint16_t majorVersion = 3);

// editContainer without an edit.
bool copyContainer(const std::filesystem::path& source, const std::filesystem::path& target,
                   std::uint16_t majorVersion, std::string& error);

// The bytes of the stream of the root storage stored under `storedName` (nullopt when there is
// none).
std::optional<std::vector<std::uint8_t>> rootStream(const std::filesystem::path& package,
                                                    std::u16string_view storedName);

// The first four bytes of the string pool stream, little-endian: the code page in the low
// bits and 0x80000000 when string references are three bytes wide.
std::optional<std::uint32_t> stringPoolHeader(const std::filesystem::path& package);

}  // namespace odlex::test
