#pragma once
// Font files made in a test: an sfnt container (TrueType, OpenType) holding a `name` table,
// and TrueType collections of them. Only what a reader of font names looks at is filled in;
// checksums and the other tables a renderer needs are left out.

#include <cstdint>
#include <string>
#include <vector>

namespace odlex::test {

inline std::string bigEndian(std::uint32_t value, int width) {
  std::string bytes;
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
    bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

// `text` as UTF-16BE, the encoding of Windows name records.
inline std::string utf16be(const std::u16string& text) {
  std::string bytes;
  for (const char16_t unit : text)
    bytes += bigEndian(unit, 2);
  return bytes;
}

struct NameRecord {
  std::uint16_t platform;
  std::uint16_t encoding;
  std::uint16_t language;
  std::uint16_t nameID;
  std::string text;  // the record's bytes, already encoded
};

// A `name` table of format 0 with `records`, their texts stored one after another.
inline std::string nameTable(const std::vector<NameRecord>& records) {
  std::string head = bigEndian(0, 2) + bigEndian(static_cast<std::uint32_t>(records.size()), 2) +
                     bigEndian(static_cast<std::uint32_t>(6 + 12 * records.size()), 2);
  std::string strings;
  for (const NameRecord& record : records) {
    head += bigEndian(record.platform, 2) + bigEndian(record.encoding, 2) +
            bigEndian(record.language, 2) + bigEndian(record.nameID, 2) +
            bigEndian(static_cast<std::uint32_t>(record.text.size()), 2) +
            bigEndian(static_cast<std::uint32_t>(strings.size()), 2);
    strings += record.text;
  }
  return head + strings;
}

struct FontTable {
  std::string tag;  // four characters
  std::string data;
};

// An sfnt file of `version` (0x00010000 for TrueType, 0x4F54544F "OTTO" for OpenType) holding
// `tables`, placed as if the file started at `base` (the offsets of a font inside a collection
// count from the collection's start).
inline std::string sfnt(std::uint32_t version, const std::vector<FontTable>& tables,
                        std::uint32_t base = 0) {
  const auto count = static_cast<std::uint32_t>(tables.size());
  std::string head = bigEndian(version, 4) + bigEndian(count, 2) + std::string(6, '\0');
  std::string data;
  const std::uint32_t dataAt = base + 12 + 16 * count;
  for (const FontTable& table : tables) {
    head += table.tag + bigEndian(0, 4) +
            bigEndian(dataAt + static_cast<std::uint32_t>(data.size()), 4) +
            bigEndian(static_cast<std::uint32_t>(table.data.size()), 4);
    data += table.data;
  }
  return head + data;
}

inline constexpr std::uint32_t kTrueTypeVersion = 0x00010000;

// A TrueType font whose name table holds `records`.
inline std::string trueTypeFont(const std::vector<NameRecord>& records) {
  return sfnt(kTrueTypeVersion, {{"name", nameTable(records)}});
}

// A TrueType collection of fonts whose name tables hold `fonts`' records, in that order.
inline std::string fontCollection(const std::vector<std::vector<NameRecord>>& fonts) {
  const auto count = static_cast<std::uint32_t>(fonts.size());
  std::string head = "ttcf" + bigEndian(0x00010000, 4) + bigEndian(count, 4);
  std::string body;
  const std::uint32_t bodyAt = 12 + 4 * count;
  for (const auto& records : fonts) {
    const std::uint32_t at = bodyAt + static_cast<std::uint32_t>(body.size());
    head += bigEndian(at, 4);
    body += sfnt(kTrueTypeVersion, {{"name", nameTable(records)}}, at);
  }
  return head + body;
}

}  // namespace odlex::test
