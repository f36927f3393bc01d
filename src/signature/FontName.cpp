// Reading the full font name from the `name` table of an sfnt file (TrueType, OpenType) or of
// the first font of a TrueType collection. All numbers of the format are big-endian.

#include "signature/FontName.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace odlex::signature {
namespace {

constexpr std::uint32_t tag(const char (&text)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) << 24 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[3]));
}

constexpr std::uint32_t kTrueType = 0x00010000;
constexpr std::uint32_t kAppleTrueType = tag("true");
constexpr std::uint32_t kOpenType = tag("OTTO");
constexpr std::uint32_t kCollection = tag("ttcf");
constexpr std::uint32_t kNameTable = tag("name");

constexpr std::size_t kOffsetTableSize = 12;  // version, table count and search hints
constexpr std::size_t kTableRecordSize = 16;  // tag, checksum, offset, length
constexpr std::size_t kNameHeaderSize = 6;    // format, count, string offset
constexpr std::size_t kNameRecordSize = 12;
constexpr std::uint16_t kFullName = 4;

constexpr std::uint16_t kWindows = 3;
constexpr std::uint16_t kMacintosh = 1;
constexpr std::uint16_t kUsEnglish = 0x409;

// Unicode of the bytes 0x80 to 0xFF of the Macintosh Roman character set.
constexpr std::array<char16_t, 128> kMacRomanHigh = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};

using Bytes = std::span<const unsigned char>;

// The big-endian number of `width` bytes at `at`; the caller has checked that they are there.
std::uint32_t bigEndian(Bytes bytes, std::size_t at, std::size_t width) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < width; ++i)
    value = value << 8 | bytes[at + i];
  return value;
}

// `length` bytes at `offset` of `font`, or nothing when the file does not hold them all.
std::optional<std::vector<unsigned char>> readBytes(storage::ReadableFile& font,
                                                    std::uint64_t offset, std::size_t length) {
  if (offset > font.size() || length > font.size() - offset)
    return std::nullopt;
  std::vector<unsigned char> bytes(length);
  std::string error;
  if (length != 0 && !font.readAt(offset, bytes.data(), length, error))
    return std::nullopt;
  return bytes;
}

bool isSfnt(std::uint32_t version) {
  return version == kTrueType || version == kAppleTrueType || version == kOpenType;
}

// Where the offset table of the font to read starts: 0 for a single font, the first font's for
// a collection; nothing when the file is neither.
std::optional<std::uint64_t> fontStart(storage::ReadableFile& font, std::string& why) {
  const auto header = readBytes(font, 0, kOffsetTableSize + 4);
  if (!header) {
    why = "too short for a font";
    return std::nullopt;
  }
  const std::uint32_t version = bigEndian(*header, 0, 4);
  if (version != kCollection) {
    if (!isSfnt(version)) {
      why = "not a TrueType or OpenType font";
      return std::nullopt;
    }
    return 0;
  }
  // ttcf, version, number of fonts, then each font's offset.
  if (bigEndian(*header, 8, 4) == 0) {
    why = "a font collection without fonts";
    return std::nullopt;
  }
  return bigEndian(*header, 12, 4);
}

// Where the `name` table of the font at `start` lies (offset, length).
std::optional<std::pair<std::uint64_t, std::uint32_t>> nameTableOf(storage::ReadableFile& font,
                                                                   std::uint64_t start,
                                                                   std::string& why) {
  const auto header = readBytes(font, start, kOffsetTableSize);
  if (!header || !isSfnt(bigEndian(*header, 0, 4))) {
    why = "the collection's first font is not a TrueType or OpenType font";
    return std::nullopt;
  }
  const std::size_t count = bigEndian(*header, 4, 2);
  const auto records = readBytes(font, start + kOffsetTableSize, count * kTableRecordSize);
  if (!records) {
    why = "the font's table directory lies outside the file";
    return std::nullopt;
  }
  for (std::size_t at = 0; at < records->size(); at += kTableRecordSize)
    if (bigEndian(*records, at, 4) == kNameTable)
      return std::pair{std::uint64_t{bigEndian(*records, at + 8, 4)},
                       bigEndian(*records, at + 12, 4)};
  why = "the font has no name table";
  return std::nullopt;
}

// How good a full-name record of this platform, encoding and language is: lower is better,
// nothing when its text cannot be read.
std::optional<int> rankOf(std::uint16_t platform, std::uint16_t encoding, std::uint16_t language) {
  if (platform == kWindows && (encoding == 0 || encoding == 1 || encoding == 10))
    return encoding == 1 && language == kUsEnglish ? 0 : 1;
  if (platform == kMacintosh && encoding == 0)
    return language == 0 ? 2 : 3;
  return std::nullopt;
}

// The text of a record: UTF-16BE for Windows, Macintosh Roman otherwise; nothing when a
// Windows text has an odd length.
std::optional<std::u16string> textOf(Bytes bytes, std::uint16_t platform) {
  std::u16string text;
  if (platform == kWindows) {
    if (bytes.size() % 2 != 0)
      return std::nullopt;
    for (std::size_t at = 0; at < bytes.size(); at += 2)
      text += static_cast<char16_t>(bigEndian(bytes, at, 2));
  } else {
    for (const unsigned char byte : bytes)
      text += byte < 0x80 ? static_cast<char16_t>(byte) : kMacRomanHigh[byte - 0x80];
  }
  while (!text.empty() && text.back() == u'\0')
    text.pop_back();
  return text;
}

// The best full name of the name table `table`.
std::optional<std::u16string> bestFullName(Bytes table) {
  if (table.size() < kNameHeaderSize)
    return std::nullopt;
  const std::size_t count = bigEndian(table, 2, 2);
  const std::size_t strings = bigEndian(table, 4, 2);
  std::optional<std::u16string> best;
  int bestRank = 4;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = kNameHeaderSize + i * kNameRecordSize;
    if (table.size() - at < kNameRecordSize)
      break;
    const auto platform = static_cast<std::uint16_t>(bigEndian(table, at, 2));
    const auto rank = rankOf(platform, static_cast<std::uint16_t>(bigEndian(table, at + 2, 2)),
                             static_cast<std::uint16_t>(bigEndian(table, at + 4, 2)));
    if (bigEndian(table, at + 6, 2) != kFullName || !rank || *rank >= bestRank)
      continue;
    const std::size_t length = bigEndian(table, at + 8, 2);
    const std::size_t textAt = strings + bigEndian(table, at + 10, 2);
    if (textAt > table.size() || length > table.size() - textAt)
      continue;
    auto text = textOf(table.subspan(textAt, length), platform);
    if (!text || text->empty())
      continue;
    best = std::move(text);
    bestRank = *rank;
  }
  return best;
}

}  // namespace

std::optional<std::u16string> fontName(storage::ReadableFile& font, std::string& why) {
  const auto start = fontStart(font, why);
  if (!start)
    return std::nullopt;
  const auto table = nameTableOf(font, *start, why);
  if (!table)
    return std::nullopt;
  const auto bytes = readBytes(font, table->first, std::min(table->second, kMaxNameTable));
  if (!bytes) {
    why = "the font's name table lies outside the file";
    return std::nullopt;
  }
  auto name = bestFullName(*bytes);
  if (!name)
    why = "the font's name table has no full font name";
  return name;
}

std::optional<std::u16string> fileFontName(const std::filesystem::path& path, std::string& why) {
  const auto font = storage::FileSystem::current().openRead(path, why);
  if (!font)
    return std::nullopt;
  return fontName(*font, why);
}

}  // namespace odlex::signature
