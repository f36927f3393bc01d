#include "msi/engine/StringPoolCodec.h"

#include <algorithm>

#include "msi/engine/ByteIo.h"
#include "msi/engine/Text.h"
#include "storage/CodePage.h"

namespace odlex::engine {

namespace {
constexpr std::uint32_t kLongReferenceFlag = 0x80000000u;
constexpr std::uint32_t kMaxShortId = 0xFFFF;
}  // namespace

bool readStringPool(const std::vector<std::uint8_t>& poolStream,
                    const std::vector<std::uint8_t>& dataStream, StringPool& pool,
                    LoadedPool& loaded, std::string& error) {
  if (poolStream.size() < 4 || poolStream.size() % 4 != 0) {
    error = "string pool: size " + std::to_string(poolStream.size()) +
            " is not a header plus whole entries";
    return false;
  }
  std::uint32_t header = readLe32(poolStream.data());
  loaded.codePage = header & ~kLongReferenceFlag;
  loaded.referenceSize = (header & kLongReferenceFlag) ? 3 : 2;
  if (!storage::isSupportedCodePage(loaded.codePage)) {
    error = "string pool: unsupported code page " + std::to_string(loaded.codePage);
    return false;
  }

  const std::size_t entries = (poolStream.size() - 4) / 4;
  pool.clear();
  std::size_t offset = 0;
  std::u16string text;
  for (std::size_t i = 0; i < entries; ++i) {
    const std::uint8_t* entry = poolStream.data() + 4 + 4 * i;
    std::size_t length = readLe16(entry);
    std::uint16_t references = readLe16(entry + 2);
    // A string longer than 65,535 bytes takes two entries, (0, high word of the length) then
    // (low word, reference count), but only one id: the ids after it go on from there.
    bool isLong = length == 0 && references != 0;
    if (isLong) {
      if (i + 1 >= entries) {
        error = "string pool: long string at id " + std::to_string(i + 1) + " has no length entry";
        return false;
      }
      length = (std::size_t{references} << 16) | readLe16(entry + 4);
    }
    if (length > dataStream.size() - offset) {
      error = "string pool: string " + std::to_string(i + 1) + " of " + std::to_string(length) +
              " bytes runs past the end of the string data (" + std::to_string(dataStream.size()) +
              " bytes)";
      return false;
    }
    text.clear();
    std::string_view bytes(reinterpret_cast<const char*>(dataStream.data()) + offset, length);
    if (!storage::decodeCodePage(loaded.codePage, bytes, text, error)) {
      error = "string pool: string " + std::to_string(i + 1) + ": " + error;
      return false;
    }
    offset += length;
    pool.appendLoaded(text);
    if (isLong)
      ++i;
  }
  return true;
}

bool writeStringPool(const StringPool& pool, const std::vector<std::uint32_t>& references,
                     std::uint32_t codePage, EncodedPool& out, std::string& error) {
  out.poolStream.assign(4, 0);
  out.dataStream.clear();
  out.remap.assign(pool.size(), 0);
  std::uint32_t nextId = 1;
  std::string bytes;
  for (std::uint32_t id = 1; id < pool.size(); ++id) {
    if (id >= references.size() || references[id] == 0 || pool.get(id).empty())
      continue;
    if (!storage::encodeCodePage(codePage, pool.get(id), bytes, error)) {
      error = "string \"" + toUtf8(pool.get(id).substr(0, 40)) + "\": " + error;
      return false;
    }
    auto count = static_cast<std::uint16_t>(std::min<std::uint32_t>(references[id], 0xFFFF));
    out.remap[id] = nextId;
    if (bytes.size() > 0xFFFF) {
      appendLe16(out.poolStream, 0);
      appendLe16(out.poolStream, static_cast<std::uint16_t>(bytes.size() >> 16));
      appendLe16(out.poolStream, static_cast<std::uint16_t>(bytes.size() & 0xFFFF));
      appendLe16(out.poolStream, count);
    } else {
      appendLe16(out.poolStream, static_cast<std::uint16_t>(bytes.size()));
      appendLe16(out.poolStream, count);
    }
    ++nextId;
    out.dataStream.insert(out.dataStream.end(), bytes.begin(), bytes.end());
  }
  bool longReferences = nextId - 1 > kMaxShortId;
  out.referenceSize = longReferences ? 3 : 2;
  std::uint32_t header = codePage | (longReferences ? kLongReferenceFlag : 0);
  writeLe32(out.poolStream.data(), header);
  return true;
}

}  // namespace odlex::engine
