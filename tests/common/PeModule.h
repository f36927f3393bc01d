#pragma once
// Windows modules made in a test, as small as the readers of their resources accept.

#include <cstdint>
#include <string>

namespace odlex::test {

// A PE32 module whose only section holds a resource tree with one resource: `resource` of
// `type` (11 message table, 16 version), name 1, language 0x409.
inline std::string peModuleWith(std::uint32_t type, const std::string& resource) {
  std::string image(0x200, '\0');
  auto put = [&image](std::size_t at, std::uint32_t value, std::size_t width) {
    if (image.size() < at + width)
      image.resize(at + width, '\0');
    for (std::size_t i = 0; i < width; ++i)
      image[at + i] = static_cast<char>(value >> (8 * i) & 0xFF);
  };
  const std::uint32_t sectionAddress = 0x1000;
  const std::size_t raw = 0x200;
  const std::size_t dataAt = 0x58;
  const std::size_t size = dataAt + resource.size();
  image[0] = 'M';
  image[1] = 'Z';
  put(0x3c, 0x40, 4);
  put(0x40, 0x00004550, 4);
  put(0x44 + 2, 1, 2);                     // one section
  put(0x44 + 16, 0xE0, 2);                 // optional header size
  put(0x58, 0x10b, 2);                     // PE32
  put(0x58 + 92, 16, 4);                   // 16 data directories
  put(0x58 + 96 + 16, sectionAddress, 4);  // the resource directory
  put(0x58 + 96 + 20, static_cast<std::uint32_t>(size), 4);
  const std::size_t section = 0x58 + 0xE0;
  put(section + 8, static_cast<std::uint32_t>(size), 4);
  put(section + 12, sectionAddress, 4);
  put(section + 16, static_cast<std::uint32_t>(size), 4);
  put(section + 20, static_cast<std::uint32_t>(raw), 4);
  // The type -> name 1 -> language 0x409 -> the data entry.
  const std::uint32_t subdirectory = 0x80000000u;
  put(raw + 14, 1, 2);
  put(raw + 16, type, 4);
  put(raw + 20, subdirectory | 0x18, 4);
  put(raw + 0x18 + 14, 1, 2);
  put(raw + 0x18 + 16, 1, 4);
  put(raw + 0x18 + 20, subdirectory | 0x30, 4);
  put(raw + 0x30 + 14, 1, 2);
  put(raw + 0x30 + 16, 0x409, 4);
  put(raw + 0x30 + 20, 0x48, 4);
  put(raw + 0x48, sectionAddress + static_cast<std::uint32_t>(dataAt), 4);
  put(raw + 0x48 + 4, static_cast<std::uint32_t>(resource.size()), 4);
  image.resize(raw + dataAt);
  return image + resource;
}

}  // namespace odlex::test
