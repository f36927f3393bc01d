#pragma once
// A minimal reader of DER (ASN.1 distinguished encoding) elements, for the parts of an
// Authenticode signature OpenSSL has no structure for. Every length is checked against the
// bytes at hand.

#include <cstdint>
#include <optional>
#include <span>

namespace odlex::signature {

struct DerElement {
  std::uint8_t tag = 0;
  std::span<const unsigned char> whole;    // tag, length and contents
  std::span<const unsigned char> content;  // the contents only
};

// The element at the start of `bytes` (one-byte tags, definite lengths of up to four bytes);
// nothing when the bytes do not hold a whole element. `bytes` is advanced past it.
std::optional<DerElement> readDer(std::span<const unsigned char>& bytes);

}  // namespace odlex::signature
