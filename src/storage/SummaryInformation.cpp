#include "storage/SummaryInformation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <span>

#include "storage/CodePage.h"
#include "storage/PropertySetBytes.h"

namespace odlex::storage {
namespace {

// Stream header: byte order, version, system identifier, CLSID, number of sets; then one
// (format id, section offset) entry per set.
constexpr std::uint16_t kByteOrderMark = 0xFFFE;
constexpr std::size_t kHeaderSize = 28;
constexpr std::size_t kSetEntrySize = 20;
constexpr std::size_t kSetCountOffset = 24;
// Windows 2000 on the NT platform, as installer packages carry it.
constexpr std::uint32_t kSystemIdentifier = 0x00020005;
constexpr std::array<std::uint8_t, 16> kSummaryFormatId = {
    0xE0, 0x85, 0x9F, 0xF2, 0xF9, 0x4F, 0x68, 0x10, 0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9};

// Section: size, property count, (id, offset) pairs, then the typed values.
constexpr std::size_t kSectionHeaderSize = 8;
constexpr std::size_t kPropertyEntrySize = 8;

enum VariantType : std::uint16_t {
  kVtI2 = 2,
  kVtI4 = 3,
  kVtLpstr = 30,
  kVtFileTime = 64,
};

constexpr std::uint32_t kDefaultCodePage = 1252;

using Bytes = std::span<const std::uint8_t>;

std::string hex(std::uint64_t value) {
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "0x%llX", static_cast<unsigned long long>(value));
  return buffer;
}

// msitools writes summary strings as UTF-8 whatever property 1 says (wixl even labels them
// 1252), so text that is well-formed UTF-8 is read as such; text of a Windows page almost
// never is once it holds non-ASCII, and ASCII reads the same either way.
bool decodeSummaryString(std::uint32_t codePage, std::string_view bytes, std::u16string& out,
                         std::string& error) {
  if (decodeCodePage(65001, bytes, out, error))
    return true;
  return decodeCodePage(codePage, bytes, out, error);
}

class SectionReader {
 public:
  SectionReader(Bytes section, std::string& error) : section_(section), error_(error) {}

  bool fail(std::uint32_t id, const std::string& what) {
    error_ = "summary information property " + std::to_string(id) + ": " + what;
    return false;
  }

  // The type word that starts the value at `offset`.
  bool valueType(std::uint32_t id, std::size_t offset, std::uint16_t& type) {
    const auto word = readU32(section_, offset);
    if (!word)
      return fail(id, "value at " + hex(offset) + " lies outside the section");
    type = static_cast<std::uint16_t>(*word);
    return true;
  }

  bool read(std::uint32_t id, std::size_t offset, std::uint32_t codePage, SummaryValue& value) {
    std::uint16_t type = 0;
    if (!valueType(id, offset, type))
      return false;
    const std::size_t data = offset + 4;
    switch (type) {
      case kVtI2: {
        const auto raw = readU16(section_, data);
        if (!raw)
          return fail(id, "2-byte integer runs past the section");
        value.kind = SummaryValue::kInteger;
        // The code page is an unsigned 16-bit number stored as VT_I2 (65001 reads as -535).
        value.integer = id == kPidCodePage ? *raw : static_cast<std::int16_t>(*raw);
        return true;
      }
      case kVtI4: {
        const auto raw = readU32(section_, data);
        if (!raw)
          return fail(id, "4-byte integer runs past the section");
        value.kind = SummaryValue::kInteger;
        value.integer = static_cast<std::int32_t>(*raw);
        return true;
      }
      case kVtFileTime: {
        const auto raw = readLittleEndian(section_, data, 8);
        if (!raw)
          return fail(id, "file time runs past the section");
        value.kind = SummaryValue::kFileTime;
        value.fileTime = *raw;
        return true;
      }
      case kVtLpstr:
        return readString(id, data, codePage, value);
      default:
        return fail(id, "value type " + std::to_string(type) + " is not supported");
    }
  }

