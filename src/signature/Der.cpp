// DER elements.

#include "signature/Der.h"

namespace odlex::signature {

std::optional<DerElement> readDer(std::span<const unsigned char>& bytes) {
  if (bytes.size() < 2 || (bytes[0] & 0x1f) == 0x1f)
    return std::nullopt;
  std::size_t header = 2;
  std::size_t length = bytes[1];
  if (length & 0x80) {
    const std::size_t count = length & 0x7f;
    if (count == 0 || count > 4 || bytes.size() < 2 + count)
      return std::nullopt;
    length = 0;
    for (std::size_t i = 0; i < count; ++i)
      length = length << 8 | bytes[2 + i];
    header += count;
  }
  if (length > bytes.size() - header)
    return std::nullopt;
  DerElement element{bytes[0], bytes.first(header + length), bytes.subspan(header, length)};
  bytes = bytes.subspan(header + length);
  return element;
}

}  // namespace odlex::signature
