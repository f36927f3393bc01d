// Fuzz target: the input is a Windows module whose version resource is read. Damage must be
// refused, never crash, hang or read outside the input.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "signature/PeVersion.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string why;
  odlex::signature::peVersion(std::span(data, size), why);
  return 0;
}
