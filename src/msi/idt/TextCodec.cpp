#include "msi/idt/TextCodec.h"

#include <algorithm>

#include "storage/CodePage.h"

namespace odlex::idt {

bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool encodeText(std::uint32_t codePage, std::u16string_view text, std::string& out,
                std::string& reason) {
  std::string encoded;
  if (!storage::encodeCodePage(codePage, text, encoded, reason))
    return false;
  out += encoded;
  return true;
}

std::string forMessage(std::u16string_view text) {
  constexpr std::size_t kLimit = 64;
  std::string out;
  for (char16_t c : text.substr(0, kLimit)) {
    out += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
  }
  if (text.size() > kLimit)
    out += "...";
  return out;
}

}  // namespace odlex::idt
