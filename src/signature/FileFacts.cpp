// A file's size, version resource or MD5 hash, as a package's file rows record them.

#include "signature/FileFacts.h"

#include <string>

#include "signature/SystemFile.h"

namespace odlex::signature {

std::array<std::int32_t, 4> hashParts(const std::array<unsigned char, 16>& digest) {
  std::array<std::int32_t, 4> parts{};
  for (std::size_t part = 0; part < parts.size(); ++part) {
    const unsigned char* bytes = digest.data() + 4 * part;
    parts[part] =
        static_cast<std::int32_t>(std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 |
                                  std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24);
  }
  return parts;
}

unsigned long readFileFacts(const std::filesystem::path& path, std::uint64_t maxSize,
                            FileFacts& facts) {
  std::array<unsigned char, 2> start{};
  std::uint64_t size = 0;
  const unsigned long status = readFileStart(path, start, size);
  if (status != kSuccess && status != kHandleEndOfFile)
    return status;
  if (size > maxSize)
    return kFileTooLarge;
  facts = FileFacts{};
  facts.size = size;
  std::string why;
  facts.version = fileVersion(path, why);
  if (facts.version)
    return kSuccess;
  std::array<unsigned char, 16> digest{};
  if (const unsigned long hashed = md5OfFile(path, digest); hashed != kSuccess)
    return hashed;
  facts.hash = hashParts(digest);
  return kSuccess;
}

}  // namespace odlex::signature
