// Fuzz target: the input is a font file whose full name is read. Damage must be refused, never
// crash, hang or read outside the input.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "signature/FontName.h"
#include "storage/MemoryFileSystem.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  odlex::storage::MemoryReadableFile font(
      std::make_shared<const std::vector<std::uint8_t>>(data, data + size));
  std::string why;
  odlex::signature::fontName(font, why);
  return 0;
}
