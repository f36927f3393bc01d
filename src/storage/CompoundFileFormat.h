#pragma once
// Layout constants of the compound file container ([MS-CFB]) and little-endian helpers shared
// by its reader and writer.

#include <cstddef>
#include <cstdint>

namespace odlex::storage::cfb {

inline constexpr std::uint8_t kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
inline constexpr std::uint16_t kMinorVersion = 0x003E;
inline constexpr std::uint16_t kByteOrderMark = 0xFFFE;
inline constexpr std::uint16_t kMiniSectorShift = 6;
inline constexpr std::uint32_t kMiniSectorSize = 1u << kMiniSectorShift;
inline constexpr std::uint32_t kMiniStreamCutoff = 4096;
inline constexpr std::uint32_t kHeaderSize = 512;  // meaningful bytes; version 4 pads to a sector
inline constexpr std::uint32_t kHeaderDifatEntries = 109;
inline constexpr std::uint32_t kDirectoryEntrySize = 128;
inline constexpr std::uint32_t kMaxNameUnits = 31;  // plus the terminating NUL

// Special sector numbers.
inline constexpr std::uint32_t kMaxRegularSector = 0xFFFFFFFA;
inline constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
inline constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;
inline constexpr std::uint32_t kNoStream = 0xFFFFFFFF;

// Object types of directory entries.
inline constexpr std::uint8_t kTypeUnused = 0;
inline constexpr std::uint8_t kTypeStorage = 1;
inline constexpr std::uint8_t kTypeStream = 2;
inline constexpr std::uint8_t kTypeRoot = 5;

inline constexpr std::uint8_t kRed = 0;
inline constexpr std::uint8_t kBlack = 1;

// Header field offsets.
namespace header {
inline constexpr std::size_t kMinorVersion = 24;
inline constexpr std::size_t kMajorVersion = 26;
inline constexpr std::size_t kByteOrder = 28;
inline constexpr std::size_t kSectorShift = 30;
inline constexpr std::size_t kMiniSectorShift = 32;
inline constexpr std::size_t kDirectorySectorCount = 40;
inline constexpr std::size_t kFatSectorCount = 44;
inline constexpr std::size_t kFirstDirectorySector = 48;
inline constexpr std::size_t kMiniStreamCutoff = 56;
inline constexpr std::size_t kFirstMiniFatSector = 60;
inline constexpr std::size_t kMiniFatSectorCount = 64;
inline constexpr std::size_t kFirstDifatSector = 68;
inline constexpr std::size_t kDifatSectorCount = 72;
inline constexpr std::size_t kDifat = 76;
}  // namespace header

// Directory entry field offsets.
namespace entry {
inline constexpr std::size_t kName = 0;
inline constexpr std::size_t kNameLength = 64;
inline constexpr std::size_t kType = 66;
inline constexpr std::size_t kColor = 67;
inline constexpr std::size_t kLeft = 68;
inline constexpr std::size_t kRight = 72;
inline constexpr std::size_t kChild = 76;
inline constexpr std::size_t kClsid = 80;
inline constexpr std::size_t kStateBits = 96;
inline constexpr std::size_t kCreated = 100;
inline constexpr std::size_t kModified = 108;
inline constexpr std::size_t kStartSector = 116;
inline constexpr std::size_t kSize = 120;
}  // namespace entry

inline std::uint16_t load16(const std::uint8_t* p) {
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t load32(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
inline std::uint64_t load64(const std::uint8_t* p) {
  return static_cast<std::uint64_t>(load32(p)) | (static_cast<std::uint64_t>(load32(p + 4)) << 32);
}
inline void store16(std::uint8_t* p, std::uint16_t v) {
  p[0] = static_cast<std::uint8_t>(v);
  p[1] = static_cast<std::uint8_t>(v >> 8);
}
inline void store32(std::uint8_t* p, std::uint32_t v) {
  for (int i = 0; i < 4; ++i)
    p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline void store64(std::uint8_t* p, std::uint64_t v) {
  store32(p, static_cast<std::uint32_t>(v));
  store32(p + 4, static_cast<std::uint32_t>(v >> 32));
}

}  // namespace odlex::storage::cfb