 private:
  bool readString(std::uint32_t id, std::size_t data, std::uint32_t codePage, SummaryValue& value) {
    const auto length = readU32(section_, data);
    if (!length || section_.size() - data - 4 < *length) {
      return fail(id, "string runs past the section");
    }
    const auto* begin = reinterpret_cast<const char*>(section_.data() + data + 4);
    std::string_view bytes(begin, *length);
    bytes = bytes.substr(0, bytes.find('\0'));  // the length counts the terminating NUL
    value.kind = SummaryValue::kString;
    std::string why;
    if (!decodeSummaryString(codePage, bytes, value.text, why))
      return fail(id, why);
    return true;
  }

  Bytes section_;
  std::string& error_;
};

// Locates the section of the summary property set within the stream.
bool findSection(Bytes stream, Bytes& section, std::string& error) {
  const auto byteOrder = readU16(stream, 0);
  const auto setCount = readU32(stream, kSetCountOffset);
  if (!byteOrder || stream.size() < kHeaderSize + kSetEntrySize) {
    error = "summary information stream is too short (" + std::to_string(stream.size()) + " bytes)";
    return false;
  }
  if (*byteOrder != kByteOrderMark) {
    error =
        "summary information stream has byte order mark " + hex(*byteOrder) + ", expected 0xFFFE";
    return false;
  }
  if (*setCount == 0) {
    error = "summary information stream holds no property set";
    return false;
  }
  if (!std::equal(kSummaryFormatId.begin(), kSummaryFormatId.end(), stream.begin() + kHeaderSize)) {
    error = "summary information stream does not start with the summary property set";
    return false;
  }
  const std::uint32_t offset = *readU32(stream, kHeaderSize + kSummaryFormatId.size());
  const auto size = readU32(stream, offset);
  if (!size || *size < kSectionHeaderSize || stream.size() - offset < *size) {
    error = "summary information section at " + hex(offset) + " lies outside the stream (" +
            std::to_string(stream.size()) + " bytes)";
    return false;
  }
  section = stream.subspan(offset, *size);
  return true;
}

struct PropertyEntry {
  std::uint32_t id;
  std::uint32_t offset;
};

bool readPropertyEntries(Bytes section, std::vector<PropertyEntry>& entries, std::string& error) {
  const std::uint32_t count = *readU32(section, 4);
  if ((section.size() - kSectionHeaderSize) / kPropertyEntrySize < count) {
    error = "summary information section (" + std::to_string(section.size()) +
            " bytes) is too small for " + std::to_string(count) + " properties";
    return false;
  }
  std::set<std::uint32_t> seen;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t at = kSectionHeaderSize + i * kPropertyEntrySize;
    const PropertyEntry entry{*readU32(section, at), *readU32(section, at + 4)};
    if (!seen.insert(entry.id).second) {
      error = "summary information property " + std::to_string(entry.id) + " appears twice";
      return false;
    }
    entries.push_back(entry);
  }
  return true;
}

// The code page of the set's strings: property 1, or neutral when absent.
bool readCodePage(SectionReader& reader, const std::vector<PropertyEntry>& entries,
                  std::uint32_t& codePage, std::string& error) {
  codePage = 0;
  for (const PropertyEntry& entry : entries) {
    if (entry.id != kPidCodePage)
      continue;
    SummaryValue value;
    if (!reader.read(entry.id, entry.offset, 0, value))
      return false;
    if (value.kind != SummaryValue::kInteger)
      return reader.fail(entry.id, "code page is not a number");
    codePage = static_cast<std::uint16_t>(value.integer);
    if (!isSupportedCodePage(codePage)) {
      error = "summary information code page " + std::to_string(codePage) + " is not supported";
      return false;
    }
  }
  return true;
}

