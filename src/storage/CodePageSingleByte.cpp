#include "storage/CodePageSingleByte.h"

#include <map>
#include <memory>
#include <mutex>

#include "storage/CodePageErrors.h"
#include "storage/CodePageIconv.h"

namespace odlex::storage {
namespace {

// Windows' own table for 1252 maps the five bytes the C library leaves undefined to the C1
// controls of the same value; packages written on Windows can hold them.
bool isWindows1252Control(std::uint32_t codePage, unsigned byte) {
  return codePage == 1252 &&
         (byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D);
}

}  // namespace

const SingleByteTable* SingleByteTable::get(std::uint32_t codePage, const char* converterName,
                                            std::string& error) {
  static std::mutex mutex;
  static std::map<std::uint32_t, std::unique_ptr<SingleByteTable>> tables;
  const std::lock_guard lock(mutex);
  auto& table = tables[codePage];
  if (!table && checkConverter(codePage, converterName, error)) {
    table.reset(new SingleByteTable(codePage, converterName));
  }
  return table.get();
}

SingleByteTable::SingleByteTable(std::uint32_t codePage, const char* converterName)
    : codePage_(codePage), fromUnicode_(0x10000, -1) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char input = static_cast<char>(byte);
    std::u16string decoded;
    std::string undefined;
    toUnicode_[byte] = kUndefined;
    if (iconvDecode(codePage, converterName, {&input, 1}, decoded, undefined)) {
      if (decoded.size() == 1)
        toUnicode_[byte] = decoded[0];
    } else if (isWindows1252Control(codePage, byte)) {
      toUnicode_[byte] = static_cast<char16_t>(byte);
    }
    if (toUnicode_[byte] != kUndefined && fromUnicode_[toUnicode_[byte]] < 0) {
      fromUnicode_[toUnicode_[byte]] = static_cast<std::int16_t>(byte);
    }
  }
}

bool SingleByteTable::decode(std::string_view bytes, std::u16string& out,
                             std::string& error) const {
  out.resize(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char16_t c = toUnicode_[static_cast<unsigned char>(bytes[i])];
    if (c == kUndefined) {
      error = invalidByteMessage(codePage_, bytes, i);
      return false;
    }
    out[i] = c;
  }
  return true;
}

bool SingleByteTable::encode(std::u16string_view text, std::string& out, std::string& error) const {
  out.resize(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::int16_t byte = fromUnicode_[text[i]];
    if (byte < 0) {
      error = unencodableMessage(codePage_, text, i);
      return false;
    }
    out[i] = static_cast<char>(byte);
  }
  return true;
}

bool SingleByteTable::canEncode(std::u16string_view text) const {
  for (const char16_t c : text) {
    if (fromUnicode_[c] < 0)
      return false;
  }
  return true;
}

}  // namespace odlex::storage
