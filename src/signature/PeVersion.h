#pragma once
// The version resource of a Windows module (a PE file): the file version of its fixed part and
// the languages of its translation table, the values an installer package's File row records.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace odlex::signature {

struct PeVersion {
  std::string version;   // "major.minor.build.revision", from the fixed file information
  std::string language;  // the translation table's languages, in decimal, ','-separated; may be
                         // empty when the resource has no translation table
};

// The version of `image`; nothing, with the reason in `why`, when it is no PE file, has no
// version resource, or the resource is damaged (a block outside its parent, no fixed file
// information with its signature).
std::optional<PeVersion> peVersion(std::span<const unsigned char> image, std::string& why);

// The largest module whose version is read; a larger file is taken to have none.
inline constexpr std::uint64_t kMaxVersionedModule = std::uint64_t{512} << 20;

// The version of the file at `path`: read whole only when it starts as a Windows module does
// ("MZ") and is no larger than kMaxVersionedModule; nothing, with the reason, otherwise.
std::optional<PeVersion> fileVersion(const std::filesystem::path& path, std::string& why);

}  // namespace odlex::signature