void appendValue(std::uint32_t id, const SummaryValue& value, const std::string& encoded,
                 std::vector<std::uint8_t>& out) {
  switch (value.kind) {
    case SummaryValue::kInteger:
      if (id == kPidCodePage) {
        appendLittleEndian(out, kVtI2, 4);
        appendLittleEndian(out, static_cast<std::uint16_t>(value.integer), 4);
      } else {
        appendLittleEndian(out, kVtI4, 4);
        appendLittleEndian(out, static_cast<std::uint32_t>(value.integer), 4);
      }
      break;
    case SummaryValue::kString:
      appendLittleEndian(out, kVtLpstr, 4);
      appendLittleEndian(out, encoded.size() + 1, 4);
      out.insert(out.end(), encoded.begin(), encoded.end());
      out.resize(out.size() + 4 - encoded.size() % 4);  // the NUL, then zeros to a 4-byte boundary
      break;
    case SummaryValue::kFileTime:
      appendLittleEndian(out, kVtFileTime, 4);
      appendLittleEndian(out, value.fileTime, 8);
      break;
  }
}

}  // namespace

std::uint32_t SummaryInformation::codePage() const {
  const auto it = properties.find(kPidCodePage);
  if (it == properties.end() || it->second.kind != SummaryValue::kInteger)
    return 0;
  return static_cast<std::uint16_t>(it->second.integer);
}

bool readSummaryInformation(const std::vector<std::uint8_t>& bytes, SummaryInformation& out,
                            std::string& error) {
  Bytes section;
  std::vector<PropertyEntry> entries;
  if (!findSection(bytes, section, error) || !readPropertyEntries(section, entries, error)) {
    return false;
  }
  SectionReader reader(section, error);
  std::uint32_t codePage;
  if (!readCodePage(reader, entries, codePage, error))
    return false;
  SummaryInformation result;
  for (const PropertyEntry& entry : entries) {
    if (!reader.read(entry.id, entry.offset, codePage, result.properties[entry.id]))
      return false;
  }
  out = std::move(result);
  return true;
}

bool writeSummaryInformation(const SummaryInformation& info, std::vector<std::uint8_t>& out,
                             std::string& error) {
  const std::uint32_t codePage =
      info.properties.contains(kPidCodePage) ? info.codePage() : kDefaultCodePage;
  if (!isSupportedCodePage(codePage)) {
    error = "summary information code page " + std::to_string(codePage) + " is not supported";
    return false;
  }
  std::vector<std::uint8_t> values;
  std::vector<PropertyEntry> entries;
  const std::size_t tableSize = kSectionHeaderSize + kPropertyEntrySize * info.properties.size();
  for (const auto& [id, value] : info.properties) {
    if (id == 0 || id >= 0x80000000u) {
      error = "summary information property id " + std::to_string(id) + " is reserved";
      return false;
    }
    if (id == kPidCodePage && value.kind != SummaryValue::kInteger) {
      error = "summary information code page must be a number";
      return false;
    }
    std::string encoded;
    if (value.kind == SummaryValue::kString) {
      if (value.text.find(u'\0') != std::u16string::npos) {
        error = "summary information property " + std::to_string(id) + " holds a NUL character";
        return false;
      }
      if (!encodeCodePage(codePage, value.text, encoded, error)) {
        error = "summary information property " + std::to_string(id) + ": " + error;
        return false;
      }
    }
    entries.push_back({id, static_cast<std::uint32_t>(tableSize + values.size())});
    appendValue(id, value, encoded, values);
  }

  out.clear();
  appendLittleEndian(out, kByteOrderMark, 2);
  appendLittleEndian(out, 0, 2);  // version
  appendLittleEndian(out, kSystemIdentifier, 4);
  out.resize(out.size() + 16);  // CLSID: none
  appendLittleEndian(out, 1, 4);
  out.insert(out.end(), kSummaryFormatId.begin(), kSummaryFormatId.end());
  appendLittleEndian(out, kHeaderSize + kSetEntrySize, 4);
  appendLittleEndian(out, tableSize + values.size(), 4);
  appendLittleEndian(out, entries.size(), 4);
  for (const PropertyEntry& entry : entries) {
    appendLittleEndian(out, entry.id, 4);
    appendLittleEndian(out, entry.offset, 4);
  }
  out.insert(out.end(), values.begin(), values.end());
  return true;
}

}  // namespace odlex::storage
